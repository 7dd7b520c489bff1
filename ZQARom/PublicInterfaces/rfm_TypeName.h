#ifndef rfm_TypeName_h
#define rfm_TypeName_h

#include "ZQABasExport.h"
#include "rfm_Type.h"

#include <string>

// What tools and bindings call the record store's types, the same
// everywhere: a field or element type "int", "handle", "float", "double",
// "string" ("unknown" for any other value), and an object's kind as
// rfm_Database::HandleType tells it: "table", "stream", "space", or an array
// by its element type ("double array").
ZQA_EXPORT char const* rfm_TypeName(int type);
ZQA_EXPORT std::string rfm_ObjectKindName(rfm_Type type);

#endif
