#include "zdb_ObjectFile.h"

#include "rom_HeaderLayout.h"
#include "zdb_Text.h"

#include <algorithm>

namespace {

struct InternalClass {
  std::uint32_t m_Id;
  char const* m_Name;
};

constexpr InternalClass kInternalClasses[] = {
    {kRomInternalListClass, kRomInternalListName}, {kRomInternalMapClass, kRomInternalMapName},
    {kRomInternalCowClass, kRomInternalCowName},   {kRomInternalDblColClass, kRomInternalDblColName},
    {kRomInternalBlobClass, kRomInternalBlobName},
};

// A name that reads as one word beside its oid in brackets.
bool PlainName(std::string const& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return c > ' ' && c < '\x7F' && c != '[' && c != ']' && c != '"' && c != '\\';
  });
}

}  // namespace

zdb_ObjectFile::zdb_ObjectFile(rfm_Database const& database)
    : m_Finder(database), m_Header(database, m_Finder), m_Catalogue(m_Header.Catalogue(), m_Finder) {
  for (zdb_ClassRow const& row : m_Catalogue.Rows()) {
    if (row.m_TableFound) m_ClassOfTable.emplace(*row.m_TableHandle, &row);
  }
}

zdb_ClassRow const* zdb_ObjectFile::ClassOfTable(int handle) const {
  auto found = m_ClassOfTable.find(handle);
  return found == m_ClassOfTable.end() ? nullptr : found->second;
}

std::vector<zdb_Column> zdb_ObjectFile::Columns(rfm_Table const& table) const {
  if (!Present()) return zdb_FieldColumns(table);
  if (zdb_ClassRow const* row = ClassOfTable(table.Handle().Value())) {
    std::uint32_t base = row->m_BaseClassId.value_or(kRomNoClass);
    if (row->m_ClassId == kRomInternalListClass) return zdb_CollectionRowColumns(table, base, zdb_Column::kListTarget);
    if (row->m_ClassId == kRomInternalBlobClass) return zdb_CollectionRowColumns(table, base, zdb_Column::kBlobTarget);
    if (row->m_ClassId == kRomInternalMapClass || row->m_ClassId == kRomInternalDblColClass) {
      return zdb_CollectionRowColumns(table, base, zdb_Column::kMapTarget);
    }
    return zdb_ClassTableColumns(table, base);
  }
  std::string name = table.TableMetadata().TableName().CStr();
  if (name.compare(0, sizeof kRomOwnNamePrefix - 1, kRomOwnNamePrefix) == 0) return zdb_CollectionColumns(table);
  return zdb_FieldColumns(table);
}

std::string zdb_ObjectFile::ClassName(std::uint32_t classId) const {
  zdb_ClassRow const* row = m_Catalogue.Find(classId);
  if (row != nullptr && row->m_Name) return PlainName(*row->m_Name) ? *row->m_Name : zdb_QuotedText(*row->m_Name);
  for (InternalClass const& internal : kInternalClasses) {
    if (internal.m_Id == classId) return internal.m_Name;
  }
  return zdb_HexWord(classId);
}

std::string zdb_ObjectFile::Label(std::uint32_t classId, int oid) const {
  return ClassName(classId) + "[" + std::to_string(oid) + "]";
}
