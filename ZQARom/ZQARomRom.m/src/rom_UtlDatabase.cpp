#include "rom_UtlDatabase.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rom_HeaderLayout.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_UtlDatabase";

char const kRowPastEnd[] = "rom_UtlDatabase::Object - Object %d of class %08X is not a row of its table \"%s\", "
                           "which has %d rows, in %s.";

struct ReferenceColumns {
  rfm_FieldHandle m_ClassId;
  rfm_FieldHandle m_Oid;

  explicit ReferenceColumns(cow_String const& member)
      : m_ClassId(member + kRomClassIdSuffix, -1), m_Oid(member + kRomOidSuffix, -1) {}
};
}  // namespace

rom_UtlDatabase::~rom_UtlDatabase() = default;

void rom_UtlDatabase::CheckRow(rfm_Table const& table, unsigned int cid, int oid) const {
  if (oid >= 0 && table.RowExists(oid)) return;
  nex_ThrowMessage(kSourcePath, __LINE__,
                   atr_SubstituteFormat(atr_translate(kRowPastEnd), oid, cid, table.TableMetadata().TableName(),
                                        table.Length(), Database().FileName()));
}

rfm_Row rom_UtlDatabase::Object(unsigned int cid, int oid) const {
  rfm_Table const table = Table(cid);
  CheckRow(table, cid, oid);
  return table.ReadRow(oid);
}

rfm_Row rom_UtlDatabase::UpdateObject(unsigned int cid, int oid) {
  rfm_Table const table = Table(cid);
  CheckRow(table, cid, oid);
  return table.UpdateRow(oid);
}

rfm_Row rom_UtlDatabase::NewObject(unsigned int cid) { return Table(cid).NewRow(); }

bool rom_UtlDatabase::ObjectIsPresent(rfm_Row const& row, cow_String const& member) const {
  ReferenceColumns const columns(member);
  if (!row.DataIsPresent(columns.m_ClassId) || !row.DataIsPresent(columns.m_Oid)) return false;
  return static_cast<unsigned int>(row.ReadFieldInt(columns.m_ClassId)) != kRomNoClass &&
         row.ReadFieldInt(columns.m_Oid) >= 0;
}

rfm_Row rom_UtlDatabase::Object(rfm_Row const& row, cow_String const& member) const {
  if (!ObjectIsPresent(row, member)) return rfm_Row();
  ReferenceColumns const columns(member);
  return Object(static_cast<unsigned int>(row.ReadFieldInt(columns.m_ClassId)), row.ReadFieldInt(columns.m_Oid));
}

rfm_Row rom_UtlDatabase::UpdateObject(rfm_Row const& row, cow_String const& member) {
  if (!ObjectIsPresent(row, member)) return rfm_Row();
  ReferenceColumns const columns(member);
  return UpdateObject(static_cast<unsigned int>(row.ReadFieldInt(columns.m_ClassId)),
                      row.ReadFieldInt(columns.m_Oid));
}
