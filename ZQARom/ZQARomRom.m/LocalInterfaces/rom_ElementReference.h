#ifndef rom_ElementReference_h
#define rom_ElementReference_h

#include "rfm_Row.h"

// The reference a row of a collection of objects (a list's or a map's
// entry) holds in its first two columns, the object id and the class id.
namespace rom_ElementReference {
// Whether both columns hold data.
bool BothPresent(rfm_Row const& row);
// The entry's object; false for a null entry: no data in either column, or
// the stored null reference.
bool Read(rfm_Row const& row, unsigned int& cid, int& oid);
// Writes the stored null reference, as a removed entry holds.
void WriteNull(rfm_Row const& row);
}  // namespace rom_ElementReference

#endif
