#include "zqapy_Types.h"

#include "rfm_TypeName.h"

#include <pybind11/pybind11.h>

rfm_Type zqapy_TypeOf(std::string const& name) {
  for (rfm_Type type : {rfm_TypeInt, rfm_TypeFloat, rfm_TypeDouble, rfm_TypeHandle, rfm_TypeString})
    if (name == rfm_TypeName(type)) return type;
  throw pybind11::value_error("no field type is called '" + name + "': int, float, double, handle or string");
}
