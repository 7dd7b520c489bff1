#include "rfm_TypeName.h"

char const* rfm_TypeName(int type) {
  switch (type) {
    case rfm_TypeInt:
      return "int";
    case rfm_TypeHandle:
      return "handle";
    case rfm_TypeFloat:
      return "float";
    case rfm_TypeDouble:
      return "double";
    case rfm_TypeString:
      return "string";
    default:
      return "unknown";
  }
}

std::string rfm_ObjectKindName(rfm_Type type) {
  switch (type) {
    case rfm_TypeTable:
      return "table";
    case rfm_TypeStream:
      return "stream";
    case rfm_TypeSpace:
      return "space";
    default:
      return std::string(rfm_TypeName(type)) + " array";
  }
}
