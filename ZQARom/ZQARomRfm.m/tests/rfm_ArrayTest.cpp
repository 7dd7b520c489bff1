#include "rfm_Array.h"
#include "rfm_ArrayRepr.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_TestAssertion.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using IntArray = rfm_Array<int, rfm_TypeInt>;
using FloatArray = rfm_Array<float, rfm_TypeFloat>;
using DoubleArray = rfm_Array<double, rfm_TypeDouble>;
using StringArray = rfm_Array<cow_String, rfm_TypeString>;

constexpr int kMagic = static_cast<int>(0xFFFAEEEB);

// Magic, change count, element type and fields per row.
std::vector<int> Header(std::string const& bytes) {
  return {StoredInt(bytes, 0), StoredInt(bytes, 4), StoredInt(bytes, 8), StoredInt(bytes, 12)};
}

// A string's record in a pool: its length word, then its characters.
std::string PoolRecord(std::string const& text) {
  std::string record(4, '\0');
  PutStoredInt(record, 0, static_cast<int>(text.size()));
  return record + text;
}

rfm_Handle PlainSpace(rfm_Database const& database, std::vector<int> const& words) {
  rfm_Space space = database.Space(-1);
  for (int word : words) space.WriteInt(word);
  return space.Handle();
}

}  // namespace

using ArrayTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(ArrayTest);

TEST_P(ArrayTest, RowsOfEveryTypeSurviveReopeningWithTheirHeaderAndLittleEndianBytes) {
  zqa_TestDir dir;
  cow_String name = dir.File("arrays.zdb");
  int const ints[6] = {1, -2, 0x01020304, 4, 5, 6};
  float const floats[3] = {1.5f, -0.25f, 3e38f};
  double const doubles[6] = {0.5, -1e300, 3, 4, 5, 6.25};
  cow_String const strings[4] = {"alpha", "", "alpha", "gamma"};
  rfm_Handle intHandle, floatHandle, doubleHandle, stringHandle;
  {
    rfm_Database database = CreateTestDatabase(name);
    IntArray intArray = database.ArrayInt(2, -1, 0);
    EXPECT_EQ(3, intArray.Write(ints, 3));
    EXPECT_EQ(1, intArray.Flush());
    EXPECT_EQ(2, intArray.Flush());  // every flush counts, changed or not
    FloatArray floatArray = database.ArrayFloat(1, -1, 0);
    floatArray.Write(floats, 3);
    DoubleArray doubleArray = database.ArrayDouble(3, -1, 0);
    doubleArray.Write(doubles, 2);
    doubleArray.Flush();
    StringArray stringArray = database.ArrayString(2, -1, 0);
    stringArray.Write(strings, 2);
    stringArray.Flush();
    EXPECT_EQ(8, intArray.RowSize());
    EXPECT_EQ(4, floatArray.RowSize());
    EXPECT_EQ(24, doubleArray.RowSize());
    EXPECT_EQ(16, stringArray.RowSize());
    EXPECT_EQ(cow_String("Linkage_Count=1"), doubleArray.GetObjStatistics().First());
    intHandle = intArray.Handle();
    floatHandle = floatArray.Handle();
    doubleHandle = doubleArray.Handle();
    stringHandle = stringArray.Handle();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);

  std::string bytes = SpaceBytes(database, intHandle.Value());
  ASSERT_EQ(16u + 24, bytes.size());
  EXPECT_EQ((std::vector<int>{kMagic, 2, rfm_TypeInt, 2}), Header(bytes));
  EXPECT_EQ(std::string("\x04\x03\x02\x01", 4), bytes.substr(24, 4));
  bytes = SpaceBytes(database, floatHandle.Value());
  ASSERT_EQ(16u + 12, bytes.size());
  EXPECT_EQ((std::vector<int>{kMagic, 0, rfm_TypeFloat, 1}), Header(bytes));
  std::uint32_t bits;
  std::memcpy(&bits, &floats[1], 4);
  EXPECT_EQ(static_cast<int>(bits), StoredInt(bytes, 20));
  bytes = SpaceBytes(database, doubleHandle.Value());
  ASSERT_EQ(16u + 48, bytes.size());
  EXPECT_EQ((std::vector<int>{kMagic, 1, rfm_TypeDouble, 3}), Header(bytes));
  EXPECT_EQ(-1e300, StoredDouble(bytes, 24));
  bytes = SpaceBytes(database, stringHandle.Value());
  ASSERT_EQ(16u + 32, bytes.size());
  EXPECT_EQ((std::vector<int>{kMagic, 1, rfm_TypeString, 2}), Header(bytes));
  EXPECT_EQ(bytes.substr(16, 8), bytes.substr(32, 8));  // one pool record for both "alpha"

  EXPECT_EQ(rfm_TypeDouble, database.HandleType(doubleHandle));
  IntArray intArray = database.ArrayInt(intHandle, -1, 0);
  EXPECT_EQ(2, intArray.FieldCount());
  EXPECT_EQ(3, intArray.Length());
  int intsBack[6];
  EXPECT_EQ(6, intArray.Read(intsBack, 3));
  EXPECT_EQ(std::vector<int>(ints, ints + 6), std::vector<int>(intsBack, intsBack + 6));
  float floatsBack[3];
  EXPECT_EQ(3, database.ArrayFloat(floatHandle, -1, 0).Read(floatsBack, 3));
  EXPECT_EQ(std::vector<float>(floats, floats + 3), std::vector<float>(floatsBack, floatsBack + 3));
  double doublesBack[6];
  EXPECT_EQ(6, database.ArrayDouble(doubleHandle, -1, 0).Read(doublesBack, 2));
  EXPECT_EQ(std::vector<double>(doubles, doubles + 6), std::vector<double>(doublesBack, doublesBack + 6));
  StringArray stringArray = database.ArrayString(stringHandle, -1, 0);
  EXPECT_EQ(rfm_TypeString, stringArray.Type());
  cow_String stringsBack[4];
  EXPECT_EQ(4, stringArray.Read(stringsBack, 2));
  EXPECT_EQ(std::vector<cow_String>(strings, strings + 4), std::vector<cow_String>(stringsBack, stringsBack + 4));
}

TEST_P(ArrayTest, PositionsCountRowsAndReadAnswersElements) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("rows.zdb"));
  DoubleArray array = database.ArrayDouble(2, -1, 64);
  EXPECT_EQ(0, array.Location());  // at byte 16
  EXPECT_EQ(0, array.Length());
  std::vector<double> rows(10);
  for (int i = 0; i < 10; ++i) rows[i] = i;
  EXPECT_EQ(5, array.Write(rows.data(), 5));
  EXPECT_EQ(5, array.Location());
  EXPECT_EQ(5, array.Length());

  array.Seek(2);
  EXPECT_EQ(2, array.Location());
  double back[6];
  EXPECT_EQ(2, array.Read(back, 1));
  EXPECT_EQ(4.0, back[0]);
  EXPECT_EQ(3, array.Location());
  EXPECT_EQ(4, array.Read(back, 3));  // two rows were left
  EXPECT_EQ(9.0, back[3]);
  array.Seek(0);
  EXPECT_EQ(0, array.Location());

  // A torn last row counts once half of it is there.
  array.Flush();
  rfm_Space space = database.Space(array.Handle(), -1);
  space.Seek(space.Length());
  space.Write("1234567", 7);
  database.Flush();
  EXPECT_EQ(5, array.Length());
  array.Seek(5);
  EXPECT_EQ(0, array.Read(back, 1));  // a torn element stays unread
  space.Write("8", 1);
  database.Flush();
  EXPECT_EQ(6, array.Length());
  EXPECT_EQ(1, array.Read(back, 1));
  EXPECT_EQ(0, std::memcmp(back, "12345678", 8));

  EXPECT_EQ("data != NULL", AssertionOf([&] { array.Read(nullptr, 1); }));
  EXPECT_EQ("data != NULL", AssertionOf([&] { array.Write(nullptr, 1); }));
  EXPECT_EQ("rowCount > 0", AssertionOf([&] { array.Read(back, 0); }));
  EXPECT_EQ("rowCount > 0", AssertionOf([&] { array.Write(back, -1); }));
  EXPECT_EQ("fieldsPerRow > 0", AssertionOf([&] { database.ArrayInt(0, -1, 0); }));
}

TEST_P(ArrayTest, TruncateKeepsTheFirstRowsAndReadOnlyArraysRefuseChanges) {
  zqa_TestDir dir;
  cow_String name = dir.File("truncate.zdb");
  rfm_Handle handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    IntArray array = database.ArrayInt(1, -1, 0);
    for (int i = 0; i < 10; ++i) {
      int value = i * 10 + 7;
      array.Write(&value, 1);
    }
    array.Truncate(4);
    EXPECT_EQ(4, array.Length());
    EXPECT_EQ(0, array.Location());
    int value = 0;
    array.Read(&value, 1);
    EXPECT_EQ(7, value);
    array.Seek(4);
    value = 99;
    array.Write(&value, 1);
    EXPECT_EQ(5, array.Length());
    array.Flush();
    handle = array.Handle();
  }
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  std::string bytes = SpaceBytes(database, handle.Value());
  ASSERT_EQ(16u + 20, bytes.size());
  EXPECT_EQ(37, StoredInt(bytes, 28));
  EXPECT_EQ(99, StoredInt(bytes, 32));

  IntArray reader = database.ArrayInt(handle, -1, 0);
  EXPECT_EQ("***ERROR: Attempt to truncate read only array.", MessageOf([&] { reader.Truncate(0); }));
  EXPECT_EQ("rfm_ArrayRepr::Append - Attempt to append to read only array.",
            MessageOf([&] { reader.Append(reader); }));
  EXPECT_EQ(0, reader.Flush());
  EXPECT_EQ("The output database was opened as read-only. Modification of data is not permitted.",
            MessageOf([&] { database.ArrayInt(1, -1, 0); }));
}

TEST_P(ArrayTest, AppendAddsAllRowsAndStoresStringsInTheTargetsPool) {
  zqa_TestDir dir;
  rfm_Database source = CreateTestDatabase(dir.File("source.zdb"));
  rfm_Database target = CreateTestDatabase(dir.File("target.zdb"));

  IntArray ints = source.ArrayInt(2, -1, 0);
  IntArray more = source.ArrayInt(2, -1, 0);
  IntArray narrow = source.ArrayInt(1, -1, 0);
  int const values[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  ints.Write(values, 2);
  more.Write(values + 4, 3);
  EXPECT_TRUE(ints.CopyAllowed(more));
  EXPECT_FALSE(ints.CopyAllowed(narrow));
  ints.Append(more);
  EXPECT_EQ(5, ints.Length());
  int intsBack[10];
  ints.Seek(0);
  EXPECT_EQ(10, ints.Read(intsBack, 5));
  EXPECT_EQ(std::vector<int>(values, values + 10), std::vector<int>(intsBack, intsBack + 10));
  EXPECT_EQ("!sameObject", AssertionOf([&] { ints.Append(ints); }));

  // Numbers append raw between databases too, across many buffers.
  std::vector<double> doubles(3000);
  for (int i = 0; i < 3000; ++i) doubles[i] = i * 0.25;
  DoubleArray doubleSource = source.ArrayDouble(3, -1, 0);
  doubleSource.Write(doubles.data(), 1000);
  DoubleArray doubleTarget = target.ArrayDouble(3, -1, 100);
  doubleTarget.Write(doubles.data(), 1);
  doubleTarget.Append(doubleSource);
  EXPECT_EQ(1001, doubleTarget.Length());
  std::vector<double> doublesBack(3000);
  doubleTarget.Seek(1);
  EXPECT_EQ(3000, doubleTarget.Read(doublesBack.data(), 1000));
  EXPECT_EQ(doubles, doublesBack);

  // 40 strings take three batches; each lands in the target's own pool.
  std::vector<cow_String> words;
  for (int i = 0; i < 40; ++i) words.push_back(cow_String(("word-" + std::to_string(i)).c_str()));
  StringArray wordSource = source.ArrayString(1, -1, 0);
  wordSource.Write(words.data(), 40);
  StringArray wordTarget = target.ArrayString(1, -1, 0);
  wordTarget.Append(wordSource);
  wordTarget.Flush();
  target.Flush();
  std::string pool = SpaceBytes(target, 1);
  for (int i = 0; i < 40; ++i) {
    EXPECT_NE(std::string::npos, pool.find(PoolRecord("word-" + std::to_string(i)))) << i;
  }
  std::vector<cow_String> wordsBack(40);
  wordTarget.Seek(0);
  EXPECT_EQ(40, wordTarget.Read(wordsBack.data(), 40));
  EXPECT_EQ(words, wordsBack);
}

TEST_P(ArrayTest, CreateCopyCopiesLargeArraysRawAndRefusesStringArraysBeforeWriting) {
  zqa_TestDir dir;
  rfm_Database from = CreateTestDatabase(dir.File("from.zdb"));
  rfm_Database to = CreateTestDatabase(dir.File("to.zdb"));
  // 1.2 MB of rows: the copy moves a full chunk and then the rest.
  std::vector<double> values(150000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i) * 0.5 - 7;
  DoubleArray array = from.ArrayDouble(3, 4096, 0);
  array.Write(values.data(), 50000);
  array.Flush();
  rfm_Handle copied = DoubleArray::CreateCopy(from, to, array.Handle());
  EXPECT_EQ(SpaceBytes(from, array.Handle().Value()), SpaceBytes(to, copied.Value()));
  DoubleArray copy = to.ArrayDouble(copied, -1, 0);
  std::vector<double> back(values.size());
  EXPECT_EQ(150000, copy.Read(back.data(), 50000));
  EXPECT_EQ(values, back);

  StringArray strings = from.ArrayString(1, -1, 0);
  cow_String const text("pooled");
  strings.Write(&text, 1);
  strings.Flush();
  int before = to.Space(-1).Handle().Value();
  EXPECT_EQ("data != rfm_TypeString", AssertionOf([&] { StringArray::CreateCopy(from, to, strings.Handle()); }));
  EXPECT_EQ(before + 1, to.Space(-1).Handle().Value());  // the target gave no slot

  EXPECT_EQ("rfm_ArrayRepr::CreateCopy: Handle is not to an Array object in ZDB/ZAE file.  File may be unusable.",
            MessageOf([&] { IntArray::CreateCopy(from, to, PlainSpace(from, {1, 2, 3, 4})); }));
  EXPECT_EQ("rfm_ArrayRepr::CreateCopy: Array read failed. (1)  File may be unusable.",
            MessageOf([&] { IntArray::CreateCopy(from, to, PlainSpace(from, {kMagic, 0, 1})); }));
}

TEST_P(ArrayTest, OpeningWhatIsNotAnArrayOfTheTypeRaisesItsText) {
  zqa_TestDir dir;
  rfm_Database database = CreateTestDatabase(dir.File("open.zdb"));
  char const corrupt[] = "rfm_ArrayRepr::rfm_ArrayRepr: Array object in ZDB/ZAE file is corrupt.  File may be unusable.";
  EXPECT_EQ("rfm_ArrayRepr::rfm_ArrayRepr: Handle is not to an Array object in ZDB/ZAE file.  File may be unusable.",
            MessageOf([&] { database.ArrayInt(PlainSpace(database, {1, 0, 1, 1}), -1, 0); }));
  EXPECT_EQ(corrupt, MessageOf([&] { database.ArrayInt(PlainSpace(database, {kMagic, 0, 1}), -1, 0); }));
  EXPECT_EQ(corrupt, MessageOf([&] { database.ArrayInt(PlainSpace(database, {kMagic, 0, 2, 1}), -1, 0); }));
  EXPECT_EQ(corrupt, MessageOf([&] { database.ArrayInt(PlainSpace(database, {kMagic, 0, 1, 0}), -1, 0); }));
  EXPECT_EQ(corrupt, MessageOf([&] { database.ArrayInt(PlainSpace(database, {kMagic, 0, 4, 0x7fffffff}), -1, 0); }));
  // An element type that no array has answers none, not an rfm_Type that
  // does not exist.
  EXPECT_EQ(rfm_TypeNone, database.HandleType(PlainSpace(database, {kMagic, 0, 99, 1})));

  DoubleArray doubles = database.ArrayDouble(1, -1, 0);
  doubles.Flush();
  EXPECT_EQ("repr->Type() == type", AssertionOf([&] { database.ArrayInt(doubles.Handle(), -1, 0); }));
  EXPECT_EQ("rfm_ArrayRepr::RowSize - illegal array type.",
            MessageOf([&] { rfm_ArrayRepr(database, rfm_TypeHandle, 1, -1, 0); }));
}

// Plain files only: a reader opened beside the writer follows its flushes
// through Snap, and a compressed file's reader sees the file as of its open.
TEST(ArrayPlainFileTest, AReaderSnapsToAWritersFlushedRowsOnce) {
  zqa_TestDir dir;
  cow_String name = dir.File("snap.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  IntArray written = writer.ArrayInt(2, -1, 0);
  int const rows[10] = {10, 11, 12, 13, 14, 15, 16, 17, 18, 19};
  written.Write(rows, 3);
  written.Flush();
  writer.Flush();
  EXPECT_EQ(0, written.Snap());  // writers have nothing to snap

  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
  IntArray seen = reader.ArrayInt(written.Handle(), -1, 0);
  EXPECT_EQ(3, seen.Length());
  written.Write(rows + 6, 2);
  EXPECT_EQ(2, written.Flush());
  writer.Flush();
  EXPECT_EQ(0, seen.Snap());  // the reader's database has not snapped yet
  ASSERT_TRUE(reader.Snap());
  EXPECT_EQ(2, seen.Snap());
  EXPECT_EQ(0, seen.Snap());
  EXPECT_EQ(5, seen.Length());
  seen.Seek(3);
  int back[4];
  EXPECT_EQ(4, seen.Read(back, 2));
  EXPECT_EQ(19, back[3]);

  // The database moved but the array did not: Snap answers 0 and leaves the
  // buffer after the change count, where the next read finds type and width.
  writer.Flush();
  ASSERT_TRUE(reader.Snap());
  EXPECT_EQ(0, seen.Snap());
  EXPECT_EQ(0, seen.Location());
  EXPECT_EQ(2, seen.Read(back, 1));
  EXPECT_EQ(rfm_TypeInt, back[0]);
  EXPECT_EQ(2, back[1]);
}
