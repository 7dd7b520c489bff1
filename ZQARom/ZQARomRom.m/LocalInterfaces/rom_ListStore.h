#ifndef rom_ListStore_h
#define rom_ListStore_h

#include "rfm_Handle.h"
#include "rfm_Table.h"

class rom_Transporter;

// What every store of a list of values must be, checked when it is opened,
// so that a damaged file ends in an error naming it rather than in reads of
// the wrong shape.
namespace rom_ListStore {
// An array of a list holds one element a row.
void CheckOneField(rom_Transporter const& transporter, rfm_Handle const& handle, int fields);
// A table of a list of strings has a string in its first column.
void CheckStringTable(rom_Transporter const& transporter, rfm_Table const& table);
}  // namespace rom_ListStore

#endif
