#ifndef rom_CatalogFieldHandle_h
#define rom_CatalogFieldHandle_h

#include "rfm_FieldHandle.h"
#include "rom_HeaderLayout.h"

// The handle of a catalogue field: its fixed index, and its name for a
// catalogue stored under another layout.
inline rfm_FieldHandle rom_CatalogFieldHandle(rom_CatalogField field) {
  static char const* const kNames[] = {kRomCatalogClassIdName, kRomCatalogClassTableName, kRomCatalogClassNameName,
                                       kRomCatalogBaseClassIdName, kRomCatalogClassVersionName};
  return rfm_FieldHandle(kNames[field], field);
}

#endif
