#include "rfm_Block0.h"
#include "rfm_DatabaseWalk.h"
#include "rfm_FileCache.h"
#include "rfm_FileException.h"
#include "rfm_FileReprRemote.h"
#include "rfm_FtpRecord.h"
#include "rfm_RemotePages.h"
#include "rfm_SampleDatabase.h"
#include "rfm_Table.h"
#include "rfm_TestAssertion.h"
#include "rfm_TestDatabase.h"
#include "uti_Redirection.h"
#include "uti_SpawnSourceWithSink.h"
#include "utl_BinIStream.h"
#include "utl_BinOStream.h"
#include "utl_CommandLine.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <dirent.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// Pages of 4 KiB, so that small databases span many of them.
constexpr int kPageSize = 4096;

cow_String UrlOf(cow_String const& path) { return cow_String("zbxrdb://localhost/") + path; }

rfm_FileReprRemote& RemoteOf(rfm_File const& file) { return dynamic_cast<rfm_FileReprRemote&>(*file.Repr()); }

// The children of this process, with whether each has ended uncollected.
struct Child {
  int pid;
  bool zombie;
};

std::vector<Child> Children() {
  std::vector<Child> children;
  DIR* processes = ::opendir("/proc");
  if (processes == nullptr) return children;
  while (dirent* entry = ::readdir(processes)) {
    if (entry->d_name[0] < '1' || entry->d_name[0] > '9') continue;
    std::ifstream stat(std::string("/proc/") + entry->d_name + "/stat");
    std::string line;
    if (!std::getline(stat, line)) continue;
    // pid (name) state ppid ...: the name may hold blanks, so read after ')'.
    std::size_t close = line.rfind(')');
    char state = 0;
    int parent = 0;
    if (close == std::string::npos || std::sscanf(line.c_str() + close + 1, " %c %d", &state, &parent) != 2) continue;
    if (parent == ::getpid()) children.push_back({std::atoi(entry->d_name), state == 'Z'});
  }
  ::closedir(processes);
  return children;
}

int ZombieCount() {
  int zombies = 0;
  for (Child const& child : Children()) zombies += child.zombie ? 1 : 0;
  return zombies;
}

// Every test finds the assistant built beside it first on PATH, and pages
// of kPageSize.
class RemoteFileTest : public testing::Test {
protected:
  void SetUp() override {
    m_Path = std::getenv("PATH") ? std::getenv("PATH") : "";
    Prepend(ZQA_ASSISTANT_DIRECTORY);
    utl_CommandLine::Instance().Set("nzdb_page_size", std::to_string(kPageSize / 1024).c_str());
    ASSERT_EQ(kPageSize, rfm_FileCache::Instance().PageSize());
  }
  void TearDown() override { ::setenv("PATH", m_Path.c_str(), 1); }

  void Prepend(std::string const& directory) {
    std::string path = directory + ":" + std::getenv("PATH");
    ::setenv("PATH", path.c_str(), 1);
  }

  // A stand-in for the assistant: a shell script that does what body says.
  void FakeAssistant(zqa_TestDir const& dir, std::string const& body) {
    cow_String script = dir.File("rfmT_FileAssistant.exe");
    zqa_WriteFileBytes(script, "#!/bin/sh\n" + body + "\n");
    ASSERT_EQ(0, ::chmod(script.CStr(), 0755));
    Prepend(dir.File("").CStr());
  }

  std::string m_Path;
};

std::string Bytes(rfm_File const& file, long long at, int count) {
  std::string bytes(static_cast<std::size_t>(count), '\0');
  file->Seek(at);
  bytes.resize(static_cast<std::size_t>(file->Read(bytes.data(), count)));
  return bytes;
}

}  // namespace

TEST_F(RemoteFileTest, ReadsThroughTheAssistantGiveWhatALocalOpenGives) {
  zqa_TestDir dir;
  cow_String name = dir.File("job.zdb");
  rfm_SampleDatabase::Write(rfm_File::Open(name, utl_FileAccessCreate, false));
  std::string const local = rfm_DatabaseWalk::Walk(name);
  EXPECT_EQ(local, rfm_DatabaseWalk::Walk(UrlOf(name)));

  // A file cut short, with its transfer record cleared so that only the
  // objects can tell, is refused through the URL as it is locally.
  std::string const bytes = zqa_ReadFileBytes(name);
  std::string shorter = bytes.substr(0, bytes.size() - kPageSize);
  shorter.replace(kRfmFtpRecordOffset, kRfmFtpRecordSize, kRfmFtpRecordSize, '\0');
  cow_String cut = dir.File("cut.zdb");
  zqa_WriteFileBytes(cut, shorter);
  std::string const refused = MessageOf([&] { OpenTestDatabase(cut, utl_FileAccessRead); });
  EXPECT_NE(std::string::npos, refused.find("is corrupt")) << refused;
  EXPECT_EQ(std::string::npos, refused.find("FTP")) << refused;
  std::string const corrupt = refused.substr(0, refused.find(cut.CStr())) + UrlOf(cut).CStr();
  EXPECT_EQ(corrupt, MessageOf([&] { OpenTestDatabase(UrlOf(cut), utl_FileAccessRead); }));

  rfm_File remote = rfm_File::Open(UrlOf(name), utl_FileAccessRead, false);
  EXPECT_EQ(1, RemoteOf(remote).Version());
  EXPECT_EQ(static_cast<long long>(bytes.size()), remote->Length());
  EXPECT_EQ(bytes, Bytes(remote, 0, static_cast<int>(bytes.size())));
  // Across page boundaries, from pages already held and pages not yet.
  EXPECT_EQ(bytes.substr(kPageSize - 3, 10), Bytes(remote, kPageSize - 3, 10));
  EXPECT_EQ(bytes.substr(bytes.size() - 5), Bytes(remote, static_cast<long long>(bytes.size()) - 5, 100));
  long long const fetched = RemoteOf(remote).PagesFetched();
  EXPECT_EQ(bytes.substr(100, 3 * kPageSize), Bytes(remote, 100, 3 * kPageSize));
  EXPECT_EQ(fetched, RemoteOf(remote).PagesFetched());
  // Past the end there is nothing, and no failure.
  EXPECT_EQ("", Bytes(remote, static_cast<long long>(bytes.size()) + 5 * kPageSize, 10));
  EXPECT_EQ("", remote->CheckNZDBCache());

  std::string const readOnly = std::string("*** ERROR: Attempt to write to read-only file:\n  ") + UrlOf(name).CStr();
  EXPECT_TRUE(remote->ReadOnly());
  EXPECT_EQ(readOnly, MessageOf([&] { remote->Write("x", 1); }));
  EXPECT_EQ(readOnly, MessageOf([&] { remote->FileExtend(1); }));
  EXPECT_EQ(readOnly, MessageOf([&] { remote->Trim(); }));
  EXPECT_EQ(readOnly, MessageOf([&] { remote->FTPCheckSet(500); }));
  EXPECT_EQ("rfm_FileReprRemote::Read: Invalid length when reading file.",
            MessageOf([&] { remote->Read(nullptr, -1); }));
}

// Without a down-cast: each representation tells what holds its bytes. A
// URL is a remote file whatever lies behind it.
TEST_F(RemoteFileTest, EveryFileTellsItsKind) {
  zqa_TestDir dir;
  cow_String plain = dir.File("plain.zdb");
  cow_String compressed = dir.File("compressed.zdb");
  CreateTestDatabase(plain);
  CreateTestDatabase(compressed, "APP", false, rfm_TestFileKind::Compressed);

  EXPECT_EQ(rfm_FileKindPlain, rfm_File::Open(dir.File("new.zdb"), utl_FileAccessCreate, false).Kind());
  EXPECT_EQ(rfm_FileKindCompressed, rfm_File::CreateCompressed(dir.File("new.mdb")).Kind());
  for (utl_FileAccess access : {utl_FileAccessRead, utl_FileAccessUpdate}) {
    EXPECT_EQ(rfm_FileKindPlain, rfm_File::Open(plain, access, false).Kind());
    EXPECT_EQ(rfm_FileKindCompressed, rfm_File::Open(compressed, access, false).Kind());
  }
  EXPECT_EQ(rfm_FileKindRemote, rfm_File::Open(UrlOf(plain), utl_FileAccessRead, false).Kind());
  EXPECT_EQ(rfm_FileKindRemote, rfm_File::Open(UrlOf(compressed), utl_FileAccessRead, false).Kind());
  EXPECT_EQ(rfm_FileKindRemote, rfm_File::Open(UrlOf(plain), cow_String("key")).Kind());
  EXPECT_EQ(rfm_FileKindPlain, rfm_File::Open(plain, cow_String("key")).Kind());
}

TEST_F(RemoteFileTest, AFileOfWholePagesReadsToItsEndAndOneEmptyPageMore) {
  zqa_TestDir dir;
  cow_String name = dir.File("pages.bin");
  std::string bytes(3 * kPageSize, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31 / 7);
  zqa_WriteFileBytes(name, bytes);
  rfm_File remote = rfm_File::Open(UrlOf(name), utl_FileAccessRead, false);
  EXPECT_EQ(bytes, Bytes(remote, 0, 3 * kPageSize));
  EXPECT_EQ(3 * kPageSize, remote->Location());
  EXPECT_EQ(3, RemoteOf(remote).PagesFetched());
  char more[8];
  EXPECT_EQ(0, remote->Read(more, sizeof more));
  EXPECT_EQ(3 * kPageSize, remote->Location());
  EXPECT_EQ(4, RemoteOf(remote).PagesFetched());
}

TEST_F(RemoteFileTest, AReaderFollowsALocalWriterAndFetchesAgainOnlyWhatChanged) {
  zqa_TestDir dir;
  cow_String name = dir.File("growing.zdb");
  rfm_Database writer = CreateTestDatabase(name);
  rfm_TableMetadata layout("Steps", 1);
  layout.DefineIntField("step");
  layout.DefineDoubleField("value");
  rfm_Table table = writer.Table(layout, -1, -1);
  auto append = [&](int from, int to) {
    for (int step = from; step < to; ++step) {
      rfm_Row row = table.NewRow();
      row.WriteFieldInt(rfm_FieldHandle(0), step);
      row.WriteFieldDouble(rfm_FieldHandle(1), step * 0.5);
    }
    table.Flush();
    writer.Flush();
  };
  append(0, 4000);

  rfm_File file = rfm_File::Open(UrlOf(name), utl_FileAccessRead, false);
  rfm_Database reader = rfm_Database::Open(file, "");
  rfm_Table seen = reader.Table(table.Handle(), -1, -1);
  auto check = [&](int rows) {
    ASSERT_EQ(rows, seen.Length());
    for (int at = 0; at < rows; ++at) {
      rfm_Row row = seen.ReadRow(at);
      ASSERT_EQ(at, row.ReadFieldInt(rfm_FieldHandle(0)));
      ASSERT_EQ(at * 0.5, row.ReadFieldDouble(rfm_FieldHandle(1)));
    }
  };
  check(4000);
  rfm_FileReprRemote& remote = RemoteOf(file);
  long long const wholeFile = remote.PagesFetched();
  ASSERT_GT(wholeFile, 10);
  EXPECT_EQ(rfm_FileStatus::kUnchanged, reader.FileStatus());

  writer.ReaderSemaphoreSet();
  EXPECT_EQ(rfm_FileStatus::kInTransaction, reader.FileStatus());
  append(4000, 4100);
  writer.ReaderSemaphoreClear();
  // The assistant tells of the flush in the answer to the first request,
  // here a page the file did not have before; the status still says it.
  char byte;
  file->Seek(zqa_ReadFileBytes(name).size() - 1);
  ASSERT_EQ(1, file->Read(&byte, 1));
  EXPECT_EQ(rfm_FileStatus::kFlushed, reader.FileStatus());
  EXPECT_EQ(rfm_FileStatus::kUnchanged, reader.FileStatus());
  EXPECT_TRUE(reader.Snap());
  seen.Snap();
  check(4100);
  // Block 0, the groups, the table's header and its last pages came again;
  // the rows that did not move did not.
  long long const again = remote.PagesFetched() - wholeFile;
  EXPECT_GT(again, 0);
  EXPECT_LT(again, wholeFile / 2);
}

TEST_F(RemoteFileTest, AnAssistantThatFailsToOpenIsQuotedAndCollected) {
  zqa_TestDir dir;
  cow_String missing = dir.File("missing.zdb");
  std::string const connect = std::string("*** ERROR: Can't connect to remote file:\n") + UrlOf(missing).CStr() +
                              ", reason:\n";
  std::string message = MessageOf([&] { rfm_File::Open(UrlOf(missing), utl_FileAccessRead, false); });
  EXPECT_EQ(0u, message.find(connect + "assistant, ")) << message;
  EXPECT_NE(std::string::npos, message.find(missing.CStr(), connect.size())) << message;
  EXPECT_EQ(0, ZombieCount());

  EXPECT_EQ("ZQABasUtlUrlParser::GetHost(url) == \"localhost\"",
            AssertionOf([&] { rfm_File::Open("zbxrdb://elsewhere//x.zdb", utl_FileAccessRead, false); }));

  zqa_TestDir fakes;
  FakeAssistant(fakes,
                "echo 'assistant, the first' >&2\n"
                "echo 'Zorbex Error: the disk is on fire' >&2\n"
                "echo 'not a reason' >&2\n"
                "exit 3");
  cow_String url = UrlOf(dir.File("any.zdb"));
  EXPECT_EQ(std::string("*** ERROR: Can't connect to remote file:\n") + url.CStr() +
                ", reason:\nZorbex Error: the disk is on fire",
            MessageOf([&] { rfm_File::Open(url, utl_FileAccessRead, false); }));

  zqa_TestDir silent;
  FakeAssistant(silent, "exit 1");
  EXPECT_EQ(std::string("*** ERROR: Can't connect to remote file:\n") + url.CStr() + ", reason:\nCan't be determined",
            MessageOf([&] { rfm_File::Open(url, utl_FileAccessRead, false); }));

  // A server that speaks no version this library speaks: it answers 0.
  zqa_TestDir old;
  FakeAssistant(old, "printf '\\000\\000'; cat >/dev/null");
  EXPECT_EQ(std::string("*** ERROR: Can't connect to remote file:\n") + url.CStr() +
                ", reason:\nthe file assistant speaks version 0 of the page protocol, this library version 1",
            MessageOf([&] { rfm_File::Open(url, utl_FileAccessRead, false); }));
  EXPECT_EQ(0, ZombieCount());
}

TEST_F(RemoteFileTest, AnAssistantThatDiesLaterLosesTheConnectionAndIsCollected) {
  zqa_TestDir dir;
  cow_String name = dir.File("job.zdb");
  rfm_SampleDatabase::Write(rfm_File::Open(name, utl_FileAccessCreate, false));
  {
    rfm_File remote = rfm_File::Open(UrlOf(name), utl_FileAccessRead, false);
    char byte;
    ASSERT_EQ(1, remote->Read(&byte, 1));
    std::vector<Child> children = Children();
    ASSERT_EQ(1u, children.size());
    ASSERT_EQ(0, ::kill(children[0].pid, SIGKILL));

    std::string const lost = std::string("*** ERROR: Lost connection to remote file:\n") + UrlOf(name).CStr() +
                             ", reason:\nCan't be determined";
    // A page already held still reads; the next one needs the assistant.
    EXPECT_EQ(1, remote->Read(&byte, 1));
    std::string page(kPageSize, '\0');
    EXPECT_EQ(lost, MessageOf([&] { remote->Read(page.data(), kPageSize); }));
    EXPECT_EQ(0, ZombieCount());
    EXPECT_EQ(lost, MessageOf([&] { remote->FileStatus(); }));
  }
  EXPECT_TRUE(Children().empty());

  // Closed in good order, the assistant ends and is collected.
  { rfm_File::Open(UrlOf(name), utl_FileAccessRead, false); }
  EXPECT_TRUE(Children().empty());
}

TEST_F(RemoteFileTest, ACacheWithNoRoomWarnsAtOpenAndRunsOutAtTheFirstRead) {
  zqa_TestDir dir;
  cow_String name = dir.File("big.bin");
  zqa_WriteFileBytes(name, std::string(2 * kPageSize, 'x'));
  // The cache is made once a process: a child makes its own, with no room.
  EXPECT_EQ(0, zqa_RunInChild([&] {
              rfm_FileCache::Finalize();
              utl_CommandLine::Instance().Set("nzdb_cache_limit", "0");
              rfm_File remote = rfm_File::Open(UrlOf(name), utl_FileAccessRead, false);
              std::string const warning = remote->CheckNZDBCache().CStr();
              char byte;
              std::string const exhausted = MessageOf([&] { remote->Read(&byte, 1); });
              if (warning.find("over five times the size of the Network ZDB cache file") == std::string::npos ||
                  exhausted != "Cache Space Exausted.") {
                throw std::runtime_error(warning + " / " + exhausted);
              }
            }));
}

// Two files read in turns through a cache smaller than either: blocks move
// from one file to the other, and every byte read, whether it came from the
// assistant just now or from the cache file, is the file's own.
TEST_F(RemoteFileTest, ReadsThroughACacheThatPassesPagesBetweenFilesGiveEachFileItsBytes) {
  zqa_TestDir dir;
  // Each page is told apart by its bytes, so that a page read from the
  // wrong place in the cache file shows.
  auto pattern = [](int pages, int seed) {
    std::string bytes(static_cast<std::size_t>(pages) * kPageSize, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / kPageSize * 13 + seed);
    return bytes;
  };
  // One MiB of cache, the least nzdb_cache_limit gives: 256 pages of 4 KiB.
  int const cachePages = 256;
  std::string const first = pattern(cachePages + 40, 1);
  std::string const second = pattern(cachePages / 2, 5);
  cow_String firstName = dir.File("first.bin");
  cow_String secondName = dir.File("second.bin");
  zqa_WriteFileBytes(firstName, first);
  zqa_WriteFileBytes(secondName, second);
  EXPECT_EQ(0, zqa_RunInChild([&] {
              rfm_FileCache::Finalize();
              utl_CommandLine::Instance().Set("nzdb_cache_limit", "1");
              rfm_File one = rfm_File::Open(UrlOf(firstName), utl_FileAccessRead, false);
              rfm_File two = rfm_File::Open(UrlOf(secondName), utl_FileAccessRead, false);
              auto expect = [](rfm_File const& file, std::string const& bytes, long long at, int count) {
                std::string const got = Bytes(file, at, count);
                if (got != bytes.substr(static_cast<std::size_t>(at), static_cast<std::size_t>(count))) {
                  throw std::runtime_error("wrong bytes at " + std::to_string(at));
                }
              };
              // The second file's pages, then a read half from the cache and
              // half from the assistant.
              expect(two, second, 100, 10 * kPageSize);
              expect(two, second, 5 * kPageSize + 7, 20 * kPageSize);
              long long const held = RemoteOf(two).PagesFetched();
              expect(two, second, 3, 12 * kPageSize);
              if (RemoteOf(two).PagesFetched() != held) throw std::runtime_error("held pages fetched again");
              // The first file takes the whole cache, the second's idle pages
              // among it; both read right afterwards, in pieces across pages.
              expect(one, first, 0, static_cast<int>(first.size()));
              for (long long at = 11; at < static_cast<long long>(second.size()); at += 3 * kPageSize + 501) {
                expect(two, second, at, kPageSize + 900);
                expect(one, first, at * 2, 2 * kPageSize);
              }
              if (rfm_FileCache::Instance().PageCount() != cachePages) throw std::runtime_error("cache grew past its limit");
            }));
}

// A reader may ask for a page before it has read the whole answer to the
// one before. The assistant lends pages to its output pipe; the second
// page must not land in memory the pipe still holds for the first.
TEST_F(RemoteFileTest, TheAssistantAnswersRequestsSentAheadWithEachPagesOwnBytes) {
  zqa_TestDir dir;
  cow_String name = dir.File("pages.bin");
  std::string const bytes = std::string(kPageSize, 'a') + std::string(kPageSize, 'b') + std::string(100, 'c');
  zqa_WriteFileBytes(name, bytes);
  cow_List<cow_String> arguments;
  arguments.Append(name);
  uti_SpawnSourceWithSink assistant(rfm_RemotePages::kAssistantProgram, arguments,
                                    uti_Redirection(uti_Redirection::kStandardError, dir.File("stderr.txt")),
                                    cow_Map<cow_String, cow_String>());
  utl_BinOStream out(assistant.SinkDescriptor(), rfm_RemotePages::kEndType);
  utl_BinIStream in(assistant.SourceDescriptor(), rfm_RemotePages::kEndType);
  out.WriteUchar(0);
  out.Flush();
  ASSERT_EQ(rfm_RemotePages::kProtocolVersion, in.ReadShort());
  out.WriteShort(rfm_RemotePages::kProtocolVersion);
  out.WriteInt(kPageSize);
  auto request = [&](long long start) {
    out.WriteSchar(rfm_RemotePages::kCommandReadPage);
    out.WriteShort(0);
    out.WriteInt64(start);
    out.WriteInt(kPageSize);
  };
  auto answer = [&] {
    EXPECT_EQ(rfm_RemotePages::kCommandReadPage, in.ReadSchar());
    EXPECT_EQ(rfm_FileStatus::kUnchanged, in.ReadSchar());
    std::string page(static_cast<std::size_t>(in.ReadInt()), '\0');
    in.Read(page.data(), static_cast<int>(page.size()));
    return page;
  };
  request(0);
  request(kPageSize);
  out.Flush();
  // The assistant has served both before the first answer is read; it
  // needs nothing from this side to get there.
  while (true) {
    int unread = 0;
    ASSERT_EQ(0, ::ioctl(assistant.SourceDescriptor(), FIONREAD, &unread));
    if (unread >= 2 * kPageSize) break;
    ::usleep(1000);
  }
  EXPECT_EQ(bytes.substr(0, kPageSize), answer());
  EXPECT_EQ(bytes.substr(kPageSize, kPageSize), answer());
  request(2 * kPageSize);
  request(0);
  out.Flush();
  EXPECT_EQ(bytes.substr(2 * kPageSize), answer());
  EXPECT_EQ(bytes.substr(0, kPageSize), answer());
  assistant.CloseSink();
  EXPECT_EQ(0, assistant.Reap(10));
}
