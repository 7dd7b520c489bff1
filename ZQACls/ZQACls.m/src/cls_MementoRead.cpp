#include "cls_MementoRead.h"

cls_MementoRead::~cls_MementoRead() = default;
