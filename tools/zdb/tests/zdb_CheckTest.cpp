#include "rfm_Array.h"
#include "rfm_DatabaseWalk.h"
#include "rfm_Table.h"
#include "rfm_TestBytes.h"
#include "zdb_TestFiles.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

namespace {

// One kind of damage: what it does to a copy of a file's bytes, answering
// the line that zdb check must report for it.
struct Damage {
  char const* m_What;
  std::function<std::string(std::string& bytes)> m_Apply;
};

std::string Number(double value) { return std::to_string(static_cast<long long>(value)); }

// A linkage's fields of the one group of the tests' files.
double Field(std::string const& bytes, int handle, std::size_t field) {
  return StoredDouble(bytes, LinkageOffset(handle) + field);
}
void SetField(std::string& bytes, int handle, std::size_t field, double value) {
  PutStoredDouble(bytes, LinkageOffset(handle) + field, value);
}
int Next(std::string const& bytes, int handle) { return StoredInt(bytes, LinkageOffset(handle) + kNextField); }
void SetNext(std::string& bytes, int handle, int next) {
  PutStoredInt(bytes, LinkageOffset(handle) + kNextField, next);
}
// The last linkage of an object's chain.
int LastLink(std::string const& bytes, int handle) {
  while (Next(bytes, handle) != 0) handle = Next(bytes, handle);
  return handle;
}
// The bytes an object holds, by its chain.
std::size_t ObjectLength(std::string const& bytes, int handle) {
  std::size_t length = 0;
  for (int link = handle; link != 0; link = Next(bytes, link)) length += Field(bytes, link, kLengthField);
  return length;
}
void PutObjectInt(std::string& bytes, int handle, std::size_t offset, int value) {
  PutStoredInt(bytes, FileOffsetOf(bytes, handle, offset), value);
}
void PutObjectDouble(std::string& bytes, int handle, std::size_t offset, double value) {
  PutStoredDouble(bytes, FileOffsetOf(bytes, handle, offset), value);
}
// Lengthens an object by count bytes at its end, its last extent's allocation following.
void Lengthen(std::string& bytes, int handle, int count) {
  int last = LastLink(bytes, handle);
  SetField(bytes, last, kLengthField, Field(bytes, last, kLengthField) + count);
  SetField(bytes, last, kAllocationField, Field(bytes, last, kAllocationField) + 4);
}

// Runs zdb check on a damaged copy of clean for each damage; each must be
// reported with its line, exit status 1 and the summary line last.
void ExpectEachReported(zqa_TestDir const& dir, std::string const& clean, std::vector<Damage> const& damages) {
  int number = 0;
  for (Damage const& damage : damages) {
    std::string bytes = clean;
    std::string line = damage.m_Apply(bytes);
    std::string name = dir.File(("damaged-" + std::to_string(++number) + ".zdb").c_str()).CStr();
    zqa_WriteFileBytes(name.c_str(), bytes);
    zdb_Run run = RunZdb({"check", name});
    EXPECT_EQ(1, run.m_Status) << damage.m_What << "\n" << run.m_Out << run.m_Err;
    EXPECT_EQ("", run.m_Err) << damage.m_What;
    std::vector<std::string> lines = Lines(run.m_Out);
    EXPECT_NE(lines.end(), std::find(lines.begin(), lines.end(), line))
        << damage.m_What << ": expected\n  " << line << "\nin\n"
        << run.m_Out;
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(0u, lines.back().find(name + ": ")) << damage.m_What;
  }
}

}  // namespace

TEST(ZdbCheckTest, UndamagedFilesOfBothKindsPass) {
  zqa_TestDir dir;
  zdb_Sample plain = MakeSample(dir.File("plain.zdb"));
  zdb_Run run = RunZdb({"check", plain.m_Name});
  EXPECT_EQ(0, run.m_Status) << run.m_Out;
  EXPECT_EQ(plain.m_Name + ": no problems found (plain file, 8 objects: 3 arrays, 3 spaces, 1 stream, 1 table)\n",
            run.m_Out);
  zdb_Sample compressed = MakeSample(dir.File("compressed.zdb"), rfm_TestFileKind::Compressed);
  run = RunZdb({"check", compressed.m_Name});
  EXPECT_EQ(0, run.m_Status) << run.m_Out;
  EXPECT_EQ(
      compressed.m_Name + ": no problems found (compressed file, 8 objects: 3 arrays, 3 spaces, 1 stream, 1 table)\n",
      run.m_Out);

  // Objects enough for a second linkage group, and chains of many extents.
  cow_String many = dir.File("many.zdb");
  {
    rfm_Database database = CreateTestDatabase(many);
    std::vector<rfm_Array<int, rfm_TypeInt> > arrays;
    for (int i = 0; i < 300; ++i) arrays.push_back(database.ArrayInt(1, -1, 0));
    for (int round = 0; round < 3; ++round) {
      for (auto const& array : arrays) {
        array.Write(&round, 1);
        array.Flush();
      }
    }
  }
  run = RunZdb({"check", many.CStr()});
  EXPECT_EQ(0, run.m_Status) << run.m_Out;
  EXPECT_EQ(std::string(many.CStr()) + ": no problems found (plain file, 303 objects: 300 arrays, 3 spaces)\n",
            run.m_Out);
}

TEST(ZdbCheckTest, DamageToBlockZeroAndTheLinkageGroupsIsReported) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  std::string const clean = zqa_ReadFileBytes(sample.m_Name.c_str());
  std::string const size = std::to_string(clean.size());
  int const ints = sample.m_Ints;
  std::string const intsText = std::to_string(ints);
  double const nan = std::numeric_limits<double>::quiet_NaN();
  ExpectEachReported(
      dir, clean,
      {
          {"a file shorter than block 0",
           [](std::string& b) {
             b.resize(100);
             return "block 0: the file has 100 bytes, fewer than block 0's 1024";
           }},
          {"the old format's magic",
           [](std::string& b) {
             b.replace(0, 6, "ZKRDFM");
             return "block 0: an old format database (magic \"ZKRDFM\"), which cannot be read";
           }},
          {"another magic",
           [](std::string& b) {
             b.replace(0, 4, "ABCD");
             return "block 0: the magic is not \"ZKRR\": this is no database";
           }},
          {"a version too old",
           [](std::string& b) {
             PutStoredInt(b, 8, 10);
             return "block 0: version 10 is older than the oldest readable, 11";
           }},
          {"a transfer record that is no length",
           [&](std::string& b) {
             PutStoredDouble(b, 504, nan);
             return "block 0: the transfer check record holds no valid length (nan)";
           }},
          {"a file longer than its transfer record says",
           [&](std::string& b) {
             b.append(10, '\0');
             return "block 0: the transfer check record gives the file " + size + " bytes, it has " +
                    std::to_string(b.size());
           }},
          {"a transfer marker of neither form",
           [](std::string& b) {
             PutStoredDouble(b, 504, 0);
             b.replace(500, 4, "\x01\x02\x03\x04");
             return "block 0: the transfer check marker is 01 02 03 04, neither zeros nor 0A 00 0D 0A";
           }},
          {"a next group past the end of the file",
           [&](std::string& b) {
             PutStoredDouble(b, 1024 + kLocationField, static_cast<double>(b.size() + 4096));
             PutStoredInt(b, 1024 + kNextField, 512);
             return "group 1 at offset " + std::to_string(b.size() + 4096) + ": runs past the end of the file (" +
                    size + " bytes)";
           }},
          {"a next group offset that is no offset",
           [&](std::string& b) {
             PutStoredDouble(b, 1024 + kLocationField, nan);
             return "group 0 at offset 1024: its link to the next group holds no valid offset (nan)";
           }},
          {"a next group before this one",
           [](std::string& b) {
             PutStoredDouble(b, 1024 + kLocationField, 500);
             return "group 0 at offset 1024: the next group's offset 500 does not lie further on (a cycle)";
           }},
          {"a free slot before the catalogue's",
           [](std::string& b) {
             SetField(b, 2, kLocationField, 0);
             return "table catalogue (handle 3): missing";
           }},
          {"a location that is no offset",
           [&](std::string& b) {
             SetField(b, ints, kLocationField, nan);
             return "handle " + intsText + ": its location (nan) is no valid size or offset";
           }},
          {"a negative allocation",
           [&](std::string& b) {
             SetField(b, ints, kAllocationField, -8);
             return "handle " + intsText + ": its allocation (-8) is no valid size or offset";
           }},
          {"a length beyond any file",
           [&](std::string& b) {
             SetField(b, ints, kLengthField, 1e300);
             return "handle " + intsText + ": its length (1.0000000000000001e+300) is no valid size or offset";
           }},
          {"a length above the allocation",
           [&](std::string& b) {
             double allocation = Field(b, ints, kAllocationField);
             SetField(b, ints, kLengthField, allocation + 4);
             return "handle " + intsText + ": the extent's length " + Number(allocation + 4) +
                    " is above its allocation " + Number(allocation);
           }},
          {"bytes claimed without an extent",
           [](std::string& b) {
             SetField(b, 2, kAllocationField, 8);
             return "handle 2: claims 8 bytes but has no extent (location 1)";
           }},
          {"an extent past the end of the file",
           [&](std::string& b) {
             SetField(b, ints, kLocationField, static_cast<double>(b.size() - 8));
             return "handle " + intsText + ": its extent at offset " + std::to_string(b.size() - 8) + " with length " +
                    Number(Field(b, ints, kLengthField)) + " runs past the end of the file (" + size + " bytes)";
           }},
          {"a chain that continues at a free slot",
           [&](std::string& b) {
             SetNext(b, ints, 300);
             return "handle " + intsText + ": its chain continues at handle 300, which is no linkage in use";
           }},
          {"a chain that continues at an object that every database has",
           [&](std::string& b) {
             SetNext(b, ints, 2);
             return "handle " + intsText + ": its chain continues at handle 2, which heads an object that every "
                    "database has";
           }},
          {"a placeholder whose chain continues",
           [&](std::string& b) {
             SetNext(b, 2, ints);
             return "handle 2: has no extent (location 1) but its chain continues at handle " + intsText;
           }},
          {"bytes after an extent that is not full",
           [&](std::string& b) {
             SetField(b, 1, kLengthField, Field(b, 1, kLengthField) - 1);
             return "handle " + std::to_string(Next(b, 1)) + ": holds bytes after an extent of its object that is "
                    "not full";
           }},
          {"a chain that loops",
           [&](std::string& b) {
             int second = Next(b, 1);
             SetNext(b, second, second);
             return "handle " + std::to_string(second) + ": its chain returns to handle " + std::to_string(second) +
                    " (a cycle)";
           }},
          {"a chain that runs into another object's",
           [&](std::string& b) {
             int second = Next(b, 1);
             SetNext(b, ints, second);
             return "handle " + intsText + ": its chain runs into handle " + std::to_string(second) +
                    ", which belongs to the object at handle 1";
           }},
          {"a chain without a head",
           [&](std::string& b) {
             int second = Next(b, 1);
             SetNext(b, 1, 0);
             SetNext(b, second, second);
             return "handle " + std::to_string(second) + ": belongs to no object (a chain without a head)";
           }},
          {"extents that overlap",
           [&](std::string& b) {
             double location = Field(b, ints, kLocationField);
             SetField(b, sample.m_Doubles, kLocationField, location + 8);
             double end = location + Field(b, ints, kAllocationField) - 1;
             double doublesEnd = location + 8 + Field(b, sample.m_Doubles, kAllocationField) - 1;
             return "handle " + std::to_string(sample.m_Doubles) + " (bytes " + Number(location + 8) + " to " +
                    Number(doublesEnd) + ") overlaps handle " + intsText + " (bytes " + Number(location) + " to " +
                    Number(end) + ")";
           }},
      });
}

TEST(ZdbCheckTest, DamageToTheStringPoolAndTheCatalogueIsReported) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  std::string const clean = zqa_ReadFileBytes(sample.m_Name.c_str());
  std::size_t const pool = ObjectLength(clean, 1);
  std::size_t const catalogue = ObjectLength(clean, 3);
  // The one record of the catalogue, Parts, at offset 4: its length, its name, then per field in name order
  // (density, id, label, mass, owner) a type and a name.
  auto fieldName = [](int field) { return 4 + 12 + 12 * field + 4; };
  ExpectEachReported(
      dir, clean,
      {
          {"no pool",
           [](std::string& b) {
             SetField(b, 1, kLocationField, 0);
             return "string pool (handle 1): missing";
           }},
          {"a pool too short for its magic",
           [](std::string& b) {
             SetNext(b, 1, 0);
             SetField(b, 1, kLengthField, 2);
             return "string pool (handle 1): too short for its first word";
           }},
          {"a pool with another magic",
           [](std::string& b) {
             PutObjectInt(b, 1, 0, 0x12345678);
             return "string pool (handle 1): its first word is 0x12345678, not 0xAAFFBBEE";
           }},
          {"a pool record longer than the pool",
           [&](std::string& b) {
             PutObjectInt(b, 1, 4, 100000);
             return "string pool (handle 1): the record at offset 4 claims 100000 characters, more than the pool's " +
                    std::to_string(pool - 8) + " remaining bytes";
           }},
          {"a pool record cut short",
           [&](std::string& b) {
             // The last record claims 4 bytes less and the pool loses 2: 2 bytes remain after it.
             std::size_t last = 4;
             for (std::size_t next = 4; next < pool;) {
               last = next;
               next += 4 + (StoredInt(b, FileOffsetOf(b, 1, next)) + 3) / 4 * 4;
             }
             int padded = (StoredInt(b, FileOffsetOf(b, 1, last)) + 3) / 4 * 4;
             PutObjectInt(b, 1, last, padded - 4);
             int end = LastLink(b, 1);
             SetField(b, end, kLengthField, Field(b, end, kLengthField) - 2);
             return "string pool (handle 1): the record at offset " + std::to_string(pool - 4) + " is cut short";
           }},
          {"no catalogue",
           [](std::string& b) {
             SetField(b, 3, kLocationField, 0);
             return "table catalogue (handle 3): missing";
           }},
          {"a catalogue with another magic",
           [](std::string& b) {
             PutObjectInt(b, 3, 0, 0x12345678);
             return "table catalogue (handle 3): its first word is 0x12345678, not 0xFAAAEBBB";
           }},
          {"a record of impossible length",
           [](std::string& b) {
             PutObjectInt(b, 3, 4, 7);
             return "table catalogue (handle 3): the record at offset 4 has an impossible length, 7";
           }},
          {"a record cut short",
           [&](std::string& b) {
             Lengthen(b, 3, 2);
             return "table catalogue (handle 3): the record at offset " + std::to_string(catalogue) + " is cut short";
           }},
          {"a table name outside the pool",
           [](std::string& b) {
             PutObjectDouble(b, 3, 8, 99999);
             return "table catalogue (handle 3): the record at offset 4 names its table by offset 99999, which is no "
                    "string of the pool";
           }},
          {"a field name outside the pool",
           [&](std::string& b) {
             PutObjectDouble(b, 3, fieldName(2), 99999);
             return "table catalogue (handle 3): table \"Parts\": field 2 is named by offset 99999, which is no "
                    "string of the pool";
           }},
          {"a field type that no field has",
           [](std::string& b) {
             PutObjectInt(b, 3, 4 + 12, 9);
             return "table catalogue (handle 3): table \"Parts\": field \"density\" has type 9, which no field can "
                    "have";
           }},
          {"a field described twice",
           [&](std::string& b) {
             std::size_t first = FileOffsetOf(b, 3, fieldName(0));
             PutObjectDouble(b, 3, fieldName(1), StoredDouble(b, first));
             return "table catalogue (handle 3): table \"Parts\": field \"density\" is described twice";
           }},
          {"a table whose layout is no record",
           [&](std::string& b) {
             PutObjectInt(b, sample.m_Parts, 8, 999);
             return "table at handle " + std::to_string(sample.m_Parts) +
                    ": its layout, at offset 999 of the catalogue, is no record the catalogue could read";
           }},
      });

  // Two records of one name: the second names its table with the first's string.
  cow_String twice = dir.File("twice.zdb");
  {
    rfm_Database database = CreateTestDatabase(twice);
    for (char const* name : {"A", "B"}) {
      rfm_TableMetadata layout(name, 1);
      layout.DefineIntField("x");
      database.Bind(layout);
    }
  }
  ExpectEachReported(dir, zqa_ReadFileBytes(twice),
                     {{"a table described twice", [](std::string& b) {
                         PutObjectDouble(b, 3, 28 + 4, StoredDouble(b, FileOffsetOf(b, 3, 4 + 4)));
                         return "table catalogue (handle 3): the record at offset 28 describes table \"A\" again, "
                                "first described at offset 4";
                       }}});
}

TEST(ZdbCheckTest, DamageToTablesArraysAndStreamsIsReported) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  std::string const clean = zqa_ReadFileBytes(sample.m_Name.c_str());
  ASSERT_EQ(0, Next(clean, sample.m_Parts));
  ASSERT_EQ(0, Next(clean, sample.m_Stream));
  std::string const parts = "table at handle " + std::to_string(sample.m_Parts);
  std::string const ints = "array at handle " + std::to_string(sample.m_Ints);
  std::string const stream = "stream at handle " + std::to_string(sample.m_Stream);
  // Parts rows are 36 bytes: bitmap, density, id, label (at 12), mass, owner. The stream's items: int at 8,
  // handle at 20, float at 36, double at 48, string at 64, ending at 80.
  auto shorten = [](std::string& b, int handle, int count) {
    SetField(b, handle, kLengthField, Field(b, handle, kLengthField) - count);
  };
  ExpectEachReported(
      dir, clean,
      {
          {"an array header cut short after its element type",
           [&](std::string& b) {
             SetField(b, sample.m_Ints, kLengthField, 14);
             return ints + ": its header is cut short (14 bytes)";
           }},
          {"a string field outside the pool",
           [&](std::string& b) {
             PutObjectDouble(b, sample.m_Parts, 12 + 12, 12345);
             return parts + ": row 0, field \"label\": offset 12345 is no string of the pool";
           }},
          {"an element type that no array has",
           [&](std::string& b) {
             PutObjectInt(b, sample.m_Ints, 8, 5);
             return ints + ": its element type 5 is no array's";
           }},
          {"no elements in a row",
           [&](std::string& b) {
             PutObjectInt(b, sample.m_Ints, 12, 0);
             return ints + ": 0 elements a row is impossible";
           }},
          {"a string element outside the pool",
           [&](std::string& b) {
             PutObjectDouble(b, sample.m_Strings, 16 + 16, 12345);
             return "array at handle " + std::to_string(sample.m_Strings) +
                    ": row 1, element 0: offset 12345 is no string of the pool";
           }},
          {"an item tag that no item has",
           [&](std::string& b) {
             PutObjectInt(b, sample.m_Stream, 36, 9);
             return stream + ": the item at offset 36 has tag type 9, which no item can have";
           }},
          {"a fixed string item",
           [&](std::string& b) {
             PutObjectInt(b, sample.m_Stream, 36, 7);
             return stream +
                    ": the item at offset 36 is a fixed string, which carries no length: nothing after it "
                    "can be read";
           }},
          {"an item value past the end",
           [&](std::string& b) {
             shorten(b, sample.m_Stream, 4);
             return stream + ": the item at offset 64 runs past the stream's end";
           }},
          {"an item head cut short",
           [&](std::string& b) {
             shorten(b, sample.m_Stream, 12);
             return stream + ": the item at offset 64 is cut short";
           }},
          {"a string item outside the pool",
           [&](std::string& b) {
             PutObjectDouble(b, sample.m_Stream, 72, 12345);
             return stream + ": the item at offset 64: offset 12345 is no string of the pool";
           }},
      });
}

// What every reader passes over is no problem: a file that the library
// opens and reads whole (rfm_DatabaseWalk) passes the check.
TEST(ZdbCheckTest, WhatNoReaderLooksAtPasses) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  std::string const clean = zqa_ReadFileBytes(sample.m_Name.c_str());
  int const ints = sample.m_Ints;
  int firstFree = 1;
  while (Field(clean, firstFree, kLocationField) != 0) ++firstFree;
  std::vector<std::pair<char const*, std::function<void(std::string&)>>> const damages = {
      {"a negative flush count", [](std::string& b) { PutStoredInt(b, 512, -3); }},
      {"the last group's slot 0 naming a next group and holding sizes",
       [](std::string& b) {
         PutStoredInt(b, 1024 + kNextField, 7);
         PutStoredDouble(b, 1024 + kLengthField, 1024);
       }},
      {"a free slot holding a length above its allocation",
       [&](std::string& b) { SetField(b, firstFree, kLengthField, 1024); }},
      {"a free slot after a free one holding an extent and a chain",
       [&](std::string& b) {
         SetField(b, firstFree + 1, kLocationField, 4096);
         SetField(b, firstFree + 1, kLengthField, 1e300);
         SetNext(b, firstFree + 1, ints);
       }},
      {"sizes a hair off a whole number of bytes, as readers round them",
       [&](std::string& b) {
         SetField(b, ints, kLengthField, std::nextafter(Field(b, ints, kLengthField), 1e9));
         SetField(b, ints, kAllocationField, std::nextafter(Field(b, ints, kAllocationField), 0.0));
       }},
      {"a torn last table row",
       [&](std::string& b) { SetField(b, sample.m_Parts, kLengthField, Field(b, sample.m_Parts, kLengthField) - 3); }},
      {"a torn last array row",
       [&](std::string& b) { SetField(b, ints, kLengthField, Field(b, ints, kLengthField) - 4); }},
      {"presence bits beyond the fields", [&](std::string& b) { PutObjectInt(b, sample.m_Parts, 12, 0x9F); }},
  };
  std::string const name = dir.File("passes.zdb").CStr();
  for (auto const& [what, apply] : damages) {
    std::string bytes = clean;
    apply(bytes);
    zqa_WriteFileBytes(name.c_str(), bytes);
    zdb_Run run = RunZdb({"check", name});
    EXPECT_EQ(0, run.m_Status) << what << "\n" << run.m_Out;
    EXPECT_NO_THROW(rfm_DatabaseWalk::WalkStored(name.c_str())) << what;
  }
}

TEST(ZdbCheckTest, AProblemInEveryRowIsReportedFiveTimesThenCounted) {
  zqa_TestDir dir;
  cow_String name = dir.File("rows.zdb");
  int handle;
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_TableMetadata layout("Labels", 1);
    rfm_FieldHandle label(layout.DefineStringField("label"));
    rfm_Table table = database.Table(layout, -1, -1);
    for (int i = 0; i < 8; ++i) table.NewRow().WriteFieldString(label, "same");
    handle = table.Handle().Value();
  }
  std::string const subject = "table at handle " + std::to_string(handle);
  std::string bytes = zqa_ReadFileBytes(name);
  // Rows of a bitmap word and the label: 12 bytes each.
  for (int row = 0; row < 8; ++row) PutObjectDouble(bytes, handle, 12 + 12 * row + 4, 12345);
  zqa_WriteFileBytes(name, bytes);
  zdb_Run run = RunZdb({"check", name.CStr()});
  EXPECT_EQ(1, run.m_Status);
  std::string expected;
  for (int row = 0; row < 5; ++row) {
    expected += subject + ": row " + std::to_string(row) + ", field \"label\": offset 12345 is no string of the pool\n";
  }
  expected += subject + ": 3 more problems of this kind\n";
  expected += std::string(name.CStr()) + ": 6 problems (plain file, 4 objects: 3 spaces, 1 table)\n";
  EXPECT_EQ(expected, run.m_Out);
}

TEST(ZdbCheckTest, DamageToTheCompressedContainerIsReportedInItsOwnWords) {
  zqa_TestDir dir;
  cow_String name = dir.File("large.zdb");
  {
    rfm_Database database = CreateTestDatabase(name, "APP", false, rfm_TestFileKind::Compressed);
    rfm_Array<double, rfm_TypeDouble> array = database.ArrayDouble(1, -1, 0);
    for (int i = 0; i < 40000; ++i) {
      double value = std::sin(i * 0.01);
      array.Write(&value, 1);
    }
  }
  std::string const clean = zqa_ReadFileBytes(name);
  // Sector 0 holds the header: the segment table's metadata at 20, the stream table at 40.
  auto damageSegment = [](std::string& b, int segment) {
    std::size_t data = 4096 * static_cast<std::size_t>(StoredInt(b, 40 + 4 * segment)) + 4;
    for (std::size_t i = 8; i < 40; ++i) b[data + i] = static_cast<char>(~b[data + i]);
  };
  ExpectEachReported(dir, clean,
                     {
                         {"a segment whose stream does not decode",
                          [&](std::string& b) {
                            damageSegment(b, 1);
                            return "bytes 65536 to 131071 cannot be read: ***ERROR: ZAE database is corrupt.";
                          }},
                         {"a first segment that does not decode, read as the file opens",
                          [&](std::string& b) {
                            damageSegment(b, 0);
                            return "the file cannot be opened: ***ERROR: ZAE database is corrupt.";
                          }},
                         {"a container whose segment table has another magic",
                          [](std::string& b) {
                            PutStoredInt(b, 20, 0x12345678);
                            return "the file cannot be opened: ***ERROR: ZAE database is corrupt.";
                          }},
                     });
}

// A flipped bit in the container's segment count claimed millions of
// segments: check took seconds and gigabytes and found nothing, decompress
// wrote what was claimed. Both must cost what the file holds and report it.
TEST(ZdbCheckTest, ALengthTheCompressedFileCannotBackIsReportedAndNotCopied) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("compressed.zdb"), rfm_TestFileKind::Compressed);
  std::string const clean = zqa_ReadFileBytes(sample.m_Name.c_str());
  // The segment table's words at 20: magic, version, segment size, count, last length.
  int const segment = StoredInt(clean, 28);
  int const count = StoredInt(clean, 32);
  long long const size = static_cast<long long>(segment) * (count - 1) + StoredInt(clean, 36);
  // Every segment of the clean file has a stream; claimed as not the last,
  // its last one counts whole.
  long long const stored = static_cast<long long>(segment) * count;
  for (int claimed : {1001, count | 1 << 22, 1 << 24, std::numeric_limits<int>::max()}) {
    std::string bytes = clean;
    PutStoredInt(bytes, 32, claimed);
    std::string const name = dir.File(("claims-" + std::to_string(claimed) + ".zdb").c_str()).CStr();
    zqa_WriteFileBytes(name.c_str(), bytes);
    zdb_Run check = RunZdb({"check", name});
    EXPECT_EQ(1, check.m_Status) << check.m_Out;
    std::vector<std::string> const lines = Lines(check.m_Out);
    std::string const line = "the file claims " +
                             std::to_string(static_cast<long long>(segment) * (claimed - 1) + StoredInt(clean, 36)) +
                             " bytes, but the database ends at " + std::to_string(size) + " and the file stores " +
                             std::to_string(stored);
    EXPECT_NE(lines.end(), std::find(lines.begin(), lines.end(), line)) << line << "\nin\n" << check.m_Out;

    // Only the smallest claim is copied: should the copy trust a count
    // again, it writes 64 MiB, not a disk full.
    if (claimed != 1001) continue;
    std::string const copy = dir.File(("copy-" + std::to_string(claimed) + ".zdb").c_str()).CStr();
    zdb_Run decompress = RunZdb({"decompress", name, copy});
    EXPECT_EQ(1, decompress.m_Status) << decompress.m_Out;
    EXPECT_EQ("zdb decompress: " + name + ": ***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  " +
                  name + "\n",
              decompress.m_Err);
    EXPECT_TRUE(zqa_ReadFileBytes(copy.c_str()).empty());
  }
}

TEST(ZdbCheckTest, RandomDamageNeverCrashesTheCheck) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  std::string const clean = zqa_ReadFileBytes(sample.m_Name.c_str());
  std::mt19937 random(20240501);
  std::string name = dir.File("random.zdb").CStr();
  for (int round = 0; round < 60; ++round) {
    std::string bytes = clean;
    // Mostly the structures: block 0's words and the group, then anywhere.
    int changes = 1 + static_cast<int>(random() % 8);
    for (int i = 0; i < changes; ++i) {
      std::size_t limit = i % 2 == 0 ? std::min<std::size_t>(bytes.size(), 1024 + 28 * 16) : bytes.size();
      bytes[random() % limit] = static_cast<char>(random());
    }
    if (round % 10 == 9) bytes.resize(random() % bytes.size());
    zqa_WriteFileBytes(name.c_str(), bytes);
    zdb_Run run = RunZdb({"check", name});
    ASSERT_TRUE(run.m_Status == 0 || run.m_Status == 1) << "round " << round << ": status " << run.m_Status << "\n"
                                                        << run.m_Err;
    // A sanitizer's report would come here.
    EXPECT_EQ("", run.m_Err) << "round " << round;
    std::vector<std::string> lines = Lines(run.m_Out);
    ASSERT_FALSE(lines.empty()) << "round " << round;
    EXPECT_EQ(0u, lines.back().find(name + ": ")) << "round " << round;
  }
}
