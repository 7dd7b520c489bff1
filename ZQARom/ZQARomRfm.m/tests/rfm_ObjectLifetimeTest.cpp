#include "rfm_Array.h"
#include "rfm_BufferedSpace.h"
#include "rfm_Space.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestAssertion.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using IntArray = rfm_Array<int, rfm_TypeInt>;
using StringArray = rfm_Array<cow_String, rfm_TypeString>;

// Numbers(value int, label string).
rfm_TableMetadata Numbers() {
  rfm_TableMetadata table("Numbers", 1);
  table.DefineIntField("value");
  table.DefineStringField("label");
  return table;
}

rfm_FieldHandle const kValue("value", -1);
rfm_FieldHandle const kLabel("label", -1);

// The order in which a writer lets go of its handles.
enum class Order { ObjectsFirst, DatabaseFirst };

std::string OrderName(testing::TestParamInfo<std::tuple<rfm_TestFileKind, Order> > const& info) {
  return testing::PrintToString(std::get<0>(info.param)) +
         (std::get<1>(info.param) == Order::ObjectsFirst ? "ObjectsFirst" : "DatabaseFirst");
}

struct Handles {
  rfm_Handle table;
  rfm_Handle ints;
  rfm_Handle strings;
  rfm_Handle stream;
  rfm_Handle space;
  rfm_Handle buffered;
};

// Makes one object of every kind and leaves each with data that no flush
// has written yet, some of it given after the database handle went (in the
// order that drops it first); the row is written last, after its table
// handle too has gone.
Handles WriteEveryKindOfObject(cow_String const& name, rfm_TestFileKind kind, Order order) {
  Handles handles;
  rfm_Database database = CreateTestDatabase(name, "APP", false, kind);
  rfm_Table table = database.Table(Numbers(), -1, -1);
  rfm_Row row = table.NewRow();
  row.WriteFieldInt(kValue, 1);
  IntArray ints = database.ArrayInt(2, -1, 0);
  int const first[2] = {1, 2};
  ints.Write(first, 1);
  StringArray strings = database.ArrayString(1, -1, 0);
  cow_String const pooled("pooled");
  strings.Write(&pooled, 1);
  rfm_TaggedStream stream = database.TaggedStream(0);
  stream.WriteString(1, "streamed");
  rfm_Space space = database.Space(-1);
  space.Write("abc", 3);
  rfm_BufferedSpace buffered(database.Space(-1));
  buffered.Write("def", 3);
  handles = {table.Handle(), ints.Handle(), strings.Handle(), stream.Handle(), space.Handle(), buffered.Handle()};

  if (order == Order::DatabaseFirst) database = rfm_Database();
  table.NewRow().WriteFieldInt(kValue, 2);
  int const second[2] = {3, 4};
  ints.Write(second, 1);
  cow_String const late("late");
  strings.Write(&late, 1);
  stream.WriteInt(2, 7);
  space.Write("ghi", 3);
  buffered.Write("jkl", 3);
  if (order == Order::DatabaseFirst) table = rfm_Table();
  // A string written now goes to the pool, which is written after the row.
  row.WriteFieldString(kLabel, "held row");
  return handles;
}

std::string ReadAll(rfm_Space const& space) {
  std::string bytes(static_cast<std::size_t>(space.Length()), '\0');
  space.Seek(0);
  if (!bytes.empty()) space.Read(bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

}  // namespace

class ObjectLifetimeTest : public testing::TestWithParam<std::tuple<rfm_TestFileKind, Order> > {};
INSTANTIATE_TEST_SUITE_P(, ObjectLifetimeTest,
                         testing::Combine(testing::Values(rfm_TestFileKind::Plain, rfm_TestFileKind::Compressed),
                                          testing::Values(Order::ObjectsFirst, Order::DatabaseFirst)),
                         OrderName);

// The database closes, writing everything, only when the last handle of any
// kind has gone: whichever order the handles go in, the reopened file holds
// every row, element, item and byte.
TEST_P(ObjectLifetimeTest, NothingWrittenIsLostWhateverOrderTheHandlesGoIn) {
  zqa_TestDir dir;
  cow_String name = dir.File("lifetime.zdb");
  Handles handles = WriteEveryKindOfObject(name, std::get<0>(GetParam()), std::get<1>(GetParam()));

  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(handles.table, -1, -1);
  ASSERT_EQ(2, table.Length());
  EXPECT_EQ(1, table.ReadRow(0).ReadFieldInt(kValue));
  EXPECT_EQ(cow_String("held row"), table.ReadRow(0).ReadFieldString(kLabel));
  EXPECT_EQ(2, table.ReadRow(1).ReadFieldInt(kValue));

  IntArray ints = database.ArrayInt(handles.ints, -1, 0);
  ASSERT_EQ(2, ints.Length());
  std::vector<int> values(4);
  ints.Read(values.data(), 2);
  EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), values);

  StringArray strings = database.ArrayString(handles.strings, -1, 0);
  ASSERT_EQ(2, strings.Length());
  cow_String texts[2];
  strings.Read(texts, 2);
  EXPECT_EQ(cow_String("pooled"), texts[0]);
  EXPECT_EQ(cow_String("late"), texts[1]);

  rfm_TaggedStream stream = database.TaggedStream(handles.stream, 0);
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(cow_String("streamed"), stream.GetString());
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(7, stream.GetInt());
  EXPECT_FALSE(stream.Next());

  EXPECT_EQ("abcghi", ReadAll(database.Space(handles.space, -1)));
  EXPECT_EQ("defjkl", ReadAll(database.Space(handles.buffered, -1)));
}

// A reader's objects, too, may outlive the database handle they came from.
TEST_P(ObjectLifetimeTest, AReadersObjectsReadOnAfterItsDatabaseHandleHasGone) {
  zqa_TestDir dir;
  cow_String name = dir.File("reader.zdb");
  Handles handles = WriteEveryKindOfObject(name, std::get<0>(GetParam()), std::get<1>(GetParam()));

  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(handles.table, -1, -1);
  rfm_Row row = table.ReadRow(0);
  StringArray strings = database.ArrayString(handles.strings, -1, 0);
  rfm_TaggedStream stream = database.TaggedStream(handles.stream, 0);
  rfm_BufferedSpace buffered(database.Space(handles.buffered, -1));
  if (std::get<1>(GetParam()) == Order::DatabaseFirst) database = rfm_Database();
  table = rfm_Table();

  EXPECT_EQ(cow_String("held row"), row.ReadFieldString(kLabel));
  cow_String texts[2];
  strings.Read(texts, 2);
  EXPECT_EQ(cow_String("late"), texts[1]);
  ASSERT_TRUE(stream.Next());
  EXPECT_EQ(cow_String("streamed"), stream.GetString());
  char bytes[6] = {};
  EXPECT_EQ(6, buffered.Read(bytes, 6));
  EXPECT_EQ("defjkl", std::string(bytes, 6));
}

// A held row that Truncate cuts off is detached: it no longer holds its
// table, which closes, and its database with it, when their handles go.
TEST(ObjectLifetimePlainFileTest, ARowCutOffByTruncateNoLongerHoldsItsTable) {
  zqa_TestDir dir;
  cow_String name = dir.File("truncated.zdb");
  rfm_Handle handle;
  rfm_Row cut;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_Table table = database.Table(Numbers(), -1, -1);
    for (int value = 0; value < 3; ++value) table.NewRow().WriteFieldInt(kValue, value);
    cut = table.ReadRow(2);
    table.Truncate(1);
    handle = table.Handle();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  rfm_Table table = database.Table(handle, -1, -1);
  ASSERT_EQ(1, table.Length());
  EXPECT_EQ(0, table.ReadRow(0).ReadFieldInt(kValue));
  EXPECT_EQ("m_Table != nullptr", AssertionOf([&] { cut.WriteFieldInt(kValue, 9); }));
}
