#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_DBMetadata.h"
#include "rfm_Database.h"
#include "rfm_OffsetConverter.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <string>

namespace {

rfm_TableMetadata Nodes(int version) {
  rfm_TableMetadata table("Nodes", version);
  table.DefineIntField("id");
  table.DefineDoubleField("x");
  table.DefineStringField("label");
  return table;
}

std::string MetadataBytes(rfm_Database const& database) {
  rfm_Space space = database.Space(rfm_Handle(3), -1);
  std::string bytes(static_cast<std::size_t>(space.Length()), '\0');
  space.Read(bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

utl_FileOffset StoredOffset(std::string const& bytes, std::size_t at) {
  return rfm_OffsetConverter::Internalize(omi_Swapper(kRfmFileEndType), bytes.data() + at);
}

}  // namespace

using MetadataTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(MetadataTest);

TEST_P(MetadataTest, RecordsHoldTheFieldsInNameOrderAndSurviveReopening) {
  zqa_TestDir dir;
  cow_String name = dir.File("layout.zdb");
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_TableMetadata* bound = database.Bind(Nodes(3));
    EXPECT_EQ(3, bound->GetVersionNumber());
    EXPECT_EQ(bound, database.Bind(Nodes(3)));
    database.Bind(rfm_TableMetadata("Empty", 1));
    EXPECT_EQ(cow_String("Metadata Pool Size (bytes)=                  64"), database.GetDBStatistics()[2]);
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  std::string bytes = MetadataBytes(database);
  ASSERT_EQ(64u, bytes.size());
  EXPECT_EQ(static_cast<int>(0xFAAAEBBB), StoredInt(bytes, 0));
  EXPECT_EQ(48, StoredInt(bytes, 4));
  // Fields in name order: id (int), label (string), x (double).
  EXPECT_EQ(rfm_TypeInt, StoredInt(bytes, 16));
  EXPECT_EQ(rfm_TypeString, StoredInt(bytes, 28));
  EXPECT_EQ(rfm_TypeDouble, StoredInt(bytes, 40));
  EXPECT_LT(StoredOffset(bytes, 20), StoredOffset(bytes, 44));
  EXPECT_EQ(12, StoredInt(bytes, 52));

  EXPECT_TRUE(database.HasTable("Nodes"));
  EXPECT_FALSE(database.HasTable("Edges"));
  cow_List<cow_String> names = database.GetTableMetadataNames();
  ASSERT_EQ(2, names.Length());
  EXPECT_EQ(cow_String("Empty"), names[0]);
  EXPECT_EQ(4, database.GetTableMetadataHandle("Nodes"));
  EXPECT_EQ(52, database.GetTableMetadataHandle("Empty"));
  EXPECT_EQ(nullptr, database.GetTableMetadata(cow_String("Nodes")));
  database.Bind();
  rfm_TableMetadata const* nodes = database.GetTableMetadata(cow_String("Nodes"));
  ASSERT_NE(nullptr, nodes);
  EXPECT_EQ(3, nodes->FieldCount());
  EXPECT_EQ(rfm_TypeString, nodes->GetFieldMD(rfm_FieldHandle("label", -1)).Type());
  EXPECT_EQ(nodes, database.GetTableMetadata(utl_FileOffset(4)));
  EXPECT_EQ("***ERROR: Can't find metadata with handle.", MessageOf([&] { database.GetTableMetadata(utl_FileOffset(8)); }));
  EXPECT_EQ("***ERROR: Can't find table metadata, \"Edges\" in ZORBEX database file.",
            MessageOf([&] { database.GetTableMetadataHandle("Edges"); }));
}

TEST_P(MetadataTest, BindingReconcilesOlderAndNewerLayouts) {
  zqa_TestDir dir;
  cow_String name = dir.File("versions.zdb");
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_TableMetadata old("Nodes", 1);
    old.DefineIntField("id");
    old.DefineDoubleField("x");
    old.DefineFloatField("weight");
    database.Bind(old);
  }
  // A newer program: it lacks "weight", has a new field "y", and numbers
  // its fields its own way.
  rfm_TableMetadata newer("Nodes", 2);
  newer.DefineDoubleField("y");
  newer.DefineDoubleField("x");
  newer.DefineIntField("id");
  {
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate);
    database.InsertInMapClassName2ClassVersion("Nodes", 1);
    rfm_TableMetadata* bound = database.Bind(newer);
    EXPECT_EQ(1, bound->GetVersionNumber());
    EXPECT_EQ(4, bound->FieldCount());
    EXPECT_EQ(2, bound->GetFieldMD(rfm_FieldHandle("id", -1)).Index());
    EXPECT_EQ(1, bound->GetFieldMD(rfm_FieldHandle("x", -1)).Index());
    rfm_FieldMetadata const& weight = bound->GetFieldMD(rfm_FieldHandle("weight", -1));
    EXPECT_EQ(3, weight.Index());
    EXPECT_EQ(1, weight.Present());
    EXPECT_EQ(0, bound->GetFieldMD(rfm_FieldHandle(0)).Present());
    EXPECT_NO_THROW(bound->Verify(rfm_FieldHandle(3), rfm_TypeFloat));
    EXPECT_EQ("***ERROR: Can't find field: \"y\"", MessageOf([&] { bound->Verify(rfm_FieldHandle("y", -1), rfm_TypeDouble); }));
    EXPECT_EQ("***ERROR: Can't find field by index: 0", MessageOf([&] { bound->Verify(rfm_FieldHandle(0), rfm_TypeDouble); }));
    EXPECT_EQ("***ERROR: Can't find field by index: 4", MessageOf([&] { bound->Verify(rfm_FieldHandle(4), rfm_TypeInt); }));
    EXPECT_EQ("***ERROR: Field type mismatch by index: 2", MessageOf([&] { bound->Verify(rfm_FieldHandle(2), rfm_TypeFloat); }));
    EXPECT_EQ("***ERROR: Field type mismatch: \"x\"", MessageOf([&] { bound->Verify(rfm_FieldHandle("x", -1), rfm_TypeInt); }));
    EXPECT_EQ(1, database.GetMapClassName2ClassVersion().Size());
  }
  rfm_TableMetadata clash("Nodes", 2);
  clash.DefineIntField("x");
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_EQ("***ERROR: Field type mismatch: x", MessageOf([&] { database.Bind(clash); }));
}

// Descriptions alone, in no file: nothing to run per kind of file.
TEST(TableMetadataTest, DescriptionsRefuseDuplicatesAndGradeHowRowsMayBeCopied) {
  rfm_TableMetadata a = Nodes(1);
  EXPECT_EQ("***ERROR: Duplicate field metadata definition: \"x\"", MessageOf([&] { a.DefineFloatField("x"); }));
  EXPECT_EQ(3, a.FieldCount());
  EXPECT_EQ(rfm_TypeNone, a.GetFieldMD(rfm_FieldHandle("missing", -1)).Type());
  EXPECT_EQ(cow_String("label"), a.GetFieldMD(rfm_FieldHandle(cow_String("la"), "bel", -1)).Name());

  rfm_TableMetadata numbers("T", 1);
  numbers.DefineIntField("i");
  numbers.DefineDoubleField("d");
  rfm_TableMetadata sameNumbers("U", 1);
  sameNumbers.DefineDoubleField("d");
  sameNumbers.DefineIntField("i");
  EXPECT_EQ(1, numbers.CopyAllowed(sameNumbers));
  EXPECT_EQ(2, a.CopyAllowed(Nodes(2)));
  EXPECT_EQ(3, a.CopyAllowed(numbers));
  rfm_TableMetadata otherType("V", 1);
  otherType.DefineIntField("i");
  otherType.DefineFloatField("d");
  EXPECT_EQ(0, numbers.CopyAllowed(otherType));
  rfm_TableMetadata otherName("W", 1);
  otherName.DefineIntField("i");
  otherName.DefineDoubleField("e");
  EXPECT_EQ(0, numbers.CopyAllowed(otherName));
}

// Plain files only: a reader opened beside the writer follows its flushes
// through Snap, and a compressed file's reader sees the file as of its open.
TEST(MetadataPlainFileTest, AReaderLearnsTablesAWriterAddsAfterItsSnap) {
  zqa_TestDir dir;
  cow_String name = dir.File("snap.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  writer.Bind(Nodes(1));
  writer.Flush();
  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_FALSE(reader.HasTable("Edges"));
  rfm_TableMetadata edges("Edges", 1);
  edges.DefineHandleField("from");
  writer.Bind(edges);
  EXPECT_FALSE(reader.Snap());
  writer.Flush();
  EXPECT_TRUE(reader.Snap());
  EXPECT_TRUE(reader.HasTable("Edges"));
  EXPECT_EQ(rfm_TypeHandle, reader.Bind(edges)->GetFieldMD(rfm_FieldHandle(0)).Type());
}
