#include "cls_Static.h"

cls_Static::~cls_Static() = default;
