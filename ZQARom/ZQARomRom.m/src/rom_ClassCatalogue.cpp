#include "rom_ClassCatalogue.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_BtreeIterator.h"
#include "rfm_Row.h"
#include "rfm_Table.h"
#include "rom_HeaderLayout.h"
#include "rom_ZDBHeaderParser.h"

#include <cstring>
#include <string>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_ClassCatalogue";

char const kRowWithoutClass[] = "rom_ClassCatalogue - Row %d of the class catalogue of %s lacks its class id or "
                                "table. The database is corrupt.";

bool EndsWith(std::string const& text, char const* suffix) {
  std::size_t const length = std::strlen(suffix);
  return text.size() > length && text.compare(text.size() - length, length, suffix) == 0;
}
}  // namespace

unsigned int const rom_ClassCatalogue::kNoBaseClass = kRomNoClass;
unsigned int const rom_ClassCatalogue::kNullClass = kRomNoClass;

rom_ClassCatalogue::rom_ClassCatalogue(rfm_Database const& database) {
  if (!database.HasTable(kRomCatalogName)) return;
  m_HasObjectLayer = true;
  rfm_Database header = database;
  rfm_Table const catalog = rom_ZDBHeaderParser(header).Catalog();
  // By name: a catalogue table opened before its layout was bound (by a
  // transporter on the same database) numbers its fields the file's way.
  rfm_FieldHandle const classId(kRomCatalogClassIdName, -1);
  rfm_FieldHandle const classTable(kRomCatalogClassTableName, -1);
  rfm_FieldHandle const className(kRomCatalogClassNameName, -1);
  rfm_FieldHandle const baseClassId(kRomCatalogBaseClassIdName, -1);
  rfm_FieldHandle const classVersion(kRomCatalogClassVersionName, -1);
  for (int number = 0; catalog.RowExists(number); ++number) {
    rfm_Row const row = catalog.ReadRow(number);
    if (!row.DataIsPresent(classId) || !row.DataIsPresent(classTable))
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(kRowWithoutClass), number, database.FileName()));
    Class entry;
    entry.m_ClassId = static_cast<unsigned int>(row.ReadFieldInt(classId));
    if (Find(entry.m_ClassId) != nullptr) continue;
    entry.m_BaseClassId = kRomNoClass;
    if (row.DataIsPresent(className)) entry.m_Name = row.ReadFieldString(className);
    if (row.DataIsPresent(baseClassId)) entry.m_BaseClassId = static_cast<unsigned int>(row.ReadFieldInt(baseClassId));
    if (rom_CatalogRowHasVersion(row, classVersion)) entry.m_Version = row.ReadFieldInt(classVersion);
    entry.m_Table = row.ReadFieldHandle(classTable);
    entry.m_Rows = database.Table(entry.m_Table, -1, -1).Length();
    m_Classes.push_back(entry);
  }
}

rom_ClassCatalogue::Class const* rom_ClassCatalogue::Find(unsigned int classId) const {
  for (Class const& entry : m_Classes)
    if (entry.m_ClassId == classId) return &entry;
  return nullptr;
}

std::vector<rom_ClassCatalogue::Reference> rom_ClassCatalogue::References(rfm_TableMetadata const& table) {
  rfm_MapName2FieldMetadata const& fields = table.FieldMap();
  std::vector<Reference> references;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(fields); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& oid = it.CurrentValue();
    std::string const name = oid.Name().CStr();
    if (oid.Type() != rfm_TypeInt || !oid.Present() || !EndsWith(name, kRomOidSuffix)) continue;
    std::string const member = name.substr(0, name.size() - std::strlen(kRomOidSuffix));
    cow_String const classIdName = (member + kRomClassIdSuffix).c_str();
    if (!fields.IsMember(classIdName)) continue;
    rfm_FieldMetadata const& classIdField = fields.ConstGet(classIdName);
    if (classIdField.Type() != rfm_TypeInt || !classIdField.Present()) continue;
    references.push_back({member.c_str(), oid.Name(), classIdName});
  }
  return references;
}
