#include "rfm_Array.h"
#include "rfm_DBMetadata.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace {

using DoubleArray = rfm_Array<double, rfm_TypeDouble>;
using StringArray = rfm_Array<cow_String, rfm_TypeString>;

constexpr int kRows = 300;
constexpr int kArrayRows = 8192;
constexpr int kWords = 40;

// Parts(id int, label string, weight double), labels absent from every fifth row.
rfm_FieldHandle const kId(0);
rfm_FieldHandle const kLabel(1);
rfm_FieldHandle const kWeight(2);

struct Objects {
  rfm_Handle table;
  rfm_Handle doubles;
  rfm_Handle words;
  rfm_Handle stream;
};

cow_String Word(int i) { return cow_String(("word-" + std::to_string(i % 7)).c_str()); }

// Little of it repeats, so the copy spans many compressed blocks.
double ArrayValue(int i) { return std::sin(i) * 1e3; }

Objects WriteDatabase(cow_String const& name) {
  rfm_Database database = CreateTestDatabase(name);
  rfm_TableMetadata parts("Parts", 1);
  parts.DefineIntField("id");
  parts.DefineStringField("label");
  parts.DefineDoubleField("weight");
  rfm_Table table = database.Table(parts, -1, -1);
  for (int i = 0; i < kRows; ++i) {
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(kId, i);
    if (i % 5 != 0) row.WriteFieldString(kLabel, Word(i));
    row.WriteFieldDouble(kWeight, i * 0.125);
  }
  std::vector<double> values(2 * kArrayRows);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = ArrayValue(static_cast<int>(i));
  DoubleArray doubles = database.ArrayDouble(2, -1, 0);
  doubles.Write(values.data(), kArrayRows);
  std::vector<cow_String> words;
  for (int i = 0; i < kWords; ++i) words.push_back(Word(i));
  StringArray wordArray = database.ArrayString(1, -1, 0);
  wordArray.Write(words.data(), kWords);
  rfm_TaggedStream stream = database.TaggedStream(0);
  stream.WriteInt(1, -5);
  stream.WriteString(2, "streamed");
  stream.WriteDouble(3, -1e300);
  stream.WriteFloat(4, 2.5f);
  stream.WriteHandle(5, table.Handle());
  return {table.Handle(), doubles.Handle(), wordArray.Handle(), stream.Handle()};
}

// One line of text per row, element and stream item; numbers print exactly.
template <class... Values>
void AddLine(std::vector<std::string>& lines, Values const&... values) {
  std::ostringstream line;
  line << std::hexfloat;
  ((line << values << ' '), ...);
  lines.push_back(line.str());
}

// Everything the database in name holds at objects, read through the record store.
std::vector<std::string> Contents(cow_String const& name, Objects const& objects) {
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  std::vector<std::string> lines;
  rfm_Table table = database.Table(objects.table, -1, -1);
  for (int at = 0; at < table.Length(); ++at) {
    rfm_Row row = table.ReadRow(at);
    AddLine(lines, row.ReadFieldInt(kId), row.DataIsPresent(kLabel) ? row.ReadFieldString(kLabel).CStr() : "-",
            row.ReadFieldDouble(kWeight));
  }
  DoubleArray doubles = database.ArrayDouble(objects.doubles, -1, 0);
  std::vector<double> values(2 * static_cast<std::size_t>(doubles.Length()));
  if (!values.empty()) doubles.Read(values.data(), doubles.Length());
  for (double value : values) AddLine(lines, value);
  StringArray wordArray = database.ArrayString(objects.words, -1, 0);
  std::vector<cow_String> words(static_cast<std::size_t>(wordArray.Length()));
  if (!words.empty()) wordArray.Read(words.data(), wordArray.Length());
  for (cow_String const& word : words) AddLine(lines, word.CStr());
  rfm_TaggedStream stream = database.TaggedStream(objects.stream, 0);
  while (stream.Next()) {
    AddLine(lines, stream.GetType(), stream.GetID(), stream.GetInt(), stream.GetString().CStr(), stream.GetDouble(),
            stream.GetFloat(), stream.GetHandle().Value());
  }
  return lines;
}

}  // namespace

TEST(FileCopyTest, ADatabaseCopiedIntoACompressedFileAndBackReadsTheSameAndComesBackByteForByte) {
  zqa_TestDir dir;
  cow_String original = dir.File("original.zdb");
  cow_String compressed = dir.File("compressed.zdb");
  cow_String back = dir.File("back.zdb");
  Objects const objects = WriteDatabase(original);
  rfm_File::CreateCompressed(compressed).Copy(rfm_File::Open(original, utl_FileAccessRead, false));
  rfm_File::Open(back, utl_FileAccessCreate, false).Copy(rfm_File::Open(compressed, utl_FileAccessRead, false));

  std::string const bytes = zqa_ReadFileBytes(original);
  EXPECT_EQ(bytes, LogicalFileBytes(compressed));
  EXPECT_LT(zqa_ReadFileBytes(compressed).size(), bytes.size());
  EXPECT_EQ(bytes, zqa_ReadFileBytes(back));

  std::vector<std::string> const contents = Contents(original, objects);
  ASSERT_EQ(static_cast<std::size_t>(kRows + 2 * kArrayRows + kWords + 5), contents.size());
  EXPECT_EQ(contents, Contents(compressed, objects));
  EXPECT_EQ(contents, Contents(back, objects));
}
