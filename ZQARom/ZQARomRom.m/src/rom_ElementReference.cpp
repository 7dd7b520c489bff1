#include "rom_ElementReference.h"

#include "rfm_FieldHandle.h"
#include "rom_HeaderLayout.h"

namespace {
rfm_FieldHandle const kOidColumn(0);
rfm_FieldHandle const kClassIdColumn(1);
}  // namespace

bool rom_ElementReference::BothPresent(rfm_Row const& row) {
  return !row.IsNull() && row.DataIsPresent(kOidColumn) && row.DataIsPresent(kClassIdColumn);
}

bool rom_ElementReference::Read(rfm_Row const& row, unsigned int& cid, int& oid) {
  if (!BothPresent(row)) return false;
  oid = row.ReadFieldInt(kOidColumn);
  cid = static_cast<unsigned int>(row.ReadFieldInt(kClassIdColumn));
  return !(cid == kRomNoClass && oid < 0);
}

void rom_ElementReference::WriteNull(rfm_Row const& row) {
  row.WriteFieldInt(kOidColumn, -1);
  row.WriteFieldInt(kClassIdColumn, static_cast<int>(kRomNoClass));
}
