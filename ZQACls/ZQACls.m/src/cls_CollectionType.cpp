#include "cls_CollectionType.h"

bool cls_CollectionsMatch(cls_CollectionType declared, cls_CollectionType implemented) {
  return declared == implemented || declared == cls_CollAny;
}
