#include "atr_SubstituteFormat.h"
#include "rfm_Database.h"
#include "rfm_Exc.h"
#include "rfm_File.h"
#include "rfm_FileException.h"
#include "rfm_FileRepr.h"
#include "rfm_FileStatus.h"
#include "rfm_TestBytes.h"
#include "utl_File.h"
#include "zqa_TestDir.h"
#include "zqa_TextOf.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using Message = nex_PrimException<atr_String, 1>;
using Assertion = nex_PrimException<cow_String, 3>;

char const kUrl[] = "zbxrdb://farhost:7001//data/job.zdb";

// Sets an environment variable for the lifetime of a scope.
class ScopedEnv {
public:
  ScopedEnv(char const* name, char const* value) : m_Name(name) { ::setenv(name, value, 1); }
  ~ScopedEnv() { ::unsetenv(m_Name); }

private:
  char const* m_Name;
};

}  // namespace

TEST(FileTest, CreateWriteAndReopenInEachMode) {
  zqa_TestDir dir;
  cow_String name = dir.File("job.zdb");
  {
    rfm_File file = rfm_File::Open(name, utl_FileAccessCreate, false);
    EXPECT_FALSE(file.ReadOnly());
    EXPECT_EQ(name, file.FileName());
    file->WriteInt(42);
  }
  {
    rfm_File update = rfm_File::Open(name, utl_FileAccessUpdate, false);
    rfm_File copy = update;
    copy->Seek(4);
    copy->WriteInt(43);
    EXPECT_EQ(8, update->Location());
  }
  rfm_File reader = rfm_File::Open(name, utl_FileAccessRead, false);
  EXPECT_TRUE(reader.ReadOnly());
  EXPECT_EQ(42, reader->ReadInt());
  EXPECT_EQ(43, reader->ReadInt());
  rfm_File keyed = rfm_File::Open(name, cow_String("unused-key"));
  EXPECT_TRUE(keyed.ReadOnly());
  EXPECT_EQ(42, keyed->ReadInt());
}

// What an application writes and reads through the handle alone, as the
// file holds it: little-endian numbers, fixed strings cut or zero-filled.
TEST(FileTest, TheHandleMovesTypedValuesAndArraysAsTheFileStoresThem) {
  zqa_TestDir dir;
  cow_String name = dir.File("typed.bin");
  int const ints[2] = {-2, 0x01020304};
  float const floats[2] = {0.5f, -8.0f};
  double const doubles[2] = {0.125, -1e300};
  {
    rfm_File file = rfm_File::Open(name, utl_FileAccessCreate, false);
    EXPECT_EQ(rfm_FileKindPlain, file.Kind());
    file.WriteInt(7);
    file.WriteFloat(1.5f);
    file.WriteDouble(-2.25);
    file.WriteFixedString("abcdef", 4);
    file.WriteFixedString("x", 3);
    file.WriteIntArray(ints, 2);
    file.WriteFloatArray(floats, 2);
    file.WriteDoubleArray(doubles, 2);
    file.Write("end", 3);
    EXPECT_EQ(58, file.Location());
    file.Flush();
  }
  std::string const bytes = zqa_ReadFileBytes(name);
  ASSERT_EQ(58u, bytes.size());
  EXPECT_EQ(7, StoredInt(bytes, 0));
  EXPECT_EQ(std::string("\x00\x00\xC0\x3F", 4), bytes.substr(4, 4));
  EXPECT_EQ(-2.25, StoredDouble(bytes, 8));
  EXPECT_EQ(std::string("abcdx\0\0", 7), bytes.substr(16, 7));
  EXPECT_EQ(std::string("\xFE\xFF\xFF\xFF\x04\x03\x02\x01", 8), bytes.substr(23, 8));
  EXPECT_EQ(-1e300, StoredDouble(bytes, 47));
  EXPECT_EQ("end", bytes.substr(55));

  rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
  EXPECT_EQ(58, file.Length());
  EXPECT_EQ(7, file.ReadInt());
  EXPECT_EQ(1.5f, file.ReadFloat());
  EXPECT_EQ(-2.25, file.ReadDouble());
  EXPECT_EQ(cow_String("abcd"), file.ReadFixedString(4));
  EXPECT_EQ(std::string("x\0\0", 3), std::string(file.ReadFixedString(3).CStr(), 3));
  int intsBack[2] = {};
  float floatsBack[2] = {};
  double doublesBack[3] = {};
  EXPECT_EQ(2, file.ReadIntArray(intsBack, 2));
  EXPECT_EQ(2, file.ReadFloatArray(floatsBack, 2));
  // Three asked, two whole ones stored before the last three bytes.
  EXPECT_EQ(2, file.ReadDoubleArray(doublesBack, 3));
  EXPECT_EQ(58, file.Location());
  file.Seek(55);
  EXPECT_EQ(std::vector<int>(ints, ints + 2), std::vector<int>(intsBack, intsBack + 2));
  EXPECT_EQ(std::vector<float>(floats, floats + 2), std::vector<float>(floatsBack, floatsBack + 2));
  EXPECT_EQ(std::vector<double>(doubles, doubles + 2), std::vector<double>(doublesBack, doublesBack + 2));
  char end[4] = {};
  EXPECT_EQ(3, file.Read(end, 4));
  EXPECT_EQ("end", std::string(end));
  EXPECT_EQ("***ERROR: Unexpected End Of File.", zqa_TextOf<Message>([&] { file.ReadInt(); }));
}

TEST(FileTest, UrlsCanOnlyBeOpenedForReading) {
  std::string const refused = std::string("*** ERROR: Attempt to write to read-only file:\n  ") + kUrl;
  EXPECT_EQ(refused, zqa_TextOf<rfm_FileReadOnlyExc>([] { rfm_File::Open(kUrl, utl_FileAccessUpdate, false); }));
  EXPECT_EQ(refused, zqa_TextOf<rfm_FileReadOnlyExc>([] { rfm_File::Open(kUrl, utl_FileAccessCreate, false); }));
  EXPECT_EQ(refused, zqa_TextOf<rfm_FileReadOnlyExc>([] { rfm_File::CreateCompressed(kUrl); }));

  // Reading passes the path checks and reaches the remote representation,
  // which needs the connector for a URL with a port.
  ::unsetenv("ZOR_PATH");
  std::string const noConnector =
      std::string("*** ERROR: Can't connect to remote file:\n") + kUrl + ", reason:\nCannot locate dmbwtr executable";
  EXPECT_EQ(noConnector, zqa_TextOf<rfm_FileConnectExc>([] { rfm_File::Open(kUrl, utl_FileAccessRead, false); }));
  EXPECT_EQ(noConnector, zqa_TextOf<rfm_FileConnectExc>([] { rfm_File::Open(kUrl, cow_String("key")); }));
}

TEST(FileTest, MissingFilesAndWrongAccessAreRefused) {
  zqa_TestDir dir;
  cow_String missing = dir.File("missing.zdb");
  std::string const noSuchFile = std::string("*** ERROR: No such file: ") + missing.CStr() + ".";
  EXPECT_EQ(noSuchFile, zqa_TextOf<rfm_FileNoSuchFile>([&] { rfm_File::Open(missing, utl_FileAccessRead, false); }));
  EXPECT_EQ(noSuchFile, zqa_TextOf<rfm_FileNoSuchFile>([&] { rfm_File::Open(missing, utl_FileAccessUpdate, false); }));
  EXPECT_EQ(noSuchFile, zqa_TextOf<rfm_FileNoSuchFile>([&] { rfm_File::Open(missing, cow_String()); }));

  EXPECT_EQ("!\"Incorrect file access.\"", zqa_TextOf<Assertion>([&] {
              rfm_File::Open(missing, static_cast<utl_FileAccess>(3), false);
            }));
}

TEST(FileTest, PermissionsAreCheckedBeforeOpening) {
  zqa_TestDir dir;
  cow_String unreadable = dir.File("unreadable.zdb");
  cow_String readOnly = dir.File("readonly.zdb");
  zqa_WriteFileBytes(unreadable, "data");
  zqa_WriteFileBytes(readOnly, "data");
  ASSERT_EQ(0, ::chmod(unreadable.CStr(), 0000));
  ASSERT_EQ(0, ::chmod(readOnly.CStr(), 0444));

  int status = zqa_RunInChild(
      [&] {
        std::string const notReadable = std::string("*** ERROR: No permission to read: ") + unreadable.CStr() + ".";
        try {
          rfm_File::Open(unreadable, utl_FileAccessRead, false);
          zqa_Require(false, "opened an unreadable file");
        } catch (rfm_FileNotReadable const& e) {
          zqa_Require(notReadable == e.what(), "wrong text for an unreadable file");
        }
        try {
          rfm_File::Open(readOnly, utl_FileAccessUpdate, false);
          zqa_Require(false, "opened a read-only file for update");
        } catch (rfm_FileReadOnlyExc const& e) {
          std::string const text = std::string("*** ERROR: Attempt to write to read-only file:\n  ") + readOnly.CStr();
          zqa_Require(text == e.what(), "wrong text for a read-only file");
        }
        rfm_File reader = rfm_File::Open(readOnly, utl_FileAccessRead, false);
        zqa_Require(reader.ReadOnly(), "reader not read-only");
      },
      true);
  EXPECT_EQ(0, status);
}

// A name that stands for no regular file is refused by every way of
// opening it, at once: a FIFO without a writer would block the open for
// good. A reader whose file is replaced by one finds it unreadable. All of
// it runs in a child that an alarm ends, so that a blocking open fails the
// test rather than hanging it.
TEST(FileTest, WhatIsNoRegularFileIsRefusedWithoutBlocking) {
  zqa_TestDir dir;
  cow_String const fifo = dir.File("fifo.zdb");
  ASSERT_EQ(0, ::mkfifo(fifo.CStr(), 0600));
  cow_String const directory = dir.File("directory.zdb");
  ASSERT_EQ(0, ::mkdir(directory.CStr(), 0700));
  cow_String const watched = dir.File("watched.zdb");
  cow_String const nextFifo = dir.File("next-fifo");
  ASSERT_EQ(0, ::mkfifo(nextFifo.CStr(), 0600));
  int const status = zqa_RunInChild([&] {
    ::alarm(30);
    for (cow_String const& name : {fifo, directory, cow_String("/dev/null")}) {
      std::string const refused = atr_SubstituteFormat(utl_File::kNotRegularFileText, name).CStr();
      for (int access : {utl_FileAccessRead, utl_FileAccessUpdate, utl_FileAccessCreate}) {
        try {
          rfm_File::Open(name, static_cast<utl_FileAccess>(access), false);
          zqa_Require(false, "opened what is no regular file");
        } catch (Message const& e) {
          zqa_Require(refused == e.what(), e.what());
        }
      }
      try {
        rfm_File::CreateCompressed(name);
        zqa_Require(false, "created a compressed file on what is no regular file");
      } catch (Message const& e) {
        zqa_Require(refused == e.what(), e.what());
      }
    }
    rfm_Database::Create(rfm_File::Open(watched, utl_FileAccessCreate, false), "APP", "watched", 1);
    rfm_Database reader = rfm_Database::Open(rfm_File::Open(watched, utl_FileAccessRead, false), "");
    zqa_Require(reader.FileStatus() == rfm_FileStatus::kUnchanged, "a new reader sees a change");
    zqa_Require(::rename(nextFifo.CStr(), watched.CStr()) == 0, "rename");
    zqa_Require(reader.FileStatus() == rfm_FileStatus::kUnreadable, "a FIFO in the file's place is not unreadable");
  });
  EXPECT_EQ(0, status);
}

TEST(FileTest, CompressedFilesAreRecognisedByTheFirstSixBytesOfTheirMagic) {
  zqa_TestDir dir;
  cow_String name = dir.File("packed.mdb");
  {
    rfm_File created = rfm_File::CreateCompressed(name);
    created->Write("payload", 7);
  }
  EXPECT_EQ("ZBXTSA00", zqa_ReadFileBytes(name).substr(0, 8));
  for (utl_FileAccess access : {utl_FileAccessRead, utl_FileAccessUpdate}) {
    rfm_File opened = rfm_File::Open(name, access, false);
    char back[7] = {};
    EXPECT_EQ(7, opened->Read(back, 7));
    EXPECT_EQ("payload", std::string(back, 7));
    EXPECT_EQ(access == utl_FileAccessRead, opened.ReadOnly());
  }

  // Other version digits pass the six-byte test and are refused by the
  // container's header check as damage, naming the file; so are another
  // header version, a file cut inside its header sector and a stream table
  // that claims more entries than its chain holds.
  std::string const corrupt = std::string("***ERROR: ZAE database is corrupt.\n  ") + name.CStr();
  std::string const bytes = zqa_ReadFileBytes(name);
  zqa_WriteFileBytes(name, bytes.substr(0, 6) + "99" + bytes.substr(8));
  EXPECT_EQ(corrupt, zqa_TextOf<Message>([&] { rfm_File::Open(name, utl_FileAccessRead, false); }));
  std::string damaged = bytes;
  damaged[8] = 2;
  zqa_WriteFileBytes(name, damaged);
  EXPECT_EQ(corrupt, zqa_TextOf<Message>([&] { rfm_File::Open(name, utl_FileAccessUpdate, false); }));
  zqa_WriteFileBytes(name, bytes.substr(0, 20));
  EXPECT_EQ(corrupt, zqa_TextOf<Message>([&] { rfm_File::Open(name, utl_FileAccessRead, false); }));
  // 1013 entries fill sector 0; one more needs a next sector, which a
  // file of two sectors can hold but sector 0 does not link to.
  damaged = bytes;
  damaged[16] = static_cast<char>(1014 & 0xff);
  damaged[17] = static_cast<char>(1014 >> 8);
  zqa_WriteFileBytes(name, damaged);
  EXPECT_EQ(corrupt, zqa_TextOf<Message>([&] { rfm_File::Open(name, utl_FileAccessRead, false); }));

  // Five bytes of the magic are not enough.
  cow_String almost = dir.File("almost.mdb");
  zqa_WriteFileBytes(almost, "ZBXTS");
  EXPECT_EQ(5, rfm_File::Open(almost, utl_FileAccessRead, false)->Length());
}

TEST(FileTest, InformationalLinesOnlyUnderTheLogSwitch) {
  zqa_TestDir dir;
  cow_String name = dir.File("log.zdb");
  testing::internal::CaptureStderr();
  rfm_File::Open(name, utl_FileAccessCreate, false);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());

  ScopedEnv logify("ZBX_RFM_LOGIFY", "");
  testing::internal::CaptureStderr();
  rfm_File::Open(name, utl_FileAccessCreate, false);
  rfm_File::Open(name, utl_FileAccessUpdate, false);
  rfm_File::Open(name, utl_FileAccessRead, false);
  cow_String packed = dir.File("log.mdb");
  rfm_File::CreateCompressed(packed);
  rfm_File::Open(packed, utl_FileAccessUpdate, false);
  rfm_File::Open(packed, utl_FileAccessRead, false);
  EXPECT_EQ(
      "*** Informational: Creating File based ZDB.\n"
      "*** Informational: Updating File based ZDB.\n"
      "*** Informational: Opening File based ZDB.\n"
      "*** Informational: Creating Compressed File based MDB.\n"
      "*** Informational: Updating Compressed File based MDB.\n"
      "*** Informational: Opening Compressed File based MDB.\n",
      testing::internal::GetCapturedStderr());
}

TEST(FileTest, CopyAppendsTheRestOfTheSourceAtTheCurrentLocation) {
  zqa_TestDir dir;
  std::string content;
  for (int i = 0; i < 10000; ++i) content.push_back(static_cast<char>('a' + i % 26));
  cow_String sourceName = dir.File("source.bin");
  zqa_WriteFileBytes(sourceName, content);

  rfm_File source = rfm_File::Open(sourceName, utl_FileAccessRead, false);
  source->Seek(100);
  rfm_File target = rfm_File::Open(dir.File("target.bin"), utl_FileAccessCreate, false);
  target->Write("HEAD", 4);
  target.Copy(source);
  EXPECT_EQ(10000, source->Location());
  EXPECT_EQ(4 + 9900, target->Location());
  EXPECT_EQ("HEAD" + content.substr(100), zqa_ReadFileBytes(dir.File("target.bin")));
}

TEST(FileTest, ExceptionsPropagateWithTheirOwnType) {
  try {
    try {
      rfm_FileNoSuchFile("a.zdb").Throw("here", 1);
    } catch (rfm_FileException const& e) {
      e.Propagate();
    }
    FAIL();
  } catch (rfm_FileNoSuchFile const& e) {
    EXPECT_STREQ("*** ERROR: No such file: a.zdb.", e.what());
  }
  EXPECT_STREQ("*** ERROR: Lost connection to remote file:\nu, reason:\nr", rfm_FileFailExc("u", "r").what());
  EXPECT_STREQ("*** ERROR: Insufficient space in for network ZDB local cache.", rfm_FileCacheExc().what());

  EXPECT_EQ("The output database was opened as read-only. Modification of data is not permitted.",
            zqa_TextOf<Message>([] { rfm_IssueWritingToReadOnlyException(); }));
  errno = ENOENT;
  EXPECT_EQ(atr_String("job.zdb: No such file or directory"), rfm_ExcSystemText("job.zdb"));
}
