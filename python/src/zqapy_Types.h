#ifndef zqapy_Types_h
#define zqapy_Types_h

#include "rfm_Type.h"

#include <string>

// The field or element type that rfm_TypeName calls name: "int", "float",
// "double", "handle" or "string"; raises ValueError for any other name.
rfm_Type zqapy_TypeOf(std::string const& name);

#endif
