#include "zqapy_Types.h"

#include <pybind11/pybind11.h>

namespace {

struct Named {
  rfm_Type m_Type;
  char const* m_Name;
};

Named const kTypes[] = {
    {rfm_TypeInt, "int"},       {rfm_TypeFloat, "float"},   {rfm_TypeDouble, "double"},
    {rfm_TypeHandle, "handle"}, {rfm_TypeString, "string"},
};

}  // namespace

char const* zqapy_TypeName(rfm_Type type) {
  for (Named const& named : kTypes)
    if (named.m_Type == type) return named.m_Name;
  return "unknown";
}

rfm_Type zqapy_TypeOf(std::string const& name) {
  for (Named const& named : kTypes)
    if (name == named.m_Name) return named.m_Type;
  throw pybind11::value_error("no field type is called '" + name + "': int, float, double, handle or string");
}

std::string zqapy_KindName(rfm_Type type) {
  switch (type) {
    case rfm_TypeTable:
      return "table";
    case rfm_TypeStream:
      return "stream";
    case rfm_TypeSpace:
      return "space";
    default:
      return std::string(zqapy_TypeName(type)) + " array";
  }
}
