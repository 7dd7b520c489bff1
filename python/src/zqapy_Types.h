#ifndef zqapy_Types_h
#define zqapy_Types_h

#include "rfm_Type.h"

#include <string>

// The names Python uses for the record store's field and element types:
// "int", "float", "double", "handle", "string".
char const* zqapy_TypeName(rfm_Type type);
// The type of a name; raises ValueError for any other name.
rfm_Type zqapy_TypeOf(std::string const& name);
// What an object listing calls the kind of a handle's object: "table",
// "stream", "space", or an array by its element type ("double array").
std::string zqapy_KindName(rfm_Type type);

#endif
