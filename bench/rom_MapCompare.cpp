// Builds a map of one million string keys to small objects (an int and a
// double each) as a member of one object, through the object layer's typed
// helper (rom_WriteObject), and reloads it (rom_ReadObject), against the
// same rows (a table of the objects, a table of key, object id and class
// id) written and read with rfm_Table directly, the baseline filling a
// std::map of the same keys. Both paths create the file, write, flush and
// close it, then open it read-only and read every entry; every key and value
// is checked after each timed read. Passes of the two paths alternate; the
// program prints the best and the median of each and the ratio of the
// medians, object layer / rfm_Table.
//
//   rom_MapCompare [thousands of entries]     default 1000; TMPDIR picks the folder

#include "zqa_Bench.h"
#include "cls_ClassRegistrar.h"
#include "cls_Persistent.h"
#include "cls_Uid.h"
#include "cow_COW.h"
#include "rfm_Database.h"
#include "rfm_Row.h"
#include "rfm_Table.h"
#include "rfm_TableMetadata.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRepeats = 5;
// Both paths grow their tables by the object layer's quantum for maps.
constexpr int kQuantum = 512;
char const kMagic[] = "MDL";

struct Entry {
  static constexpr unsigned int kClassId = 0x01000401;
  cls_Uid uid;
  int id = 0;
  double value = 0;
};

struct Index {
  static constexpr unsigned int kClassId = 0x01000402;
  cls_Uid uid;
  std::map<cow_String, cow_COW<Entry>> entries;
};

cow_String Key(int i) {
  char text[32];
  std::snprintf(text, sizeof text, "node-%08d", (i * 7919) % 100000000);
  return cow_String(text);
}

double Value(int i) { return i * 0.25 - 7.0; }

cow_COW<Index> MakeIndex(int count) {
  cow_COW<Index> index(new Index);
  for (int i = 0; i < count; ++i) {
    cow_COW<Entry> entry(new Entry);
    entry.Get()->id = i;
    entry.Get()->value = Value(i);
    index.Get()->entries.emplace(Key(i), entry);
  }
  return index;
}

// The baseline's rows: what the object layer stores for the same map.
rfm_TableMetadata EntryLayout() {
  rfm_TableMetadata layout("Entry", 1);
  layout.DefineIntField("Id");
  layout.DefineDoubleField("Value");
  return layout;
}

rfm_TableMetadata MapLayout() {
  rfm_TableMetadata layout("Map", 1);
  layout.DefineIntField("OID");
  layout.DefineIntField("ClassID");
  layout.DefineStringField("Key");
  return layout;
}

// A field by its index, as a program that knows its layout addresses it.
rfm_FieldHandle Field(rfm_Table const& table, char const* name) { return rfm_FieldHandle(table.Index(cow_String(name))); }

struct Plain {
  int id;
  double value;
};

void CheckPlain(std::map<cow_String, Plain> const& back, cow_COW<Index> const& index) {
  zqa_Check(back.size() == index.ConstGet()->entries.size(), "rfm_Table map size");
  auto expected = index.ConstGet()->entries.begin();
  for (auto const& [key, entry] : back) {
    zqa_Check(key == expected->first, "rfm_Table map key");
    zqa_Check(entry.id == expected->second.ConstGet()->id && entry.value == expected->second.ConstGet()->value,
              "rfm_Table map value");
    ++expected;
  }
}

zqa_PassTimes TablePass(std::string const& path, cow_COW<Index> const& index) {
  zqa_PassTimes times;
  rfm_Handle entriesHandle, mapHandle;
  ::unlink(path.c_str());
  times.writeSeconds = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, false), kMagic, "map", 0);
    rfm_Table const entries = database.Table(EntryLayout(), kQuantum, -1);
    rfm_Table const map = database.Table(MapLayout(), kQuantum, -1);
    rfm_FieldHandle const id = Field(entries, "Id"), value = Field(entries, "Value"), oid = Field(map, "OID"),
                          classId = Field(map, "ClassID"), key = Field(map, "Key");
    for (auto const& [name, entry] : index.ConstGet()->entries) {
      rfm_Row const row = entries.NewRow();
      row.WriteFieldInt(id, entry.ConstGet()->id);
      row.WriteFieldDouble(value, entry.ConstGet()->value);
      rfm_Row const link = map.NewRow();
      link.WriteFieldInt(oid, row.Location());
      link.WriteFieldInt(classId, static_cast<int>(Entry::kClassId));
      link.WriteFieldString(key, name);
    }
    entriesHandle = entries.Handle();
    mapHandle = map.Handle();
  });
  std::map<cow_String, Plain> back;
  times.readSeconds = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    rfm_Table const entries = database.Table(entriesHandle, kQuantum, -1);
    rfm_Table const map = database.Table(mapHandle, kQuantum, -1);
    rfm_FieldHandle const id = Field(entries, "Id"), value = Field(entries, "Value"), oid = Field(map, "OID"),
                          key = Field(map, "Key");
    map.Seek(0);
    while (map.RowExists(-1)) {
      rfm_Row const link = map.ReadRow(-1);
      rfm_Row const row = entries.ReadRow(link.ReadFieldInt(oid));
      back.emplace(link.ReadFieldString(key), Plain{row.ReadFieldInt(id), row.ReadFieldDouble(value)});
    }
  });
  CheckPlain(back, index);
  ::unlink(path.c_str());
  return times;
}

zqa_PassTimes ObjectPass(std::string const& path, cls_ClassRegistrar const& registrar, cow_COW<Index> const& index) {
  zqa_PassTimes times;
  rom_CidOid row;
  ::unlink(path.c_str());
  times.writeSeconds = zqa_Seconds([&] {
    rom_Transporter transporter(registrar, rfm_File::Open(path.c_str(), utl_FileAccessCreate, false), kMagic, "map",
                                0, -1);
    row = rom_WriteObject(transporter, index);
  });
  cow_COW<Index> read;
  times.readSeconds = zqa_Seconds([&] {
    rom_Transporter transporter(registrar, rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic, -1);
    read = rom_ReadObject<Index>(transporter, row);
  });
  auto const& back = read.ConstGet()->entries;
  zqa_Check(back.size() == index.ConstGet()->entries.size(), "object map size");
  auto expected = index.ConstGet()->entries.begin();
  for (auto const& [key, entry] : back) {
    zqa_Check(key == expected->first, "object map key");
    zqa_Check(entry.ConstGet()->id == expected->second.ConstGet()->id &&
                  entry.ConstGet()->value == expected->second.ConstGet()->value,
              "object map value");
    ++expected;
  }
  ::unlink(path.c_str());
  return times;
}

double Median(std::vector<double> seconds) {
  std::sort(seconds.begin(), seconds.end());
  return seconds[seconds.size() / 2];
}

void Print(char const* what, std::vector<double> const& seconds, long long entries) {
  double const best = *std::min_element(seconds.begin(), seconds.end());
  std::printf("  %-24s best %7.2f  median %7.2f  million entries/s\n", what, entries / best / 1e6,
              entries / Median(seconds) / 1e6);
}

}  // namespace

int main(int argc, char** argv) {
  long long const thousands = argc > 1 ? std::atoll(argv[1]) : 1000;
  long long const count = thousands * 1000;
  zqa_Check(count > 0 && count <= 100000000, "a count of 1 to 100000 thousand entries");
  cls_ClassRegistrar registrar;
  cls_Persistent<Entry>("Entry", Entry::kClassId, 1)
      .Identity(&Entry::uid)
      .Member(1, "Id", &Entry::id)
      .Member(2, "Value", &Entry::value)
      .Register(registrar);
  cls_Persistent<Index>("Index", Index::kClassId, 1)
      .Identity(&Index::uid)
      .Member(1, "Entries", &Index::entries)
      .Register(registrar);
  cow_COW<Index> const index = MakeIndex(static_cast<int>(count));
  std::string const path = zqa_BenchPath("rom_MapCompare");

  std::vector<double> tableWrite, tableRead, objectWrite, objectRead;
  for (int pass = 0; pass < kRepeats; ++pass) {
    zqa_PassTimes const table = TablePass(path, index);
    tableWrite.push_back(table.writeSeconds);
    tableRead.push_back(table.readSeconds);
    zqa_PassTimes const object = ObjectPass(path, registrar, index);
    objectWrite.push_back(object.writeSeconds);
    objectRead.push_back(object.readSeconds);
  }
  std::printf("a map of %lld string keys to objects, %d passes of each path, alternating\n", count, kRepeats);
  Print("build rfm_Table", tableWrite, count);
  Print("build object layer", objectWrite, count);
  Print("reload rfm_Table+std::map", tableRead, count);
  Print("reload object layer", objectRead, count);
  std::printf("object layer / rfm_Table (medians): build %.2f, reload %.2f\n", Median(tableWrite) / Median(objectWrite),
              Median(tableRead) / Median(objectRead));
  return 0;
}
