#include "zdb_ClassCatalogue.h"

#include "rfm_TypeName.h"
#include "rom_HeaderLayout.h"
#include "zdb_Database.h"
#include "zdb_TableFinder.h"
#include "zdb_Text.h"

#include <exception>

namespace {

struct CatalogueField {
  char const* m_Name;
  rfm_Type m_Type;
  bool m_Required;  // files of old formats have catalogues without a class version
};

// By rom_CatalogField.
CatalogueField const kFields[] = {
    {kRomCatalogClassIdName, rfm_TypeInt, true},       {kRomCatalogClassTableName, rfm_TypeHandle, true},
    {kRomCatalogClassNameName, rfm_TypeString, true},  {kRomCatalogBaseClassIdName, rfm_TypeInt, true},
    {kRomCatalogClassVersionName, rfm_TypeInt, false},
};
constexpr int kFieldCount = sizeof kFields / sizeof kFields[0];

std::string Quoted(std::string const& text) { return zdb_QuotedText(text); }

}  // namespace

zdb_ClassCatalogue::zdb_ClassCatalogue(rfm_Table const& catalogue, zdb_TableFinder const& finder) {
  if (catalogue.IsNull()) return;
  try {
    m_Subject = "class catalogue (handle " + std::to_string(catalogue.Handle().Value()) + ")";
    std::vector<bool> usable = CheckFields(catalogue);
    int rows = catalogue.Length();
    for (int number = 0; number < rows; ++number) ReadRow(catalogue, number, usable);
  } catch (std::exception const& e) {
    Problem(std::string("it cannot be read: ") + e.what());
  }
  for (zdb_ClassRow& row : m_Rows) ReadClassTable(row, finder);
  for (std::size_t i = 0; i < m_Rows.size(); ++i) {
    if (m_Rows[i].m_ClassId) m_ById.emplace(*m_Rows[i].m_ClassId, i);
  }
}

std::vector<bool> zdb_ClassCatalogue::CheckFields(rfm_Table const& catalogue) {
  std::string name = catalogue.TableMetadata().TableName().CStr();
  if (name != kRomCatalogName) Problem("it is named " + Quoted(name) + ", not " + Quoted(kRomCatalogName));
  rfm_MapName2FieldMetadata const& fields = catalogue.GetFieldMap();
  std::vector<bool> usable(kFieldCount, false);
  for (int i = 0; i < kFieldCount; ++i) {
    CatalogueField const& field = kFields[i];
    if (!fields.IsMember(field.m_Name)) {
      if (field.m_Required) Problem(std::string("it has no field ") + Quoted(field.m_Name));
      continue;
    }
    rfm_Type type = fields.ConstGet(field.m_Name).Type();
    if (type != field.m_Type) {
      Problem(std::string("its field ") + Quoted(field.m_Name) + " holds " + zdb_WithArticle(rfm_TypeName(type)) +
              ", not " + zdb_WithArticle(rfm_TypeName(field.m_Type)));
      continue;
    }
    usable[static_cast<std::size_t>(i)] = true;
  }
  return usable;
}

void zdb_ClassCatalogue::ReadRow(rfm_Table const& catalogue, int number, std::vector<bool> const& usable) {
  zdb_ClassRow read;
  read.m_Row = number;
  try {
    rfm_Row row = catalogue.ReadRow(number);
    auto has = [&](int field) {
      if (!usable[static_cast<std::size_t>(field)]) return false;
      if (row.DataIsPresent(rfm_FieldHandle(kFields[field].m_Name, -1))) return true;
      if (kFields[field].m_Required) {
        Problem("row " + std::to_string(number) + " has no " + Quoted(kFields[field].m_Name));
      }
      return false;
    };
    auto handle = [&](int field) { return rfm_FieldHandle(kFields[field].m_Name, -1); };
    if (has(kRomCatalogClassId)) {
      read.m_ClassId = static_cast<std::uint32_t>(row.ReadFieldInt(handle(kRomCatalogClassId)));
    }
    if (has(kRomCatalogClassTable)) read.m_TableHandle = row.ReadFieldHandle(handle(kRomCatalogClassTable)).Value();
    if (has(kRomCatalogClassName)) read.m_Name = row.ReadFieldString(handle(kRomCatalogClassName)).CStr();
    if (has(kRomCatalogBaseClassId)) {
      read.m_BaseClassId = static_cast<std::uint32_t>(row.ReadFieldInt(handle(kRomCatalogBaseClassId)));
    }
    if (has(kRomCatalogClassVersion)) read.m_Version = row.ReadFieldInt(handle(kRomCatalogClassVersion));
  } catch (std::exception const& e) {
    Problem("row " + std::to_string(number) + " cannot be read: " + e.what());
    return;
  }
  m_Rows.push_back(read);
}

void zdb_ClassCatalogue::ReadClassTable(zdb_ClassRow& row, zdb_TableFinder const& finder) const {
  if (!row.m_TableHandle) return;
  rfm_Table table = finder.Find(*row.m_TableHandle, row.m_TableMissing);
  if (table.IsNull()) return;
  try {
    row.m_TableName = table.TableMetadata().TableName().CStr();
    row.m_TableRows = table.Length();
    rfm_MapName2FieldMetadata const& fields = table.GetFieldMap();
    if (fields.IsMember(kRomBaseClassOidName)) row.m_BaseOidType = fields.ConstGet(kRomBaseClassOidName).Type();
    row.m_TableFound = true;
  } catch (std::exception const& e) {
    row.m_TableMissing = std::string("names a table that cannot be read: ") + e.what();
  }
}

zdb_ClassRow const* zdb_ClassCatalogue::Find(std::uint32_t classId) const {
  auto found = m_ById.find(classId);
  return found == m_ById.end() ? nullptr : &m_Rows[found->second];
}

std::string zdb_ClassCatalogue::Subject(zdb_ClassRow const& row) {
  std::string id = row.m_ClassId ? zdb_HexWord(*row.m_ClassId) : "of row " + std::to_string(row.m_Row);
  if (!row.m_Name) return "class " + id;
  return "class " + Quoted(*row.m_Name) + " (" + id + ")";
}
