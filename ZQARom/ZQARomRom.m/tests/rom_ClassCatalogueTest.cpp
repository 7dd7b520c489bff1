// rom_ClassCatalogue: the classes of a file read without the program's
// class metadata, the reference members of their tables, and damage.

#include "rfm_Row.h"
#include "rfm_SampleDatabase.h"
#include "rfm_Table.h"
#include "rom_ClassCatalogue.h"
#include "rom_HeaderLayout.h"
#include "rom_SampleTransporterFile.h"
#include "rom_TestClasses.h"
#include "rom_ZDBHeaderParser.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

rfm_Database OpenDatabase(cow_String const& path, utl_FileAccess access) {
  return rfm_Database::Open(rfm_File::Open(path, access, false), cow_String());
}

std::set<std::string> Members(std::vector<rom_ClassCatalogue::Reference> const& references) {
  std::set<std::string> members;
  for (auto const& reference : references) {
    EXPECT_EQ(reference.m_Member + kRomOidSuffix, reference.m_OidField);
    EXPECT_EQ(reference.m_Member + kRomClassIdSuffix, reference.m_ClassIdField);
    members.insert(reference.m_Member.CStr());
  }
  return members;
}

TEST(ClassCatalogueTest, ListsEachClassOnceWithItsTableAndRowsAndFindsReferenceMembers) {
  zqa_TestDir dir;
  cow_String const path = dir.File("sample.zdb");
  cls_ClassRegistrar registrar;
  rom_SampleTransporterFile::Register(registrar);
  rom_SampleTransporterFile::Contents const contents =
      rom_SampleTransporterFile::Write(registrar, rfm_File::Open(path, utl_FileAccessCreate, false));

  rfm_Database const database = OpenDatabase(path, utl_FileAccessRead);
  rom_ClassCatalogue const catalogue(database);
  ASSERT_TRUE(catalogue.HasObjectLayer());
  ASSERT_EQ(contents.m_Tables.size(), catalogue.Classes().size());
  for (std::size_t i = 0; i < contents.m_Tables.size(); ++i) {
    rom_ClassCatalogue::Class const& entry = catalogue.Classes()[i];
    EXPECT_EQ(contents.m_Tables[i].m_ClassId, entry.m_ClassId);
    EXPECT_EQ(contents.m_Tables[i].m_Handle, entry.m_Table);
    rfm_Table const table = database.Table(entry.m_Table, -1, -1);
    EXPECT_EQ(table.Length(), entry.m_Rows);
    EXPECT_EQ(table.TableMetadata().TableName(), entry.m_Name);
    EXPECT_EQ(&entry, catalogue.Find(entry.m_ClassId));
  }
  rom_ClassCatalogue::Class const* hex = catalogue.Find(rom_TestClasses::kHex8);
  ASSERT_NE(nullptr, hex);
  EXPECT_EQ("Hex8", hex->m_Name);
  EXPECT_EQ(rom_TestClasses::kElement, hex->m_BaseClassId);
  EXPECT_EQ(1, hex->m_Version);
  EXPECT_EQ(rom_ClassCatalogue::kNoBaseClass, catalogue.Find(rom_TestClasses::kMaterial)->m_BaseClassId);
  EXPECT_EQ(nullptr, catalogue.Find(0x7fff0000));

  // A node refers to its material; a hexahedron's list of nodes and its
  // base class part are not references.
  rom_ClassCatalogue::Class const* node = catalogue.Find(rom_TestClasses::kNode);
  ASSERT_NE(nullptr, node);
  EXPECT_EQ(std::set<std::string>{"Material"},
            Members(rom_ClassCatalogue::References(database.Table(node->m_Table, -1, -1).TableMetadata())));
  EXPECT_TRUE(Members(rom_ClassCatalogue::References(database.Table(hex->m_Table, -1, -1).TableMetadata())).empty());
}

TEST(ClassCatalogueTest, AFileWithoutObjectsHasNoClassesAndADamagedRowNamesTheFile) {
  zqa_TestDir dir;
  cow_String const plain = dir.File("plain.zdb");
  rfm_SampleDatabase::Write(rfm_File::Open(plain, utl_FileAccessCreate, false));
  rom_ClassCatalogue const none(OpenDatabase(plain, utl_FileAccessRead));
  EXPECT_FALSE(none.HasObjectLayer());
  EXPECT_TRUE(none.Classes().empty());

  cow_String const path = dir.File("sample.zdb");
  cls_ClassRegistrar registrar;
  rom_SampleTransporterFile::Register(registrar);
  rom_SampleTransporterFile::Write(registrar, rfm_File::Open(path, utl_FileAccessCreate, false));
  {
    rfm_Database database = OpenDatabase(path, utl_FileAccessUpdate);
    rfm_Table const catalog = rom_ZDBHeaderParser(database).Catalog();
    catalog.NewRow().WriteFieldString(rfm_FieldHandle(kRomCatalogClassNameName, -1), "Orphan");
    catalog.Flush();
  }
  try {
    rom_ClassCatalogue const damaged(OpenDatabase(path, utl_FileAccessRead));
    FAIL() << "a row without its class id was taken";
  } catch (std::exception const& e) {
    std::string const what = e.what();
    EXPECT_NE(std::string::npos, what.find("lacks its class id")) << what;
    EXPECT_NE(std::string::npos, what.find(path.CStr())) << what;
  }
}

}  // namespace
