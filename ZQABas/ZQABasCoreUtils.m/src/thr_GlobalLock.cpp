#include "thr_GlobalLock.h"

thr_GlobalLock& thr_GlobalLock::Instance() {
  static thr_GlobalLock instance;
  return instance;
}
