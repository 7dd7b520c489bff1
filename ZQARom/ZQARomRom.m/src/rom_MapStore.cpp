#include "rom_MapStore.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_FieldMetadata.h"
#include "rom_HeaderLayout.h"
#include "rom_Transporter.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_MapStore";

char const kNotATable[] = "rom_MapStore::OpenTable - The map at handle %d in %s is not a table.";
char const kNoField[] =
    "rom_MapStore::Field - The map at handle %d in %s (a table of layout %s) has no field %s of the type the map "
    "holds.";
char const kNoReference[] =
    "rom_MapStore::CheckReferenceColumns - The map at handle %d in %s (a table of layout %s) does not begin with the "
    "int fields %s and %s.";

cow_String LayoutName(rfm_Table const& table) { return table.TableMetadata().TableName(); }

bool IsIntAt(rfm_Table const& table, char const* name, int index) {
  rfm_FieldMetadata const& field = table.GetFieldMD(rfm_FieldHandle(name, -1));
  return field.Present() != 0 && field.Type() == rfm_TypeInt && field.Index() == index;
}
}  // namespace

rfm_Table rom_MapStore::NewTable(rom_Transporter& transporter, char const* tableName, int quantum) {
  rfm_Table table = transporter.Database().Table(cow_String(tableName), quantum, -1);
  table.Flush();
  return table;
}

rfm_Table rom_MapStore::OpenTable(rom_Transporter& transporter, rfm_Handle const& handle, int quantum) {
  if (transporter.Database().HandleType(handle) != rfm_TypeTable)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNotATable), handle.Value(), transporter.FileName()));
  return transporter.Database().Table(handle, quantum, -1);
}

rfm_FieldHandle rom_MapStore::Field(rom_Transporter const& transporter, rfm_Table const& table, char const* name,
                                    rfm_Type type) {
  rfm_FieldMetadata const& field = table.GetFieldMD(rfm_FieldHandle(name, -1));
  if (field.Present() == 0 || field.Type() != type || field.Index() < 0)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNoField), table.Handle().Value(), transporter.FileName(),
                                          LayoutName(table), name));
  return rfm_FieldHandle(field.Index());
}

void rom_MapStore::CheckReferenceColumns(rom_Transporter const& transporter, rfm_Table const& table) {
  if (!IsIntAt(table, kRomElementOidName, 0) || !IsIntAt(table, kRomElementClassIdName, 1))
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNoReference), table.Handle().Value(), transporter.FileName(),
                                          LayoutName(table), kRomElementOidName, kRomElementClassIdName));
}

rfm_FieldHandle rom_MapStore::ObjectKeyField(rom_Transporter const& transporter, rfm_Table const& table,
                                             rfm_Type keyType) {
  CheckReferenceColumns(transporter, table);
  return Field(transporter, table, kRomElementKeyName, keyType);
}
