#include "rom_Transporter.h"

#include "ZQABasUtlVersion.h"
#include "atr_String.h"
#include "cow_String.h"
#include "nex_PrimException.h"
#include "omi_BtreeIterator.h"
#include "rfm_FieldMetadata.h"
#include "rfm_Row.h"
#include "rfm_Space.h"
#include "rfm_TaggedStream.h"
#include "rom_HeaderLayout.h"
#include "rom_TestClasses.h"
#include "rom_ZDBHeaderParser.h"
#include "zqa_TestDir.h"
#include "zqa_TextOf.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using Message = nex_PrimException<atr_String, 1>;
using Assertion = nex_PrimException<cow_String, 3>;
using namespace rom_TestClasses;

rfm_File Create(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessCreate, false); }
rfm_File Update(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessUpdate, false); }
rfm_File Read(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessRead, false); }

// The columns of a table as (index, name, type), in index order.
std::vector<std::tuple<int, std::string, int>> Columns(rfm_Table const& table) {
  std::vector<std::tuple<int, std::string, int>> columns(static_cast<std::size_t>(table.TableMetadata().FieldCount()));
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(table.GetFieldMap()); !it.IsDone(); it.Next())
    columns.at(static_cast<std::size_t>(it.CurrentValue().Index())) =
        std::make_tuple(it.CurrentValue().Index(), std::string(it.CurrentKey().CStr()), int(it.CurrentValue().Type()));
  return columns;
}

// The header's items as (tag, type, int value), in stored order.
std::vector<std::tuple<int, int, int>> HeaderItems(rfm_Database const& db) {
  std::vector<std::tuple<int, int, int>> items;
  rfm_TaggedStream const ts = db.TaggedStream(db.RootTableHandle(), 0);
  while (ts.Next())
    items.emplace_back(ts.GetID(), ts.GetType(), ts.GetType() == rfm_TypeHandle ? ts.GetHandle().Value() : ts.GetInt());
  return items;
}

struct Catalogued {
  unsigned int classId;
  std::string name;
  unsigned int baseClassId;
  int version;
  bool operator==(Catalogued const& o) const {
    return classId == o.classId && name == o.name && baseClassId == o.baseClassId && version == o.version;
  }
};

std::vector<Catalogued> CatalogRows(rfm_Table const& catalog) {
  std::vector<Catalogued> rows;
  for (int i = 0; catalog.RowExists(i); ++i) {
    rfm_Row const row = catalog.ReadRow(i);
    rows.push_back({static_cast<unsigned int>(row.ReadFieldInt(rfm_FieldHandle(kRomCatalogClassId))),
                    row.ReadFieldString(rfm_FieldHandle(kRomCatalogClassName)).CStr(),
                    static_cast<unsigned int>(row.ReadFieldInt(rfm_FieldHandle(kRomCatalogBaseClassId))),
                    row.ReadFieldInt(rfm_FieldHandle(kRomCatalogClassVersion))});
  }
  return rows;
}

}  // namespace

TEST(TransporterTest, NewFileHasItsHeaderAtTheRootAndTheCatalogueBesideIt) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  {
    rom_Transporter const t(registrar, Create(dir.File("new.zdb")), "TEST", "header", 7, 3);
    EXPECT_EQ(3, t.ReleaseType());
  }
  rfm_Database const db = rfm_Database::Open(Read(dir.File("new.zdb")), "");
  EXPECT_EQ(4, db.RootTableHandle().Value());
  EXPECT_EQ(rfm_TypeStream, db.HandleType(db.RootTableHandle()));
  ZQABasUtlVersion const& release = ZQABasUtlVersion::Instance();
  // Tags ascend; a version number of 0 is left out.
  std::vector<std::tuple<int, int, int>> expected = {{0, rfm_TypeHandle, 5}, {1, rfm_TypeInt, 0x332}};
  if (release.MajorVersion() != 0) expected.emplace_back(2, rfm_TypeInt, release.MajorVersion());
  if (release.MinorVersion() != 0) expected.emplace_back(3, rfm_TypeInt, release.MinorVersion());
  if (release.UpdateVersion() != 0) expected.emplace_back(4, rfm_TypeInt, release.UpdateVersion());
  expected.emplace_back(5, rfm_TypeInt, 3);
  EXPECT_EQ(expected, HeaderItems(db));
  EXPECT_EQ(rfm_TypeTable, db.HandleType(rfm_Handle(5)));
  rom_Transporter const reader(registrar, Read(dir.File("new.zdb")), "TEST", -1);
  EXPECT_EQ(3, reader.ReleaseType());
  rfm_Table const& catalog = reader.Catalog();
  EXPECT_EQ(5, catalog.Handle().Value());
  EXPECT_EQ((std::vector<std::tuple<int, std::string, int>>{{0, "Class ID", rfm_TypeInt},
                                                           {1, "Class Table", rfm_TypeHandle},
                                                           {2, "Class Name", rfm_TypeString},
                                                           {3, "Base Class ID", rfm_TypeInt},
                                                           {4, "Class Version", rfm_TypeInt}}),
            Columns(catalog));
  EXPECT_EQ(0, catalog.Length());
  // A negative release type records this release's; opening with a negative
  // one leaves the header as it is, also on a read-only file.
  {
    rom_Transporter const t(registrar, Create(dir.File("default.zdb")), "TEST", "header", 7, -1);
    EXPECT_EQ(release.ReleaseType(), t.ReleaseType());
  }
}

TEST(TransporterTest, FirstUseOfAClassMakesItsTableAndCatalogueRowAndAReopenFindsThem) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  cow_String const path = dir.File("model.zdb");
  {
    rom_Transporter t(registrar, Create(path), "TEST", "model", 7, -1);
    rom_ClassBag& node = t.GetClassBagForWrite(kNode);
    EXPECT_EQ((std::vector<std::tuple<int, std::string, int>>{{0, "Id", rfm_TypeInt},
                                                             {1, "Material#OID", rfm_TypeInt},
                                                             {2, "Material#ClassID", rfm_TypeInt},
                                                             {3, "X", rfm_TypeDouble},
                                                             {4, "Y", rfm_TypeDouble},
                                                             {5, "Z", rfm_TypeDouble}}),
              Columns(node.Table()));
    EXPECT_EQ(0, node.MapField(1));
    EXPECT_EQ(3, node.MapField(2));
    EXPECT_EQ(5, node.MapField(4));
    EXPECT_EQ(1, node.MapField(5));
    EXPECT_EQ(-1, node.MapField(0));
    EXPECT_EQ(-1, node.MapField(-1));
    EXPECT_EQ("entryIndex >= 0 && entryIndex < m_IndexMapArraySize", zqa_TextOf<Assertion>([&] { node.MapField(6); }));
    EXPECT_EQ(&node, &t.GetClassBagForWrite(kNode));

    rom_ClassBag& hex = t.GetClassBagForWrite(kHex8);
    EXPECT_EQ((std::vector<std::tuple<int, std::string, int>>{{0, "##BaseClassOID", rfm_TypeInt},
                                                             {1, "Nodes#Handle", rfm_TypeHandle},
                                                             {2, "Nodes#Columns", rfm_TypeInt}}),
              Columns(hex.Table()));
    EXPECT_EQ(1, hex.MapField(1));
    rom_ClassBag& marker = t.GetClassBagForWrite(kMarker);
    EXPECT_FALSE(marker.HasTable());
    EXPECT_EQ(-1, marker.MapField(0));
    t.Flush();
    EXPECT_EQ((std::vector<Catalogued>{{kNode, "Node", cls_kNoClass, 1}, {kHex8, "Hex8", kElement, 1}}),
              CatalogRows(t.Catalog()));
  }
  {
    // Read-only: the stored classes open; a class new to the file does not.
    rom_Transporter t(registrar, Read(path), "TEST", -1);
    EXPECT_EQ(6, t.GetClassBagForRead(kNode).Table().TableMetadata().FieldCount());
    EXPECT_EQ(0, t.GetTableSize(kHex8));
    EXPECT_EQ("rom_Transporter::SetupTable - Attempt to create new class in read-only ZDB, Class: Material",
              zqa_TextOf<Message>([&] { t.GetClassBagForWrite(kMaterial); }));
    EXPECT_EQ("rom_Transporter::GetClassBagForRead - Table for class \"Quad4\" is missing from the database: " +
                  std::string(path.CStr()) + ". The database is corrupt.",
              zqa_TextOf<Message>([&] { t.GetClassBagForRead(kQuad4); }));
    t.Flush();  // nothing to do on a read-only file
  }
  {
    // Writable again: the stored tables are reused, new classes join.
    rom_Transporter t(registrar, Update(path), "TEST", -1);
    t.GetClassBagForWrite(kNode).Table().NewRow().WriteFieldInt(rfm_FieldHandle(0), 42);
    t.GetClassBagForWrite(kMaterial);
    t.Flush();
    EXPECT_EQ(3u, CatalogRows(t.Catalog()).size());
  }
  rom_Transporter t(registrar, Read(path), "TEST", -1);
  EXPECT_EQ(1, t.GetTableSize(kNode));
  EXPECT_EQ(42, t.GetClassBagForRead(kNode).Table().ReadRow(0).ReadFieldInt(rfm_FieldHandle("Id", t.GetClassBagForRead(kNode).MapField(1))));
  EXPECT_EQ(3, t.Database().GetMapClassName2ClassVersion().Size());
}

TEST(TransporterTest, HandBuiltHeadersOfTheOlderFormsOpen) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  for (auto form : {rom_ZDBHeaderParser::HeaderTypeTable, rom_ZDBHeaderParser::HeaderTypeVersionSpace}) {
    cow_String const path = dir.File(form == rom_ZDBHeaderParser::HeaderTypeTable ? "table.zdb" : "space.zdb");
    {
      rfm_Database db = rfm_Database::Create(Create(path), "TEST", "old", 7);
      rom_ZDBHeaderParser const header(db, form, 2);
      db.Flush();
    }
    {
      rom_Transporter t(registrar, Update(path), "TEST", -1);
      t.GetClassBagForWrite(kMaterial);
      t.Flush();
    }
    EXPECT_EQ("ZDB file is corrupt:  Release type can't be changed in old format database.",
              zqa_TextOf<Message>([&] { rom_Transporter(registrar, Update(path), "TEST", 4); }));
    rfm_Database db = rfm_Database::Open(Read(path), "");
    rom_ZDBHeaderParser const header(db);
    EXPECT_EQ(form, header.GetHeaderType());
    EXPECT_EQ(form == rom_ZDBHeaderParser::HeaderTypeTable ? 0 : 0x332, header.Version());
    EXPECT_EQ(-1, header.ReleaseType());
    EXPECT_EQ((std::vector<Catalogued>{{kMaterial, "Material", cls_kNoClass, 1}}), CatalogRows(header.Catalog()));
  }
}

TEST(TransporterTest, RewriteHeaderRecordsAReleaseTypeOnlyInAWritableFile) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  cow_String const path = dir.File("release.zdb");
  { rom_Transporter const t(registrar, Create(path), "TEST", "release", 7, 0); }
  {
    rfm_Database db = rfm_Database::Open(Read(path), "");
    EXPECT_EQ(5, std::get<0>(HeaderItems(db).back()));
    EXPECT_EQ(0, std::get<2>(HeaderItems(db).back()));  // release type 0 is written
  }
  EXPECT_EQ("ZDB file is corrupt:  Release type can't be changed in read-only database.",
            zqa_TextOf<Message>([&] { rom_Transporter(registrar, Read(path), "TEST", 9); }));
  { rom_Transporter const t(registrar, Update(path), "TEST", 9); }
  rfm_Database db = rfm_Database::Open(Read(path), "");
  EXPECT_EQ(9, rom_ZDBHeaderParser(db).ReleaseType());
  std::vector<std::tuple<int, int, int>> const items = HeaderItems(db);
  EXPECT_EQ(std::make_tuple(5, int(rfm_TypeInt), 9), items.back());
  // A copied header carries the source's header type as its version.
  rfm_Database copy = rfm_Database::Create(Create(dir.File("copy.zdb")), "TEST", "copy", 7);
  rom_ZDBHeaderParser const copied(copy, rom_ZDBHeaderParser(db));
  EXPECT_EQ(1, copied.Version());
  EXPECT_EQ(std::make_tuple(1, int(rfm_TypeInt), 1), HeaderItems(copy).at(1));
}

TEST(TransporterTest, DamagedHeadersRaiseTheLibrarysMessages) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  auto header = [&](char const* name, auto fill) {
    cow_String const path = dir.File(name);
    rfm_Database db = rfm_Database::Create(Create(path), "TEST", name, 7);
    fill(db);
    db.Flush();
    return path;
  };
  cow_String const unknown = header("unknown.zdb", [](rfm_Database& db) { db.Space(-1).WriteInt(0x12345678); });
  EXPECT_EQ("ZDB file is corrupt:  Root object must be either a table, tagged stream, or version space.",
            zqa_TextOf<Message>([&] { rom_Transporter(registrar, Read(unknown), "TEST", -1); }));
  cow_String const releaseOnly =
      header("release-only.zdb", [](rfm_Database& db) { db.TaggedStream(0).WriteInt(kRomTagReleaseType, 2); });
  EXPECT_EQ("ZDB file is corrupt:  No catalog table found in file header.",
            zqa_TextOf<Message>([&] { rom_Transporter(registrar, Read(releaseOnly), "TEST", -1); }));
  cow_String const wrongType =
      header("wrong-type.zdb", [](rfm_Database& db) { db.TaggedStream(0).WriteInt(kRomTagCatalog, 5); });
  EXPECT_EQ("ts.GetType() == rfm_TypeHandle",
            zqa_TextOf<Assertion>([&] { rom_Transporter(registrar, Read(wrongType), "TEST", -1); }));
  cow_String const wrongInt = header("wrong-int.zdb", [](rfm_Database& db) {
    rfm_TaggedStream const ts = db.TaggedStream(0);
    ts.WriteDouble(kRomTagMajorVersion, 1.0);
  });
  EXPECT_EQ("ts.GetType() == rfm_TypeInt",
            zqa_TextOf<Assertion>([&] { rom_Transporter(registrar, Read(wrongInt), "TEST", -1); }));
}

TEST(TransporterTest, ACatalogueRowThatLeadsElsewhereIsCorruptionNotAnotherTable) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  cow_String const path = dir.File("catalogue.zdb");
  {
    rom_Transporter t(registrar, Create(path), "TEST", "catalogue", 7, -1);
    t.GetClassBagForWrite(kMaterial).Table().NewRow().WriteFieldDouble(rfm_FieldHandle("Young", -1), 2.0e11);
    rom_ClassBag const& node = t.GetClassBagForWrite(kNode);
    node.Table().NewRow().WriteFieldInt(rfm_FieldHandle("Id", node.MapField(1)), 7);
  }
  std::string const good = zqa_ReadFileBytes(path);
  // Rewrites a field of Node's catalogue row (the second) in a copy of the file.
  auto damaged = [&](char const* name, char const* field, auto write) {
    cow_String const copy = dir.File(name);
    zqa_WriteFileBytes(copy, good);
    rfm_Database db = rfm_Database::Open(Update(copy), "");
    write(db.Table(rfm_Handle(5), -1, -1).UpdateRow(1), rfm_FieldHandle(field, -1));
    db.Flush();
    return copy;
  };
  rfm_Handle const materialTable =
      rom_Transporter(registrar, Read(path), "TEST", -1).GetClassBagForRead(kMaterial).Table().Handle();

  // Node's row names Material's table: Node's column indexes would read Material's rows.
  cow_String const otherTable = damaged("other-table.zdb", kRomCatalogClassTableName,
                                        [&](rfm_Row const& row, rfm_FieldHandle const& field) {
                                          row.WriteFieldHandle(field, materialTable);
                                        });
  std::string const wrongTable = "rom_Transporter::SetupTable - The catalogue gives class \"Node\" the table "
                                 "\"Material\" in " + std::string(otherTable.CStr()) + ". The database is corrupt.";
  EXPECT_EQ(wrongTable, zqa_TextOf<Message>([&] {
              rom_Transporter(registrar, Read(otherTable), "TEST", -1).GetClassBagForRead(kNode);
            }));
  EXPECT_EQ(wrongTable, zqa_TextOf<Message>([&] {
              rom_Transporter(registrar, Update(otherTable), "TEST", -1).GetClassBagForWrite(kNode);
            }));

  // Node's row names a class the program does not know: the table named
  // Node is not the class's, and reading, also of a writable file, makes no
  // new one beside it.
  cow_String const otherId = damaged("other-id.zdb", kRomCatalogClassIdName,
                                     [](rfm_Row const& row, rfm_FieldHandle const& field) {
                                       row.WriteFieldInt(field, 0x0F000001);
                                     });
  std::string const missing = "rom_Transporter::GetClassBagForRead - Table for class \"Node\" is missing from the "
                              "database: " + std::string(otherId.CStr()) + ". The database is corrupt.";
  EXPECT_EQ(missing, zqa_TextOf<Message>([&] {
              rom_Transporter(registrar, Read(otherId), "TEST", -1).GetClassBagForRead(kNode);
            }));
  EXPECT_EQ(missing, zqa_TextOf<Message>([&] {
              rom_Transporter(registrar, Update(otherId), "TEST", -1).GetClassBagForRead(kNode);
            }));
  rom_Transporter reopened(registrar, Read(otherId), "TEST", -1);
  EXPECT_EQ(2, reopened.Catalog().Length());
  EXPECT_EQ(1, reopened.GetTableSize(kMaterial));
}

TEST(TransporterTest, UpToDateStatusComparesStoredClassVersionsWithTheRegistrars) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar, 5);  // Node at version 5
  rfm_Database db = rfm_Database::Create(Create(dir.File("status.zdb")), "TEST", "status", 7);
  rom_ZDBHeaderParser header(db, rom_ZDBHeaderParser::HeaderTypeTaggedStream, -1);
  int maxVersion = -7;
  EXPECT_EQ(0u, header.GetUpToDateStatus(registrar, &maxVersion));
  EXPECT_EQ(0, maxVersion);
  auto add = [&](unsigned int classId, int version) {
    rfm_Row const row = header.Catalog().NewRow();
    row.WriteFieldInt(rfm_FieldHandle(kRomCatalogClassId), static_cast<int>(classId));
    if (version >= 0) row.WriteFieldInt(rfm_FieldHandle(kRomCatalogClassVersion), version);
  };
  add(kRomInternalListClass, 9999);  // internal classes never count
  add(0x0F000001, 1651);             // unknown, exactly the threshold
  add(kNode, 5);
  EXPECT_EQ(0u, header.GetUpToDateStatus(registrar, &maxVersion));
  EXPECT_EQ(5, maxVersion);
  add(kMaterial, -1);  // no version stored: an old file's 203, newer than Material's 1
  EXPECT_EQ(rom_ZDBHeaderParser::kHoldsNewerClasses, header.GetUpToDateStatus(registrar, &maxVersion));
  EXPECT_EQ(203, maxVersion);
  add(0x0F000002, 1650);  // unknown and below the threshold
  EXPECT_EQ(3u, header.GetUpToDateStatus(registrar, nullptr));
  // The catalogue's position is kept.
  header.Catalog().Seek(2);
  header.GetUpToDateStatus(registrar, nullptr);
  EXPECT_EQ(2, header.Catalog().Location());
}

TEST(TransporterTest, VersionsInheritanceCollectionsAndDestructorsFollowTheMetadata) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  Register(registrar);
  registrar.CreateClassMD("Node", kNode, 3, nullptr, cls_kNoClass).AddAttribute(cls_FieldHandle(1, "Id"), cls_AttrInt);
  registrar.CreateClassMD("Node", kNode, 2, nullptr, cls_kNoClass).AddAttribute(cls_FieldHandle(1, "Id"), cls_AttrInt);
  rom_Transporter t(registrar, Create(dir.File("versions.zdb")), "TEST", "versions", 7, -1);
  for (int version : {3, 1, 2}) t.SetupTableMetadata(registrar.GetClassMetadata(kNode, version));
  t.SetupTableMetadata(registrar.ConstGet(kMarker));
  EXPECT_EQ(6, t.GetTableMetadata(kNode, 1).FieldCount());
  EXPECT_EQ(1, t.GetTableMetadata(kNode, 3).FieldCount());
  EXPECT_EQ(-1, t.GetPreviousVersion(kNode, 1));
  EXPECT_EQ(1, t.GetPreviousVersion(kNode, 2));
  EXPECT_EQ(3, t.GetPreviousVersion(kNode, 7));  // an unknown version answers the highest
  EXPECT_EQ(2, t.GetNextVersion(kNode, 1));
  EXPECT_EQ(-1, t.GetNextVersion(kNode, 3));
  EXPECT_EQ(-1, t.GetNextVersion(kNode, 7));
  EXPECT_EQ("rom_Transporter::TableMetadata failed: can't get table metadata for Class ID 16777222.",
            zqa_TextOf<Message>([&] { t.GetTableMetadata(kMarker, 1); }));
  EXPECT_EQ("rom_Transporter::TableMetadata failed: can't get table metadata for Class ID 16777218 version number 4.",
            zqa_TextOf<Message>([&] { t.GetTableMetadata(kNode, 4); }));

  t.CheckInheritence(kHex8, kElement);
  t.CheckInheritence(kHex8, kHex8);
  EXPECT_EQ("Inheritence error: class Quad4 (01000005) is not a derived type of base class Hex8 (01000004)\n",
            zqa_TextOf<Message>([&] { t.CheckInheritence(kQuad4, kHex8); }));
  t.CheckCollectionType(cls_CollListObj, kHex8, "Nodes");
  EXPECT_EQ("Implemented collection does not match metadata.\n  Class: Hex8\n  Member: Nodes\n  Attribute collection "
            "type: 2\n  Implemented collection type: 1",
            zqa_TextOf<Message>([&] { t.CheckCollectionType(cls_CollListPrim, kHex8, "Nodes"); }));
  EXPECT_EQ("Implemented collection does not match metadata.\n  Class: Hex8\n  Member: Corners\n  Attribute collection "
            "type: 0\n  Implemented collection type: 2",
            zqa_TextOf<Message>([&] { t.CheckCollectionType(cls_CollListObj, kHex8, "Corners"); }));

  EXPECT_EQ(kElement, t.FindMDWithDtor(kQuad4).ClassId());
  EXPECT_EQ("Warning: objectCOW dtor not defined in ddbAPI metadata for: Node\n",
            zqa_TextOf<Message>([&] { t.FindMDWithDtor(kNode); }));
  EXPECT_EQ(kRomInternalMapClass, t.GetClassMD(kRomInternalMapClass).ClassId());
  EXPECT_EQ(cls_AttrMap, t.GetClassMD(kRomInternalMapClass).FindAttribute("Target").m_Type);
  EXPECT_EQ(1, t.GetClassBagForWrite(kRomInternalListClass).MapField(1) + 1);  // Target#Handle then Target#Columns
}

namespace {
struct CountingContainer : cls_PC {
  int flushes = 0;
  int disconnects = 0;
  void Flush() override { ++flushes; }
  void Disconnect() override {
    ++disconnects;
    cls_PC::Disconnect();
  }
};
}  // namespace

TEST(TransporterTest, ContainersAreFlushedWithAWritableFileAndDisconnectedAtTheEnd) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  cow_String const path = dir.File("ring.zdb");
  CountingContainer a, b;
  {
    rom_Transporter t(registrar, Create(path), "TEST", "ring", 7, -1);
    t.RegisterPC(&a);
    t.RegisterPC(&b);
    t.Flush();
    t.FlushDatabase();
    EXPECT_EQ(1, a.flushes);
    EXPECT_EQ(1, b.flushes);
  }
  EXPECT_EQ(1, a.disconnects);
  EXPECT_EQ(1, b.disconnects);
  EXPECT_FALSE(a.IsLinked());
  rom_Transporter reader(registrar, Read(path), "TEST", -1);
  reader.RegisterPC(&a);
  reader.Flush();
  EXPECT_EQ(1, a.flushes);  // a read-only file flushes nothing, not even the containers
  EXPECT_EQ(0, reader.Snap());
}
