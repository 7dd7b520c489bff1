#ifndef rom_ArrayString_h
#define rom_ArrayString_h

#include "cow_String.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_Handle.h"
#include "rfm_Table.h"

class rom_Transporter;

// A list's store of strings: an array of strings of one field, or, in older
// files, a table of layout "##StringArray", a string a row. Exactly one of
// the two is open; every operation goes to it, with the same meaning.
class rom_ArrayString {
public:
  // The store at handle in transporter's file, whichever of the two forms
  // it has; an array must have one field a row.
  rom_ArrayString(rom_Transporter const& transporter, rfm_Handle const& handle);
  // A new array.
  explicit rom_ArrayString(rom_Transporter const& transporter);

  int Read(cow_String* values, int count) const;
  int Write(cow_String const* values, int count) const;
  void Seek(int element) const;
  int Length() const;
  void Truncate(int elements) const;
  int Snap() const;
  int Flush() const;
  rfm_Handle Handle() const;

private:
  bool IsTable() const { return !m_Table.IsNull(); }

  rfm_Array<cow_String, rfm_TypeString> m_Array;
  rfm_Table m_Table;
};

#endif
