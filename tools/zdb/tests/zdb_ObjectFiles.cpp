#include "zdb_ObjectFiles.h"

#include "rfm_Space.h"
#include "rom_HeaderLayout.h"

namespace {

// The first word of the UnknownWord form's root.
constexpr int kUnknownRootWord = 0x12345678;

rfm_TableMetadata CatalogueLayout(bool withVersion) {
  rfm_TableMetadata layout(kRomCatalogName, 1);
  layout.DefineIntField(kRomCatalogClassIdName);
  layout.DefineHandleField(kRomCatalogClassTableName);
  layout.DefineStringField(kRomCatalogClassNameName);
  layout.DefineIntField(kRomCatalogBaseClassIdName);
  if (withVersion) layout.DefineIntField(kRomCatalogClassVersionName);
  return layout;
}

void WriteRootSpace(rfm_Database const& database, int first, int second) {
  rfm_Space space = database.Space(-1);
  space.WriteInt(first);
  space.WriteInt(second);
  space.Flush();
}

}  // namespace

zdb_ObjectFileWriter::zdb_ObjectFileWriter(cow_String const& name, zdb_HeaderForm form, bool withVersion,
                                           rfm_TestFileKind kind)
    : m_Database(CreateTestDatabase(name, "APP", false, kind)), m_WithVersion(withVersion) {
  switch (form) {
    case zdb_HeaderForm::TaggedStream:
      m_Root = m_Database.TaggedStream(0);
      break;
    case zdb_HeaderForm::VersionSpace:
      WriteRootSpace(m_Database, static_cast<int>(kRomVersionSpaceMagic), kRomHeaderVersion);
      break;
    case zdb_HeaderForm::UnknownWord:
      WriteRootSpace(m_Database, kUnknownRootWord, kRomHeaderVersion);
      break;
    case zdb_HeaderForm::Table:
      break;
  }
  m_Catalogue = m_Database.Table(CatalogueLayout(withVersion), -1, -1);
}

void zdb_ObjectFileWriter::WriteFullHeader() const {
  m_Root.WriteHandle(kRomTagCatalog, m_Catalogue.Handle());
  m_Root.WriteInt(kRomTagVersion, kRomHeaderVersion);
  m_Root.WriteInt(kRomTagMajorVersion, kTestMajorVersion);
  m_Root.WriteInt(kRomTagMinorVersion, kTestMinorVersion);
  m_Root.WriteInt(kRomTagUpdateVersion, kTestUpdateVersion);
  m_Root.WriteInt(kRomTagReleaseType, kTestReleaseType);
}

int zdb_ObjectFileWriter::AddTable(char const* name, bool baseRow, int rows) const {
  rfm_TableMetadata layout(name, 1);
  if (baseRow) layout.DefineIntField(kRomBaseClassOidName);
  rfm_FieldHandle value(layout.DefineDoubleField("value"));
  rfm_Table table = m_Database.Table(layout, -1, -1);
  for (int i = 0; i < rows; ++i) table.NewRow().WriteFieldDouble(value, i);
  table.Flush();
  return table.Handle().Value();
}

void zdb_ObjectFileWriter::AddCatalogueRow(unsigned classId, int table, char const* name, unsigned baseClass,
                                           int version) const {
  rfm_Row row = m_Catalogue.NewRow();
  row.WriteFieldInt(rfm_FieldHandle(kRomCatalogClassIdName, -1), static_cast<int>(classId));
  row.WriteFieldHandle(rfm_FieldHandle(kRomCatalogClassTableName, -1), rfm_Handle(table));
  row.WriteFieldString(rfm_FieldHandle(kRomCatalogClassNameName, -1), name);
  row.WriteFieldInt(rfm_FieldHandle(kRomCatalogBaseClassIdName, -1), static_cast<int>(baseClass));
  if (m_WithVersion && version != kNoVersion) {
    row.WriteFieldInt(rfm_FieldHandle(kRomCatalogClassVersionName, -1), version);
  }
}

int zdb_ObjectFileWriter::AddClass(unsigned classId, char const* name, unsigned baseClass, int version,
                                   int rows) const {
  int table = AddTable(name, baseClass != kRomNoClass, rows);
  AddCatalogueRow(classId, table, name, baseClass, version);
  return table;
}

rfm_Table zdb_ObjectFileWriter::AddReferenceClass(unsigned classId, char const* name, unsigned baseClass,
                                                  std::vector<std::string> const& references) const {
  rfm_TableMetadata layout(name, 1);
  if (baseClass != kRomNoClass) layout.DefineIntField(kRomBaseClassOidName);
  for (std::string const& reference : references) {
    layout.DefineIntField((reference + kRomOidSuffix).c_str());
    layout.DefineIntField((reference + kRomClassIdSuffix).c_str());
  }
  rfm_Table table = m_Database.Table(layout, -1, -1);
  AddCatalogueRow(classId, table.Handle().Value(), name, baseClass, 1);
  return table;
}

void WriteReference(rfm_Row const& row, std::string const& name, int oid, unsigned classId) {
  row.WriteFieldInt(rfm_FieldHandle((name + kRomOidSuffix).c_str(), -1), oid);
  row.WriteFieldInt(rfm_FieldHandle((name + kRomClassIdSuffix).c_str(), -1), static_cast<int>(classId));
}
