#include "ZQARomCore.h"

#include <cstdio>

int main() {
  int count = 0;
  ZQARomCore_initialize(count);
  std::printf("started %d modules\n", count);
  ZQARomCore_finalize(count);
  return 0;
}
