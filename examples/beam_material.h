#ifndef beam_material_h
#define beam_material_h

// A material of the model, shared by the elements made of it. Declared
// through the typed helper (RegisterModel): the further parameters a
// material model needs ("density", "yield", ...) are a map from name to
// value.

#include "cls_Uid.h"
#include "cow_String.h"

#include <map>

struct Material {
  static constexpr unsigned int kClassId = 0x01000001;
  cls_Uid uid;
  cow_String name;
  double young = 0;
  double poisson = 0;
  std::map<cow_String, double> parameters;
};

#endif
