#include "atr_String.h"
#include "nex_PrimException.h"
#include "rfm_Database.h"
#include "rfm_DatabaseReprFile.h"
#include "rfm_GroupLayout.h"
#include "rfm_ReaderSemaphoreProxy.h"
#include "rfm_Space.h"
#include "rfm_Array.h"
#include "rfm_SampleDatabase.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kGroup = kRfmGroupSize;

std::string OpenError(cow_String const& name, char const* magic) {
  try {
    OpenTestDatabase(name, utl_FileAccessRead, magic);
  } catch (rfm_TestMessage const& e) {
    return e.what();
  }
  return "opened";
}

rfm_DatabaseReprFile& FileRepr(rfm_Database const& database) {
  return static_cast<rfm_DatabaseReprFile&>(database.Repr());
}

// Writes text into a new space and returns its handle.
rfm_Handle WriteSpace(rfm_Database const& database, std::string const& text) {
  rfm_Space space = database.Space(-1);
  space.Write(text.data(), static_cast<int>(text.size()));
  return space.Handle();
}

std::string ReadSpace(rfm_Database const& database, rfm_Handle handle) {
  rfm_Space space = database.Space(handle, -1);
  std::string text(static_cast<std::size_t>(space.Length()), '\0');
  if (!text.empty()) space.Read(text.data(), static_cast<int>(text.size()));
  return text;
}

}  // namespace

using DatabaseTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(DatabaseTest);

// Plain files only: the bytes on disk, which a compressed file packs.
TEST(DatabasePlainFileTest, NewFileHasBlock0AndGroup0AsSpecifiedByteForByte) {
  zqa_TestDir dir;
  cow_String name = dir.File("new.zdb");
  CreateTestDatabase(name, "APPLICATION");

  std::string bytes = zqa_ReadFileBytes(name);
  ASSERT_GE(bytes.size(), static_cast<std::size_t>(1024 + kGroup));
  EXPECT_EQ(std::string("ZKRRAPPL", 8), bytes.substr(0, 8));
  EXPECT_EQ(12, StoredInt(bytes, 8));
  EXPECT_EQ(std::string("a test database") + std::string(484 - 15, '\0'), bytes.substr(12, 484));
  EXPECT_EQ(0, StoredInt(bytes, 496));
  EXPECT_EQ(std::string(4, '\0'), bytes.substr(500, 4));
  EXPECT_EQ(static_cast<double>(bytes.size()), StoredDouble(bytes, 504));
  EXPECT_EQ(1, StoredInt(bytes, 512));  // the flush of closing
  EXPECT_EQ(1700000000, StoredInt(bytes, 516));
  EXPECT_EQ(std::string(504, '\0'), bytes.substr(520, 504));

  // Group 0 at 1024: slot 0 ends the chain; slots 1-3 hold the pool, the
  // reserved space and the metadata, each as three doubles and a handle.
  auto linkage = [&](int slot) { return 1024 + 28 * static_cast<std::size_t>(slot); };
  for (int field = 0; field < 28; field += 4) EXPECT_EQ(0, StoredInt(bytes, linkage(0) + field)) << field;
  EXPECT_EQ(4.0, StoredDouble(bytes, linkage(1)));
  EXPECT_EQ(4.0, StoredDouble(bytes, linkage(1) + 8));
  EXPECT_EQ(1024.0 + kGroup, StoredDouble(bytes, linkage(1) + 16));
  EXPECT_EQ(0, StoredInt(bytes, linkage(1) + 24));
  EXPECT_EQ(static_cast<int>(0xAAFFBBEE), StoredInt(bytes, 1024 + kGroup));
  EXPECT_EQ(0.0, StoredDouble(bytes, linkage(2)));
  EXPECT_EQ(1.0, StoredDouble(bytes, linkage(2) + 16));
  EXPECT_EQ(1024.0 + kGroup + 4, StoredDouble(bytes, linkage(3) + 16));
  EXPECT_EQ(static_cast<int>(0xFAAAEBBB), StoredInt(bytes, 1024 + kGroup + 4));
  EXPECT_EQ(0.0, StoredDouble(bytes, linkage(4) + 16));
  EXPECT_EQ(static_cast<std::size_t>(1024 + kGroup + 8), bytes.size());
}

// Plain files only: preallocation and the length on disk.
TEST(DatabasePlainFileTest, FlushCountVouchesForEachFlushAndClosingTrimsThePreallocatedFile) {
  zqa_TestDir dir;
  cow_String name = dir.File("flush.zdb");
  {
    rfm_Database database = CreateTestDatabase(name, "APP", true);
    EXPECT_EQ(1 << 20, static_cast<int>(zqa_ReadFileBytes(name).size()));
    database.Flush();
    database.Flush();
    EXPECT_EQ(2, database.GetFlushCount());
    std::string bytes = zqa_ReadFileBytes(name);
    EXPECT_EQ(2, StoredInt(bytes, 512));
    // Until closing, the transfer record keeps what it had when block 0 was written.
    EXPECT_EQ(0.0, StoredDouble(bytes, 504));
  }
  std::string bytes = zqa_ReadFileBytes(name);
  EXPECT_EQ(static_cast<std::size_t>(1024 + kGroup + 8), bytes.size());
  EXPECT_EQ(3, StoredInt(bytes, 512));
  EXPECT_EQ(static_cast<double>(bytes.size()), StoredDouble(bytes, 504));

  // A reader leaves block 0 as it found it.
  { OpenTestDatabase(name, utl_FileAccessRead); }
  EXPECT_EQ(bytes, zqa_ReadFileBytes(name));
}

// A count read from a file may hold any value, the largest int too: the
// flush after it writes the smallest, as a count that moved.
TEST(DatabasePlainFileTest, CountsAtTheLargestIntGoRoundToTheSmallestAtTheNextFlush) {
  zqa_TestDir dir;
  cow_String name = dir.File("counts.zdb");
  int handles[3];
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_TableMetadata definition("Counted", 1);
    definition.DefineIntField("Value");
    rfm_Table table = database.Table(definition, -1, -1);
    table.NewRow().WriteFieldInt(rfm_FieldHandle("Value", -1), 1);
    rfm_TaggedStream stream = database.TaggedStream(0);
    stream.WriteInt(1, 1);
    auto array = database.ArrayInt(1, -1, 0);
    int const one = 1;
    array.Write(&one, 1);
    handles[0] = table.Handle().Value();
    handles[1] = stream.Handle().Value();
    handles[2] = array.Handle().Value();
  }
  // Each object's count is its second word; the database's lies in block 0.
  constexpr int kObjectCount = 4;
  constexpr std::size_t kFlushCount = 512;
  {
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate);
    for (int handle : handles) {
      rfm_Space space = database.Space(rfm_Handle(handle), -1);
      space.Seek(kObjectCount);
      space.WriteInt(INT_MAX);
    }
  }
  std::string bytes = zqa_ReadFileBytes(name);
  PutStoredInt(bytes, kFlushCount, INT_MAX);
  zqa_WriteFileBytes(name, bytes);
  {
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate);
    rfm_Table table = database.Table(rfm_Handle(handles[0]), -1, -1);
    table.NewRow().WriteFieldInt(rfm_FieldHandle("Value", -1), 2);
    EXPECT_EQ(INT_MIN, table.Flush());
    rfm_TaggedStream stream = database.TaggedStream(rfm_Handle(handles[1]), 0);
    EXPECT_EQ(INT_MIN, stream.Flush());
    auto array = database.ArrayInt(rfm_Handle(handles[2]), -1, 0);
    EXPECT_EQ(INT_MIN, array.Flush());
    database.Flush();
    EXPECT_EQ(INT_MIN, database.GetFlushCount());
  }
  // Closing flushes the database once more.
  EXPECT_EQ(INT_MIN + 1, StoredInt(zqa_ReadFileBytes(name), kFlushCount));
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  for (int handle : handles) {
    rfm_Space space = database.Space(rfm_Handle(handle), -1);
    space.Seek(kObjectCount);
    EXPECT_EQ(INT_MIN, space.ReadInt()) << "object " << handle;
  }
}

TEST_P(DatabaseTest, FiveHundredTwelfthObjectOpensGroupOneAndHandlesAreChecked) {
  zqa_TestDir dir;
  cow_String name = dir.File("groups.zdb");
  {
    rfm_Database database = CreateTestDatabase(name);
    rfm_DatabaseReprFile& repr = FileRepr(database);
    rfm_Handle last;
    for (int object = 4; object <= 511; ++object) last = WriteSpace(database, "x");
    EXPECT_EQ(511, last.Value());
    rfm_Handle next = WriteSpace(database, "in group one");
    EXPECT_EQ(513, next.Value());

    EXPECT_FALSE(repr.HandleOk(rfm_Handle(0)));
    EXPECT_FALSE(repr.HandleOk(rfm_Handle(512)));
    EXPECT_FALSE(repr.HandleOk(rfm_Handle(1024)));
    EXPECT_FALSE(repr.HandleOk(rfm_Handle(1025)));
    EXPECT_TRUE(repr.HandleOk(next));
    try {
      repr.Linkage(rfm_Handle(1025));
      FAIL() << "a handle beyond the last group resolved";
    } catch (rfm_TestMessage const& e) {
      EXPECT_EQ(std::string("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  ") + name.CStr(),
                e.what());
    }
    EXPECT_THROW(database.Space(rfm_Handle(1025), -1), rfm_TestMessage);
  }
  std::string bytes = LogicalFileBytes(name);
  std::size_t group1 = static_cast<std::size_t>(StoredDouble(bytes, 1024 + 16));
  EXPECT_EQ(512, StoredInt(bytes, 1024 + 24));
  ASSERT_LT(group1 + kGroup, bytes.size());
  EXPECT_EQ(0.0, StoredDouble(bytes, group1 + 16));

  rfm_Database reopened = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_EQ("in group one", ReadSpace(reopened, rfm_Handle(513)));
  EXPECT_EQ("x", ReadSpace(reopened, rfm_Handle(511)));
}

// The sample holds every kind of object, and chains that continue across
// groups 0 and 1; a space made after it has its head in group 1.
TEST_P(DatabaseTest, ObjectHandlesListEveryObjectsHeadInHandleOrderAndNoLinkageThatContinuesOne) {
  zqa_TestDir dir;
  cow_String name = dir.File("objects.zdb");
  std::vector<rfm_SampleDatabase::Object> objects = rfm_SampleDatabase::Write(
      GetParam() == rfm_TestFileKind::Compressed ? rfm_File::CreateCompressed(name)
                                                 : rfm_File::Open(name, utl_FileAccessCreate, false));
  rfm_Handle late;
  {
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate);
    late = WriteSpace(database, "made last");
    // Made, not yet grown: its slot is taken, no extent holds it.
    EXPECT_EQ(0, database.ExtentCount(database.Space(-1).Handle()));
  }
  objects.push_back({late, rfm_TypeSpace});
  for (int wellKnown = 1; wellKnown <= 3; ++wellKnown) objects.push_back({rfm_Handle(wellKnown), rfm_TypeSpace});
  std::sort(objects.begin(), objects.end(),
            [](rfm_SampleDatabase::Object const& a, rfm_SampleDatabase::Object const& b) { return a.m_Handle < b.m_Handle; });

  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  ASSERT_EQ(2, database.GroupCount());
  ASSERT_EQ(1u, late.Group());
  cow_List<rfm_Handle> heads = database.ObjectHandles();
  ASSERT_EQ(static_cast<int>(objects.size()) + 1, heads.Length());
  for (std::size_t i = 0; i < objects.size(); ++i) {
    rfm_Handle head = heads[static_cast<int>(i)];
    EXPECT_EQ(objects[i].m_Handle.Value(), head.Value()) << i;
    EXPECT_EQ(objects[i].m_Type, database.HandleType(head)) << head.Value();
    // Every linkage of the sample's objects holds an extent, but for the
    // reserved space's, which never grows.
    int linkages = 0;
    std::sscanf(database.GetObjStatistics(head).First().CStr(), "Linkage_Count=%d", &linkages);
    EXPECT_EQ(head.Value() == 2 ? 0 : linkages, database.ExtentCount(head)) << head.Value();
  }
  // The last head is the space made empty above, in group 1 too.
  EXPECT_EQ(late.Value() + 1, heads.Last().Value());

  // The linkages that continue a chain are no object's head, and count no extents of their own.
  int continuations = 0;
  for (int group = 0; group < database.GroupCount(); ++group) {
    for (int slot = 1; slot < rfm_Handle::kSlotsPerGroup; ++slot) {
      rfm_Handle handle = rfm_Handle::Make(group, slot);
      if (database.GetObjStatistics(handle).IsEmpty()) continue;
      bool head = std::any_of(objects.begin(), objects.end(),
                              [&](rfm_SampleDatabase::Object const& object) { return object.m_Handle == handle; });
      if (head || handle == heads.Last()) continue;
      ++continuations;
      EXPECT_EQ(0, database.ExtentCount(handle)) << handle.Value();
    }
  }
  EXPECT_GT(continuations, rfm_Handle::kSlotsPerGroup / 2);
  EXPECT_EQ(0, database.ExtentCount(rfm_Handle(0)));
  EXPECT_EQ(0, database.ExtentCount(rfm_Handle::Make(5, 1)));
}

// Plain files only: damage written at offsets on disk.
TEST(DatabasePlainFileTest, OpeningRefusesEachKindOfWrongFileWithItsOwnMessage) {
  zqa_TestDir dir;
  cow_String name = dir.File("job.zdb");
  { CreateTestDatabase(name, "ABCDE"); }
  std::string const good = zqa_ReadFileBytes(name);
  std::string const quoted = std::string("\"") + name.CStr() + "\"";

  EXPECT_EQ("opened", OpenError(name, ""));
  EXPECT_EQ("opened", OpenError(name, "ABCDX"));
  EXPECT_EQ("***ERROR: Incorrect magic number in file: " + quoted + "  .", OpenError(name, "ABC"));
  EXPECT_EQ("***ERROR: Incorrect magic number in file: " + quoted + "  .", OpenError(name, "XYZW"));
  EXPECT_TRUE(rfm_Database::IsMagic(rfm_File::Open(name, utl_FileAccessRead, false), "ABCD"));
  EXPECT_FALSE(rfm_Database::IsMagic(rfm_File::Open(name, utl_FileAccessRead, false), "ABC"));

  std::string old = good;
  old.replace(0, 8, "ZKRDFM01");
  zqa_WriteFileBytes(name, old);
  EXPECT_EQ("***ERROR: " + quoted +
                "\nis an old format Zorbex database file.\ndatabase files generated with an Zorbex analysis \n"
                "release prior to 6.1-1 cannot be opened with \nthe current release of Zorbex/Viewer. \n"
                "Please rerun the analysis using the current \nZorbex analysis release.",
            OpenError(name, ""));
  EXPECT_FALSE(rfm_Database::IsMagic(rfm_File::Open(name, utl_FileAccessRead, false), ""));

  zqa_WriteFileBytes(name, "just some text, not a database");
  EXPECT_EQ("***ERROR: " + quoted + "  is not an Zorbex database file.", OpenError(name, ""));

  std::string version = good;
  PutStoredInt(version, 8, 10);
  zqa_WriteFileBytes(name, version);
  EXPECT_EQ("***ERROR: Wrong Zorbex database file version, 10;  Expected version 12.", OpenError(name, ""));

  PutStoredInt(version, 8, 11);
  zqa_WriteFileBytes(name, version);
  EXPECT_EQ("opened", OpenError(name, ""));
  EXPECT_EQ(0, rfm_Database::GetCreationTime(rfm_File::Open(name, utl_FileAccessRead, false)));
  zqa_WriteFileBytes(name, good);
  EXPECT_EQ(1700000000, rfm_Database::GetCreationTime(rfm_File::Open(name, utl_FileAccessRead, false)));

  // A damaged file raises a message, never reads out of bounds.
  zqa_WriteFileBytes(name, good.substr(0, 2000));
  EXPECT_EQ(std::string("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  ") + name.CStr(),
            OpenError(name, ""));
  std::string missingPool = good;
  missingPool.replace(1024 + 28 + 16, 8, std::string(8, '\0'));
  zqa_WriteFileBytes(name, missingPool);
  EXPECT_EQ("***ERROR: Database is not valid. This may indicate that the database has been corrupted.",
            OpenError(name, ""));
  std::string wrongPool = good;
  PutStoredInt(wrongPool, 1024 + kGroup, 7);
  zqa_WriteFileBytes(name, wrongPool);
  EXPECT_EQ("***ERROR: String space object is not where it belongs.", OpenError(name, ""));
  std::string wrongMetadata = good;
  PutStoredInt(wrongMetadata, 1024 + kGroup + 4, 7);
  zqa_WriteFileBytes(name, wrongMetadata);
  EXPECT_EQ("***ERROR: Metadata table object is not where it belongs.", OpenError(name, ""));
  std::string loop = good;
  loop.replace(1024 + 16, 8, std::string("\0\0\0\0\0\0\x90\x40", 8));  // slot 0 points back to 1024
  zqa_WriteFileBytes(name, loop);
  EXPECT_EQ(std::string("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  ") + name.CStr(),
            OpenError(name, ""));
}

// Linkages are read whole when a file opens; those that contradict the file
// or each other refuse the file there, before any object is read through them.
TEST(DatabasePlainFileTest, LinkagesThatContradictTheFileOrEachOtherAreRefused) {
  zqa_TestDir dir;
  cow_String name = dir.File("chains.zdb");
  {
    rfm_Database database = CreateTestDatabase(name);
    // In turns, so that space 4 continues in slot 6: 4 -> 6, and 5 alone.
    rfm_Space first = database.Space(-1);
    rfm_Space second = database.Space(-1);
    first.Write("12345678", 8);
    second.Write("abcdefgh", 8);
    first.Write("ABCDEFGH", 8);
    EXPECT_EQ(6, FileRepr(database).Linkage(first.Handle()).m_Next.Value());
  }
  std::string const good = zqa_ReadFileBytes(name);
  std::string const corrupt = std::string("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  ") + name.CStr();
  auto slot = [](int handle) { return std::size_t(1024 + 28 * handle); };
  auto openDamaged = [&](auto damage) {
    std::string bytes = good;
    damage(bytes);
    zqa_WriteFileBytes(name, bytes);
    return OpenError(name, "");
  };

  EXPECT_EQ("opened", openDamaged([](std::string&) {}));
  // The pool claiming more bytes than the file has: no allocation of that size.
  EXPECT_EQ(corrupt, openDamaged([&](std::string& bytes) {
    PutStoredDouble(bytes, slot(1), 1.0e12);
    PutStoredDouble(bytes, slot(1) + 8, 1.0e12);
  }));
  // Space 5 continuing in slot 6, which already continues space 4.
  EXPECT_EQ(corrupt, openDamaged([&](std::string& bytes) { PutStoredInt(bytes, slot(5) + 24, 6); }));
  // Space 5 continuing in the catalogue, or in the reserved space, which
  // head their own chains.
  EXPECT_EQ(corrupt, openDamaged([&](std::string& bytes) { PutStoredInt(bytes, slot(5) + 24, 3); }));
  EXPECT_EQ(corrupt, openDamaged([&](std::string& bytes) { PutStoredInt(bytes, slot(5) + 24, 2); }));
  // Space 5 continuing in itself: a loop that no head reaches.
  EXPECT_EQ(corrupt, openDamaged([&](std::string& bytes) { PutStoredInt(bytes, slot(5) + 24, 5); }));
  // The reserved space, which never grew, continuing in space 5.
  EXPECT_EQ(corrupt, openDamaged([&](std::string& bytes) { PutStoredInt(bytes, slot(2) + 24, 5); }));
  // Space 5's extent moved onto space 4's bytes.
  EXPECT_EQ(corrupt, openDamaged([&](std::string& bytes) {
    bytes.replace(slot(5) + 16, 8, good.substr(slot(4) + 16, 8));
  }));

  // The first extent of space 4 no longer full, while the next holds bytes.
  std::string bytes = good;
  PutStoredDouble(bytes, slot(4) + 8, 4.0);
  zqa_WriteFileBytes(name, bytes);
  {
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
    EXPECT_EQ(corrupt, MessageOf([&] { database.Space(rfm_Handle(4), -1); }));
  }
  zqa_WriteFileBytes(name, good);
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_EQ("12345678ABCDEFGH", ReadSpace(database, rfm_Handle(4)));
  // Slot 6 is the middle of space 4, no object of its own.
  EXPECT_EQ("***ERROR: Database is not valid. This may indicate that the database has been corrupted.",
            MessageOf([&] { database.Space(rfm_Handle(6), -1); }));
}

// Free slots and slot 0's sizes and next are read by no one: whatever they
// hold, a cut write of a killed writer or damage, the file opens and reads.
TEST(DatabasePlainFileTest, WhatNoReaderLooksAtIsAccepted) {
  zqa_TestDir dir;
  cow_String name = dir.File("free.zdb");
  {
    rfm_Database database = CreateTestDatabase(name);
    WriteSpace(database, "kept");
  }
  std::string const good = zqa_ReadFileBytes(name);
  auto slot = [](int handle) { return std::size_t(1024 + 28 * handle); };
  std::string bytes = good;
  // Slot 0: sizes with a length above the allocation, and a next group's handle.
  PutStoredDouble(bytes, slot(0), 8);
  PutStoredDouble(bytes, slot(0) + 8, 1024);
  PutStoredInt(bytes, slot(0) + 24, 512);
  // The first free slot: a length above its allocation. The next: no offsets at all.
  PutStoredDouble(bytes, slot(5) + 8, 1024);
  PutStoredDouble(bytes, slot(6), -1);
  PutStoredDouble(bytes, slot(6) + 8, std::nan(""));
  PutStoredInt(bytes, slot(6) + 24, 3);
  // A slot beyond a free one, with an extent: free all the same.
  PutStoredDouble(bytes, slot(7), 4);
  PutStoredDouble(bytes, slot(7) + 8, 4);
  PutStoredDouble(bytes, slot(7) + 16, 1024 + kGroup);
  zqa_WriteFileBytes(name, bytes);
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  EXPECT_EQ("kept", ReadSpace(database, rfm_Handle(4)));
  EXPECT_EQ(4, database.ObjectHandles().Length()) << "slot 7 holds no object";
}

TEST_P(DatabaseTest, DescriptionCreationTimeAndStatistics) {
  zqa_TestDir dir;
  cow_String name = dir.File("about.zdb");
  rfm_Database database = CreateTestDatabase(name);
  EXPECT_EQ(cow_String("a test database"), database.Description());
  EXPECT_EQ(name, database.FileName());
  EXPECT_FALSE(database.ReadOnly());
  EXPECT_EQ(4, database.RootTableHandle().Value());
  EXPECT_EQ(5, database.RootTableHandle2().Value());
  database.SetCreationTime(-5);
  database.Flush();
  EXPECT_EQ(-5, rfm_Database::GetCreationTime(rfm_File::Open(name, utl_FileAccessRead, false)));

  rfm_Handle three = WriteSpace(database, std::string(12, 'a'));
  rfm_Space space = database.Space(three, -1);
  space.Seek(12);
  database.Space(-1).Write("b", 1);
  space.Write("cc", 2);
  cow_List<cow_String> object = database.GetObjStatistics(three);
  ASSERT_EQ(1, object.Length());
  EXPECT_EQ(cow_String("Linkage_Count=2"), object[0]);
  EXPECT_TRUE(database.GetObjStatistics(rfm_Handle(400)).IsEmpty());

  cow_List<cow_String> statistics = database.GetDBStatistics();
  ASSERT_EQ(6, statistics.Length());
  EXPECT_EQ(cow_String("Block 0 Size (bytes)=1024"), statistics[0]);
  EXPECT_EQ(cow_String("Total Linkage Usage (bytes)=               14336"), statistics[1]);
  EXPECT_EQ(cow_String("Metadata Pool Size (bytes)=                   4"), statistics[2]);
  EXPECT_EQ(cow_String("String Pool Size (bytes)=                   4"), statistics[3]);
  EXPECT_EQ(cow_String("String Pool Linkage_Count=1"), statistics[5]);

  // The space at handle 4 holds 12 bytes at one extent and 2 at another,
  // with the 1 byte of handle 5 between them.
  utl_FileOffset firstExtent = 1024 + kGroup + 8;
  EXPECT_EQ(cow_String("Object: 00000004 - Offset:                    3"),
            database.GetObjectLocationReport(firstExtent + 3));
  EXPECT_EQ(cow_String("Object: 00000004 - Offset:                   13"),
            database.GetObjectLocationReport(firstExtent + 12 + 4 + 1));
  EXPECT_EQ(cow_String("Object: 00000001 - Offset:                    0"),
            database.GetObjectLocationReport(1024 + kGroup));
  EXPECT_EQ(cow_String("Object: 00000005 - Offset:                    0"),
            database.GetObjectLocationReport(firstExtent + 12));
  EXPECT_EQ(cow_String("Object not found."), database.GetObjectLocationReport(firstExtent + 13));
  EXPECT_EQ(cow_String("Object not found."), database.GetObjectLocationReport(20));

  EXPECT_EQ(rfm_TypeSpace, database.HandleType(three));
  rfm_Space stream = database.Space(-1);
  int const streamWords[3] = {static_cast<int>(0xFAAFEBBE), 0, 0};
  stream->WriteIntArray(streamWords, 3);
  EXPECT_EQ(rfm_TypeStream, database.HandleType(stream.Handle()));
  rfm_Space array = database.Space(-1);
  int const arrayWords[3] = {static_cast<int>(0xFFFAEEEB), 0, rfm_TypeDouble};
  array->WriteIntArray(arrayWords, 3);
  EXPECT_EQ(rfm_TypeDouble, database.HandleType(array.Handle()));
  rfm_Space damaged = database.Space(-1);
  int const damagedWords[3] = {static_cast<int>(0xFFFAEEEB), 0, 46854};
  damaged->WriteIntArray(damagedWords, 3);
  EXPECT_EQ(rfm_TypeNone, database.HandleType(damaged.Handle()));
}

// Plain files only, as every reader beside a writer: a compressed file's
// reader sees the file as of its open.
TEST(DatabasePlainFileTest, ReaderProcessSeesAWritersWorkOnlyAfterFlushAndSnap) {
  zqa_TestDir dir;
  cow_String name = dir.File("shared.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  rfm_Handle first = WriteSpace(writer, "one");
  writer.Flush();
  EXPECT_FALSE(writer.Snap());

  zqa_Signal toChild;
  zqa_Signal toParent;
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    int status = 0;
    try {
      rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
      zqa_Require(ReadSpace(reader, first) == "one", "first contents");
      toParent.Send();
      toChild.Wait();  // the writer has written without flushing
      zqa_Require(!reader.Snap(), "snap before any flush");
      zqa_Require(ReadSpace(reader, first) == "one", "unflushed bytes seen");
      zqa_Require(!FileRepr(reader).HandleOk(rfm_Handle(first.Value() + 1)), "unflushed object seen");
      toParent.Send();
      toChild.Wait();  // the writer has flushed
      zqa_Require(reader.Snap(), "snap after a flush");
      zqa_Require(!reader.Snap(), "second snap for one flush");
      zqa_Require(ReadSpace(reader, first) == "onetwo", "flushed bytes");
      zqa_Require(ReadSpace(reader, rfm_Handle(first.Value() + 1)) == "second", "flushed object");
      toParent.Send();
      toChild.Wait();  // two more flushes
      zqa_Require(reader.Snap(), "snap after two flushes");
      zqa_Require(!reader.Snap(), "snap repeated");
    } catch (...) {
      status = 1;
    }
    ::_exit(status);
  }
  toParent.Wait();
  rfm_Space space = writer.Space(first, -1);
  space.Seek(3);
  space.Write("two", 3);
  WriteSpace(writer, "second");
  toChild.Send();
  toParent.Wait();
  writer.Flush();
  toChild.Send();
  toParent.Wait();
  writer.Flush();
  writer.Flush();
  toChild.Send();
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// Plain files only: a reader beside a writer, as above.
TEST(DatabasePlainFileTest, ReadersHoldOffTheirSnapWhileAWritersTransactionRuns) {
  zqa_TestDir dir;
  cow_String name = dir.File("transaction.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  writer.Flush();
  rfm_Database reader = OpenTestDatabase(name, utl_FileAccessRead);
  {
    rfm_ReaderSemaphoreProxy transaction(writer);
    WriteSpace(writer, "inside");
    writer.Flush();
    EXPECT_FALSE(reader.Snap());
    EXPECT_EQ(rfm_FileStatus::kInTransaction, reader.FileStatus());
  }
  EXPECT_TRUE(reader.Snap());
  EXPECT_EQ("inside", ReadSpace(reader, rfm_Handle(4)));
}
