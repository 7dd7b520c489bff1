#ifndef rfm_TestSampleDatabase_h
#define rfm_TestSampleDatabase_h

#include "rfm_Array.h"
#include "rfm_DBMetadata.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestDatabase.h"

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

// A database holding one of each kind of object, and a reading of all it
// holds as lines of text, for tests that compare two ways to the same data.
namespace rfm_Sample {

using DoubleArray = rfm_Array<double, rfm_TypeDouble>;
using StringArray = rfm_Array<cow_String, rfm_TypeString>;

constexpr int kRows = 300;
constexpr int kArrayRows = 8192;
constexpr int kWords = 40;

// Parts(id int, label string, weight double), labels absent from every fifth row.
inline rfm_FieldHandle const kId(0);
inline rfm_FieldHandle const kLabel(1);
inline rfm_FieldHandle const kWeight(2);

struct Objects {
  rfm_Handle table;
  rfm_Handle doubles;
  rfm_Handle words;
  rfm_Handle stream;
};

inline cow_String Word(int i) { return cow_String(("word-" + std::to_string(i % 7)).c_str()); }

// Little of it repeats, so the copy spans many compressed blocks.
inline double ArrayValue(int i) { return std::sin(i) * 1e3; }

inline Objects WriteDatabase(cow_String const& name) {
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
inline void AddLine(std::vector<std::string>& lines, Values const&... values) {
  std::ostringstream line;
  line << std::hexfloat;
  ((line << values << ' '), ...);
  lines.push_back(line.str());
}

// Everything the database in name (a file or a URL) holds at objects, read
// through the record store.
inline std::vector<std::string> Contents(cow_String const& name, Objects const& objects) {
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

}  // namespace rfm_Sample

#endif
