#include "rom_ListStore.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_FieldHandle.h"
#include "rfm_FieldMetadata.h"
#include "rom_Transporter.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_ListStore";

char const kFields[] =
    "rom_ListStore::CheckOneField - The list store at handle %d in %s has %d fields a row; a list's store has one.";
char const kNotStrings[] =
    "rom_ListStore::CheckStringTable - The list store at handle %d in %s is a table without strings in its first "
    "column.";
}  // namespace

void rom_ListStore::CheckOneField(rom_Transporter const& transporter, rfm_Handle const& handle, int fields) {
  if (fields != 1)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kFields), handle.Value(), transporter.FileName(), fields));
}

void rom_ListStore::CheckStringTable(rom_Transporter const& transporter, rfm_Table const& table) {
  rfm_FieldHandle const first(0);
  if (table.TableMetadata().FieldCount() < 1 || table.GetFieldMD(first).Type() != rfm_TypeString)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNotStrings), table.Handle().Value(), transporter.FileName()));
}
