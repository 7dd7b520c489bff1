// rom_UtlCopy on collections, made by hand at the row level: lists of each
// kind, blobs and maps, pruned members, and handles that name nothing.

#include "rfm_Array.h"
#include "rfm_Row.h"
#include "rfm_Space.h"
#include "rfm_TaggedStream.h"
#include "rom_HeaderLayout.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "rom_UtlCopy.h"
#include "rom_UtlCopyTestFiles.h"
#include "rom_UtlDatabaseRom.h"
#include "rom_UtlPrune.h"
#include "rom_UtlVisitor.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {
using namespace rom_TestModel;

constexpr char kMagic[] = "MDL";
// Holder's members refer to collections, blobs and nodes.
constexpr unsigned int kHolder = 0x01000301;
constexpr int kBlobSize = 3000;

rfm_FieldHandle Field(std::string const& name) { return rfm_FieldHandle(name.c_str(), -1); }
rfm_FieldHandle const kHandle = Field("Target#Handle");

void Refer(rfm_Row const& row, std::string const& member, unsigned int cid, int oid) {
  row.WriteFieldInt(Field(member + "#OID"), oid);
  row.WriteFieldInt(Field(member + "#ClassID"), static_cast<int>(cid));
}

// A collection's row refers to an object by its first two columns.
void ReferTo(rfm_Row const& row, unsigned int cid, int oid) {
  row.WriteFieldInt(Field("OID"), oid);
  row.WriteFieldInt(Field("ClassID"), static_cast<int>(cid));
}

template <class T, rfm_Type Type>
std::vector<T> Elements(rfm_Array<T, Type> const& array) {
  std::vector<T> values(static_cast<std::size_t>(array.Length() * array.FieldCount()));
  array.Seek(0);
  if (!values.empty()) array.Read(values.data(), array.Length());
  return values;
}

std::vector<std::string> Texts(std::vector<cow_String> const& strings) {
  std::vector<std::string> texts;
  for (cow_String const& text : strings) texts.push_back(text.CStr());
  return texts;
}

template <class T, rfm_Type Type>
rfm_Handle NewArray(rfm_Array<T, Type> const& array, int fields, std::vector<T> const& values) {
  array.Write(values.data(), static_cast<int>(values.size()) / fields);
  array.Flush();
  return array.Handle();
}

std::string BlobByte(int at) { return std::string(1, static_cast<char>(at * 7 % 251)); }

std::vector<int> const kInts = {1, -1, 2, -2, 3, 2147483647};
std::vector<double> const kDoubles = {0.5, 1e300, -3.25};
std::vector<cow_String> const kStrings = {"alpha", "", "gamma"};
std::vector<float> const kFloats = {1.5f, -2.25f, 3e10f};

// A source transporter holding a few nodes and one Holder, whose members
// refer to collections of every kind; and a target.
class UtlCopyCollections : public ::testing::TestWithParam<rom_CopyTarget> {
protected:
  UtlCopyCollections() {
    Register(m_Registrar);
    cls_ClassMetadata& holder = m_Registrar.CreateClassMD("Holder", kHolder, 1, nullptr, cls_kNoClass);
    int field = 0;
    for (char const* list : {"Ints", "Doubles", "Strings", "Floats", "Objects", "Absent", "NoList"})
      holder.AddAttribute(cls_FieldHandle(++field, list), cls_AttrObjectCow, kRomInternalListClass);
    for (char const* map : {"Map", "Scores"})
      holder.AddAttribute(cls_FieldHandle(++field, map), cls_AttrObjectCow, kRomInternalMapClass);
    for (char const* blob : {"Blob", "EmptyBlob"})
      holder.AddAttribute(cls_FieldHandle(++field, blob), cls_AttrObjectCow, kRomInternalBlobClass);
    for (char const* node : {"Owner", "Nothing"})
      holder.AddAttribute(cls_FieldHandle(++field, node), cls_AttrObjectCow, kNode);
    m_From.reset(new rom_Transporter(m_Registrar, rfm_File::Open(m_Source, utl_FileAccessCreate, false), kMagic,
                                     "source", 0, -1));
    m_To.reset(new rom_Transporter(m_Registrar, rom_CreateCopyTarget(GetParam(), m_Target), kMagic, "target", 0, -1));
    m_FromView.reset(new rom_UtlDatabaseRom(*m_From));
    m_ToView.reset(new rom_UtlDatabaseRom(*m_To));
    Write(*m_From, Make(8, 2, 3));
    WriteHolder();
  }

  ~UtlCopyCollections() override {
    m_ToView.reset();
    m_FromView.reset();
  }

  rfm_Database const& Source() const { return m_From->Database(); }

  // A new row of class cid in the source.
  rfm_Row NewRow(unsigned int cid) const { return m_From->GetClassBagForWrite(cid).Table().NewRow(); }
  // A new row of an internal class naming handle, and for a list with
  // columns > 0 its elements per row.
  int NewCollection(unsigned int cid, rfm_Handle handle, int columns = 0) const {
    rfm_Row const row = NewRow(cid);
    row.WriteFieldHandle(kHandle, handle);
    if (columns > 0) row.WriteFieldInt(Field("Target#Columns"), columns);
    return row.Location();
  }

  void WriteHolder() {
    rfm_Database const& db = Source();
    rfm_Row const holder = NewRow(kHolder);
    Refer(holder, "Ints", kRomInternalListClass,
          NewCollection(kRomInternalListClass, NewArray(db.ArrayInt(2, -1, 0), 2, kInts), 2));
    Refer(holder, "Doubles", kRomInternalListClass,
          NewCollection(kRomInternalListClass, NewArray(db.ArrayDouble(1, -1, 0), 1, kDoubles)));
    Refer(holder, "Strings", kRomInternalListClass,
          NewCollection(kRomInternalListClass, NewArray(db.ArrayString(1, -1, 0), 1, kStrings)));
    m_Floats = NewCollection(kRomInternalListClass, NewArray(db.ArrayFloat(1, -1, 0), 1, kFloats));
    Refer(holder, "Floats", kRomInternalListClass, m_Floats);
    // Nodes 0 and 5, an element without data, the stored null, node 0
    // again, and an object of a class without a table.
    rfm_Table const objects = db.Table("##List", -1, -1);
    for (int node : {0, -2, -1, 5, 0}) {
      rfm_Row const row = objects.NewRow();
      if (node != -2) ReferTo(row, node < 0 ? kRomNoClass : kNode, node);
    }
    ReferTo(objects.NewRow(), kMarker, -1);
    Refer(holder, "Objects", kRomInternalListClass, NewCollection(kRomInternalListClass, objects.Handle()));
    Refer(holder, "Absent", kRomInternalListClass, NewRow(kRomInternalListClass).Location());
    rfm_TaggedStream const stream = db.TaggedStream(0);
    stream.WriteInt(1, 1);
    m_NoList = NewCollection(kRomInternalListClass, stream.Handle());
    Refer(holder, "NoList", kRomInternalListClass, m_NoList);

    rfm_Table const map = db.Table("##Map", -1, -1);
    for (int node : {2, -1}) {
      rfm_Row const row = map.NewRow();
      ReferTo(row, node < 0 ? kRomNoClass : kNode, node);
      row.WriteFieldString(Field("Key"), node < 0 ? "none" : "two");
    }
    Refer(holder, "Map", kRomInternalMapClass, NewCollection(kRomInternalMapClass, map.Handle()));
    rfm_Table const scores = db.Table("##MapString2Double", -1, -1);
    for (double score : {2.5, -1.0}) {
      rfm_Row const row = scores.NewRow();
      row.WriteFieldDouble(Field("Data"), score);
      row.WriteFieldString(Field("Key"), score > 0 ? "x" : "y");
    }
    Refer(holder, "Scores", kRomInternalMapClass, NewCollection(kRomInternalMapClass, scores.Handle()));

    rfm_Space const blob = db.Space(-1);
    for (int at = 0; at < kBlobSize; ++at) blob.Write(BlobByte(at).data(), 1);
    blob.Flush();
    Refer(holder, "Blob", kRomInternalBlobClass, NewCollection(kRomInternalBlobClass, blob.Handle()));
    // A space that never grew has no extent, but is an object all the same.
    Refer(holder, "EmptyBlob", kRomInternalBlobClass, NewCollection(kRomInternalBlobClass, db.Space(-1).Handle()));
    Refer(holder, "Owner", kNode, 3);
    Refer(holder, "Nothing", kRomNoClass, -1);
  }

  // The target's object that a collection's row refers to.
  rfm_Row Element(rfm_Row const& row) const {
    return m_ToView->Object(static_cast<unsigned int>(row.ReadFieldInt(Field("ClassID"))),
                            row.ReadFieldInt(Field("OID")));
  }

  // The ids of the target's nodes: a node's id is its source row plus one.
  std::multiset<int> TargetNodeIds() const {
    std::multiset<int> ids;
    rfm_Table const nodes = m_ToView->Table(kNode);
    for (int row = 0; nodes.RowExists(row); ++row) ids.insert(nodes.ReadRow(row).ReadFieldInt(Field("Id")));
    return ids;
  }

  // The handle that the target's collection, referred to by holder's
  // member, names.
  rfm_Handle TargetHandle(rfm_Row const& holder, char const* member) const {
    rfm_Row const collection = m_ToView->Object(holder, member);
    EXPECT_FALSE(collection.IsNull()) << member;
    return collection.IsNull() ? rfm_Handle() : collection.ReadFieldHandle(kHandle);
  }

  zqa_TestDir m_Dir;
  cow_String const m_Source = m_Dir.File("source.mdl");
  cow_String const m_Target = m_Dir.File("target.mdl");
  cls_ClassRegistrar m_Registrar;
  std::unique_ptr<rom_Transporter> m_From;
  std::unique_ptr<rom_Transporter> m_To;
  std::unique_ptr<rom_UtlDatabaseRom> m_FromView;
  std::unique_ptr<rom_UtlDatabaseRom> m_ToView;
  int m_Floats = -1;
  int m_NoList = -1;
};

TEST_P(UtlCopyCollections, ListsAndBlobsArriveWithTheirContents) {
  rom_UtlCopy copy(*m_ToView);
  rfm_Row const holder = m_ToView->Object(kHolder, copy.CopyObject(kHolder, 0, *m_FromView, false));
  rfm_Database const& db = m_To->Database();
  EXPECT_EQ(Elements(db.ArrayInt(TargetHandle(holder, "Ints"), -1, 0)), kInts);
  EXPECT_EQ(m_ToView->Object(holder, "Ints").ReadFieldInt(Field("Target#Columns")), 2);
  EXPECT_EQ(Elements(db.ArrayDouble(TargetHandle(holder, "Doubles"), -1, 0)), kDoubles);
  EXPECT_EQ(Texts(Elements(db.ArrayString(TargetHandle(holder, "Strings"), -1, 0))), Texts(kStrings));
  EXPECT_EQ(Elements(db.ArrayFloat(TargetHandle(holder, "Floats"), -1, 0)), kFloats);
  // The float list's other way, raw or appended, gives the same elements.
  int const other = copy.CopyList(m_Floats, *m_FromView, true);
  rfm_Handle const otherHandle = m_ToView->Object(kRomInternalListClass, other).ReadFieldHandle(kHandle);
  EXPECT_NE(otherHandle, TargetHandle(holder, "Floats"));
  EXPECT_EQ(Elements(db.ArrayFloat(otherHandle, -1, 0)), kFloats);

  rfm_Table const objects = m_ToView->Table(TargetHandle(holder, "Objects"));
  ASSERT_EQ(objects.Length(), 6);
  std::vector<int> ids;
  for (int row : {0, 3, 4}) ids.push_back(Element(objects.ReadRow(row)).ReadFieldInt(Field("Id")));
  EXPECT_EQ(ids, (std::vector<int>{1, 6, 1}));
  EXPECT_FALSE(objects.ReadRow(1).DataIsPresent(Field("OID")));
  EXPECT_EQ(objects.ReadRow(2).ReadFieldInt(Field("OID")), -1);
  EXPECT_EQ(objects.ReadRow(2).ReadFieldInt(Field("ClassID")), static_cast<int>(kRomNoClass));
  EXPECT_EQ(objects.ReadRow(5).ReadFieldInt(Field("OID")), -1);
  EXPECT_EQ(objects.ReadRow(5).ReadFieldInt(Field("ClassID")), static_cast<int>(kMarker));
  // Nodes 0 and 5 of the list, 2 of the map, and the owner, 3.
  EXPECT_EQ(TargetNodeIds(), (std::multiset<int>{1, 6, 3, 4}));
  EXPECT_FALSE(m_ToView->Object(holder, "Absent").DataIsPresent(kHandle));

  rfm_Space const blob = db.Space(TargetHandle(holder, "Blob"), -1);
  ASSERT_EQ(blob.Length(), kBlobSize);
  std::string bytes(kBlobSize, '\0'), expected;
  EXPECT_EQ(blob.Read(&bytes[0], kBlobSize), kBlobSize);
  for (int at = 0; at < kBlobSize; ++at) expected += BlobByte(at);
  EXPECT_EQ(bytes, expected);
  EXPECT_EQ(db.Space(TargetHandle(holder, "EmptyBlob"), -1).Length(), 0);

  EXPECT_EQ(m_ToView->Object(holder, "Nothing").IsNull(), true);
  EXPECT_EQ(holder.ReadFieldInt(Field("Nothing#ClassID")), static_cast<int>(kRomNoClass));
  m_ToView.reset();
  m_To.reset();
  EXPECT_EQ(rom_CheckProblems(m_Target), std::vector<std::string>());
}

TEST_P(UtlCopyCollections, AListThatNamesNoListMakesNothing) {
  rfm_Table const lists = m_ToView->Table(kRomInternalListClass);
  rom_UtlCopy copy(*m_ToView);
  EXPECT_EQ(copy.CopyList(m_NoList, *m_FromView, false), -1);
  rfm_Space const space = Source().Space(-1);
  space.WriteInt(17);
  space.Flush();
  EXPECT_EQ(copy.CopyList(NewCollection(kRomInternalListClass, space.Handle()), *m_FromView, false), -1);
  EXPECT_EQ(lists.Length(), 0);
  // A member referring to it is a null reference.
  rfm_Row const holder = m_ToView->Object(kHolder, copy.CopyObject(kHolder, 0, *m_FromView, false));
  EXPECT_FALSE(m_ToView->ObjectIsPresent(holder, "NoList"));
}

// Collects the keys of the map rows that a copy tells it of.
class KeyVisitor : public rom_UtlVisitor {
public:
  void AcceptMapRowAfterCopy(rfm_Row& target) override { m_Keys.insert(target.ReadFieldString(Field("Key")).CStr()); }
  std::multiset<std::string> m_Keys;
};

TEST_P(UtlCopyCollections, MapsArriveRowByRowAndTellTheVisitorOfEachKey) {
  KeyVisitor visitor;
  rom_UtlCopy copy(*m_ToView);
  copy.SetVisitor(&visitor);
  rfm_Row const holder = m_ToView->Object(kHolder, copy.CopyObject(kHolder, 0, *m_FromView, false));
  EXPECT_EQ(visitor.m_Keys, (std::multiset<std::string>{"none", "two", "x", "y"}));
  rfm_Table const map = m_ToView->Table(TargetHandle(holder, "Map"));
  EXPECT_EQ(map.TableMetadata().TableName(), "##Map");
  ASSERT_EQ(map.Length(), 2);
  EXPECT_EQ(Element(map.ReadRow(0)).ReadFieldInt(Field("Id")), 3);
  EXPECT_EQ(map.ReadRow(1).ReadFieldInt(Field("OID")), -1);
  rfm_Table const scores = m_ToView->Table(TargetHandle(holder, "Scores"));
  ASSERT_EQ(scores.Length(), 2);
  EXPECT_EQ(scores.ReadRow(0).ReadFieldDouble(Field("Data")), 2.5);
  EXPECT_EQ(scores.ReadRow(1).ReadFieldString(Field("Key")), "y");
}

// Leaves out Holder's members of the given names.
class MemberPrune : public rom_UtlPrune {
public:
  explicit MemberPrune(std::set<std::string> members) : m_Members(std::move(members)) {}
  bool Exclude(unsigned int cid, cow_String const& member) override {
    return cid == kHolder && m_Members.count(member.CStr()) != 0;
  }
  std::set<std::string> m_Members;
};

TEST_P(UtlCopyCollections, APrunedMemberStaysEmptyUnlessItIsAListOrAMap) {
  MemberPrune prune({"Ints", "Map", "Blob", "Owner", "Nothing"});
  rom_UtlCopy copy(*m_ToView);
  copy.SetPrune(&prune);
  rfm_Row const holder = m_ToView->Object(kHolder, copy.CopyObject(kHolder, 0, *m_FromView, false));
  for (char const* member : {"Blob", "Owner", "Nothing"}) {
    EXPECT_FALSE(holder.DataIsPresent(Field(std::string(member) + "#OID"))) << member;
    EXPECT_FALSE(holder.DataIsPresent(Field(std::string(member) + "#ClassID"))) << member;
  }
  // Only the collections' nodes: the owner stayed behind.
  EXPECT_EQ(TargetNodeIds(), (std::multiset<int>{1, 6, 3}));
  EXPECT_EQ(Elements(m_To->Database().ArrayInt(TargetHandle(holder, "Ints"), -1, 0)), kInts);
  EXPECT_EQ(m_ToView->Table(TargetHandle(holder, "Map")).Length(), 2);
  EXPECT_TRUE(m_ToView->ObjectIsPresent(holder, "Doubles"));
}

TEST_P(UtlCopyCollections, HandlesThatNameNothingUsableRaiseNamingTheFile) {
  rfm_Handle const nowhere = rfm_Handle::Make(60, 5);
  rfm_Database const& db = Source();
  rfm_TableMetadata custom("Custom", 0);
  custom.DefineIntField("OID");
  rfm_TableMetadata handles("##HandleArray", 0);
  handles.DefineHandleField("Data");
  rfm_Table const handleTable = db.Table(handles, -1, -1);
  handleTable.NewRow().WriteFieldHandle(Field("Data"), db.ArrayInt(1, -1, 0).Handle());
  struct Case {
    unsigned int m_Class;
    rfm_Handle m_Handle;
    char const* m_Says;
  } const cases[] = {
      {kRomInternalListClass, nowhere, "no object"},
      {kRomInternalBlobClass, nowhere, "no object"},
      {kRomInternalMapClass, nowhere, "no object"},
      {kRomInternalMapClass, db.ArrayInt(1, -1, 0).Handle(), "not a table"},
      {kRomInternalListClass, db.Table(custom, -1, -1).Handle(), "Custom"},
      {kRomInternalListClass, handleTable.Handle(), "holds handles"},
  };
  for (Case const& c : cases) {
    int const oid = NewCollection(c.m_Class, c.m_Handle);
    rom_UtlCopy copy(*m_ToView);
    std::string const raised = rom_RaisedText([&] { copy.CopyObject(c.m_Class, oid, *m_FromView, false); });
    EXPECT_NE(raised.find(m_Source.CStr()), std::string::npos) << raised;
    EXPECT_NE(raised.find(c.m_Says), std::string::npos) << raised;
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, UtlCopyCollections,
                         ::testing::Values(rom_CopyTarget::kPlain, rom_CopyTarget::kCompressed),
                         [](auto const& info) { return rom_CopyTargetName(info.param); });
}  // namespace
