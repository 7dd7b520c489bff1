#include "rfm_SampleDatabase.h"

#include "rfm_Array.h"
#include "rfm_Space.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"

#include <string>

namespace {

constexpr int kNodeRows = 40;
// Rounds of the two arrays written in turns: each round adds an extent to
// each, so together with the other objects they fill group 0 and reach
// into group 1.
constexpr int kInterleavedRounds = 280;

rfm_FieldHandle const kKind("Kind", -1);
rfm_FieldHandle const kObject("Object", -1);
rfm_FieldHandle const kNote("Note", -1);

rfm_TableMetadata RootTable() {
  rfm_TableMetadata table("Root", 1);
  table.DefineIntField("Kind");
  table.DefineHandleField("Object");
  table.DefineStringField("Note");
  return table;
}

rfm_TableMetadata NodeTable() {
  rfm_TableMetadata table("Nodes", 2);
  table.DefineIntField("Id");
  table.DefineDoubleField("X");
  table.DefineFloatField("Y");
  table.DefineStringField("Label");
  table.DefineHandleField("Link");
  return table;
}

// Rows with some fields left out, so that presence bits differ from row to row.
void WriteNodes(rfm_Table const& nodes, std::vector<rfm_SampleDatabase::Object> const& linked) {
  for (int id = 0; id < kNodeRows; ++id) {
    rfm_Row row = nodes.NewRow();
    row.WriteFieldInt(rfm_FieldHandle("Id", -1), id * 7 - 20);
    row.WriteFieldDouble(rfm_FieldHandle("X", -1), id * 0.25 - 3.0);
    if (id % 3 != 0) row.WriteFieldFloat(rfm_FieldHandle("Y", -1), static_cast<float>(id) / 8.0f);
    if (id % 2 == 0) row.WriteFieldString(rfm_FieldHandle("Label", -1), cow_String("node ").Append(cow_String(id % 6)));
    if (id % 5 == 0) {
      rfm_Handle const link = linked[static_cast<std::size_t>(id / 5) % linked.size()].m_Handle;
      row.WriteFieldHandle(rfm_FieldHandle("Link", -1), link);
    }
  }
}

}  // namespace

void rfm_SampleDatabase::WriteItems(rfm_TaggedStream const& stream, rfm_Handle handle) {
  stream.WriteInt(1, 42);
  stream.WriteFloat(2, 1.5f);
  stream.WriteDouble(3, -2.25);
  stream.WriteString(4, "stream text");
  stream.WriteHandle(5, handle);
  stream.WriteInt(6, -7);
  stream.WriteString(7, "");
  stream.WriteDouble(8, 1.0e300);
}

std::vector<rfm_SampleDatabase::Object> rfm_SampleDatabase::Write(rfm_File const& file) {
  rfm_Database database = rfm_Database::Create(file, "SMPL", "a sample database", 1700000000);
  std::vector<Object> objects;
  rfm_Table root = database.Table(RootTable(), -1, -1);
  rfm_Table nodes = database.Table(NodeTable(), -1, -1);
  objects.push_back({root.Handle(), rfm_TypeTable});
  objects.push_back({nodes.Handle(), rfm_TypeTable});

  auto ints = database.ArrayInt(3, -1, 0);
  for (int row = 0; row < 20; ++row) {
    int const values[3] = {row, -row * 1000, 1 << (row % 31)};
    ints.Write(values, 1);
  }
  auto floats = database.ArrayFloat(2, -1, 0);
  for (int row = 0; row < 10; ++row) {
    float const values[2] = {row * 0.5f, -row * 0.125f};
    floats.Write(values, 1);
  }
  auto doubles = database.ArrayDouble(4, -1, 0);
  for (int row = 0; row < 10; ++row) {
    double const values[4] = {row * 1.5, -row / 3.0, row * 1.0e10, 0.0};
    doubles.Write(values, 1);
  }
  auto strings = database.ArrayString(2, -1, 0);
  for (int row = 0; row < 6; ++row) {
    cow_String const values[2] = {cow_String("first ").Append(cow_String(row)),
                                  cow_String("node ").Append(cow_String(row))};
    strings.Write(values, 1);
  }
  objects.push_back({ints.Handle(), rfm_TypeInt});
  objects.push_back({floats.Handle(), rfm_TypeFloat});
  objects.push_back({doubles.Handle(), rfm_TypeDouble});
  objects.push_back({strings.Handle(), rfm_TypeString});

  rfm_TaggedStream stream = database.TaggedStream(0);
  WriteItems(stream, nodes.Handle());
  objects.push_back({stream.Handle(), rfm_TypeStream});

  rfm_Space space = database.Space(-1);
  std::string pattern(100, '\0');
  for (std::size_t i = 0; i < pattern.size(); ++i) pattern[i] = static_cast<char>(i * 37 + 11);
  space.Write(pattern.data(), static_cast<int>(pattern.size()));
  objects.push_back({space.Handle(), rfm_TypeSpace});

  auto left = database.ArrayDouble(1, -1, 0);
  auto right = database.ArrayDouble(1, -1, 0);
  for (int round = 0; round < kInterleavedRounds; ++round) {
    double const value = round * 0.5;
    left.Write(&value, 1);
    left.Flush();
    double const negated = -value;
    right.Write(&negated, 1);
    right.Flush();
  }
  objects.push_back({left.Handle(), rfm_TypeDouble});
  objects.push_back({right.Handle(), rfm_TypeDouble});

  std::vector<Object> linked(objects.begin() + 2, objects.end());
  WriteNodes(nodes, linked);
  for (Object const& object : objects) {
    rfm_Row row = root.NewRow();
    row.WriteFieldInt(kKind, object.m_Type);
    row.WriteFieldHandle(kObject, object.m_Handle);
    row.WriteFieldString(kNote, cow_String("object ").Append(cow_String(object.m_Handle.Value())));
  }
  ints.Flush();
  floats.Flush();
  doubles.Flush();
  strings.Flush();
  stream.Flush();
  root.Flush();
  nodes.Flush();
  database.Flush();
  return objects;
}
