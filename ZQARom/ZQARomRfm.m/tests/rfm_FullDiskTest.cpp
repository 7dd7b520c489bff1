// Full disks: a writer fills the space it has with a database of tables,
// arrays (one of strings, one of incompressible doubles) and a tagged
// stream, flushing as it goes, until a write fails. Where the test may
// mount, the space is a tmpfs of 2 MiB in a mount namespace of a child's
// own, with 1.5 MiB taken by another file; everywhere, it is also a file
// size limit (RLIMIT_FSIZE, with SIGXFSZ ignored so that the write fails
// with EFBIG). Each writer runs in a child process, so that a crash is seen.
//
// What holds, for plain and compressed files alike: the failure reaches the
// writer as the library's error naming the file and the system's reason,
// nothing crashes, and nothing more is said on standard error. A plain file
// reopens at a completed flush, every row as written. A compressed file
// promises no more than its last successful flush of the whole container,
// and segments are rewritten in place as they leave the cache: after the
// failure it opens at a completed flush with every row as written, or is
// refused with one of the library's messages naming it; nothing else.

#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestDatabase.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRowsPerStep = 40;
constexpr int kStepsPerFlush = 25;
// Far more than the space allows: the loop ends at the first failure.
constexpr int kMostSteps = 100000;
constexpr int kFileSystemBytes = 2 << 20;
constexpr int kFillerBytes = 3 << 19;
constexpr rlim_t kFileSizeLimit = 1 << 20;

// Incompressible but reproducible values of row i.
double Noise(int i) {
  std::uint64_t x = static_cast<std::uint64_t>(i) * 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return static_cast<double>(x >> 11) / 9007199254740992.0;
}
cow_String Label(int i) { return cow_String(("label " + std::to_string(i % 97 == 0 ? i : i % 97)).c_str()); }

rfm_TableMetadata NodesTable() {
  rfm_TableMetadata table("Nodes", 1);
  table.DefineIntField("id");
  table.DefineDoubleField("x");
  table.DefineStringField("label");
  return table;
}

// The writer's objects, new or as a reader finds them by their handles.
struct Objects {
  explicit Objects(rfm_Database const& database)
      : m_Nodes(database.Table(NodesTable(), -1, -1)),
        m_Noise(database.ArrayDouble(2, -1, 0)),
        m_Names(database.ArrayString(1, -1, 0)),
        m_Stream(database.TaggedStream(0)) {}
  Objects(rfm_Database const& database, std::int32_t const* handles)
      : m_Nodes(database.Table(rfm_Handle(handles[0]), -1, -1)),
        m_Noise(database.ArrayDouble(rfm_Handle(handles[1]), -1, 0)),
        m_Names(database.ArrayString(rfm_Handle(handles[2]), -1, 0)),
        m_Stream(database.TaggedStream(rfm_Handle(handles[3]), 0)) {}

  void Handles(std::int32_t* handles) const {
    handles[0] = m_Nodes.Handle().Value();
    handles[1] = m_Noise.Handle().Value();
    handles[2] = m_Names.Handle().Value();
    handles[3] = m_Stream.Handle().Value();
  }

  void Append(int step) {
    for (int i = step * kRowsPerStep; i < (step + 1) * kRowsPerStep; ++i) {
      rfm_Row row = m_Nodes.NewRow();
      row.WriteFieldInt(rfm_FieldHandle("id", -1), i);
      row.WriteFieldDouble(rfm_FieldHandle("x", -1), Noise(i));
      row.WriteFieldString(rfm_FieldHandle("label", -1), Label(i));
      double const noise[2] = {Noise(i), Noise(-i)};
      m_Noise.Write(noise, 1);
      cow_String const label = Label(i);
      m_Names.Write(&label, 1);
      m_Stream.WriteDouble(i, Noise(i));
    }
  }

  void Flush() {
    m_Nodes.Flush();
    m_Noise.Flush();
    m_Names.Flush();
    m_Stream.Flush();
  }

  rfm_Table m_Nodes;
  rfm_Array<double, rfm_TypeDouble> m_Noise;
  rfm_Array<cow_String, rfm_TypeString> m_Names;
  rfm_TaggedStream m_Stream;
};

// What a writer's child tells its parent: how it ended and what it said.
struct Report {
  std::int32_t m_Failed = 0;     // the write that failed raised the library's error
  std::int32_t m_Completed = -1; // the last step whose flush completed
  std::int32_t m_Step = -1;      // the step that failed
  std::int32_t m_Handles[4] = {};
  std::string m_Message;
};

void Send(int pipe, Report const& report) {
  std::int32_t const head[8] = {report.m_Failed,     report.m_Completed,  report.m_Step,
                                report.m_Handles[0], report.m_Handles[1], report.m_Handles[2],
                                report.m_Handles[3], static_cast<std::int32_t>(report.m_Message.size())};
  if (::write(pipe, head, sizeof head) != static_cast<ssize_t>(sizeof head) ||
      ::write(pipe, report.m_Message.data(), report.m_Message.size()) !=
          static_cast<ssize_t>(report.m_Message.size())) {
    ::_exit(3);
  }
}

bool Receive(int pipe, Report& report) {
  std::int32_t head[8];
  if (::read(pipe, head, sizeof head) != static_cast<ssize_t>(sizeof head)) return false;
  report.m_Failed = head[0];
  report.m_Completed = head[1];
  report.m_Step = head[2];
  std::copy(head + 3, head + 7, report.m_Handles);
  report.m_Message.assign(static_cast<std::size_t>(head[7]), '\0');
  return head[7] == 0 || ::read(pipe, report.m_Message.data(), report.m_Message.size()) == head[7];
}

// Writes until the space runs out; the objects die while the failure
// unwinds, as in a program that lets it pass.
Report WriteUntilFull(cow_String const& name, rfm_TestFileKind kind) {
  Report report;
  int step = 0;
  try {
    rfm_Database database = CreateTestDatabase(name, "APP", false, kind);
    Objects objects(database);
    objects.Handles(report.m_Handles);
    for (; step < kMostSteps; ++step) {
      objects.Append(step);
      if (step % kStepsPerFlush == kStepsPerFlush - 1) {
        objects.Flush();
        database.Flush();
        report.m_Completed = step;
      }
    }
  } catch (rfm_TestMessage const& e) {
    report.m_Failed = 1;
    report.m_Message = e.what();
  } catch (std::exception const& e) {
    report.m_Message = e.what();
  }
  report.m_Step = step;
  return report;
}

// Checks that the file holds every row up to some step from completed to
// failing whole and as written; "" when it does, else what differs.
std::string CheckRows(cow_String const& name, Report const& written) {
  rfm_Database database = OpenTestDatabase(name, utl_FileAccessRead);
  int const fewest = (written.m_Completed + 1) * kRowsPerStep;
  int const most = (written.m_Step + 1) * kRowsPerStep;
  Objects objects(database, written.m_Handles);
  auto within = [&](char const* what, int rows) {
    return rows >= fewest && rows <= most ? std::string()
                                          : std::string(what) + " holds " + std::to_string(rows) + " rows, not " +
                                                std::to_string(fewest) + " to " + std::to_string(most);
  };
  rfm_Table const& nodes = objects.m_Nodes;
  std::string wrong = within("Nodes", nodes.Length());
  for (int i = 0; wrong.empty() && i < nodes.Length(); ++i) {
    rfm_Row row = nodes.ReadRow(i);
    if (row.ReadFieldInt(rfm_FieldHandle("id", -1)) != i || row.ReadFieldDouble(rfm_FieldHandle("x", -1)) != Noise(i) ||
        row.ReadFieldString(rfm_FieldHandle("label", -1)) != Label(i)) {
      wrong = "Nodes row " + std::to_string(i) + " differs";
    }
  }
  int const noiseRows = objects.m_Noise.Length();
  if (wrong.empty()) wrong = within("the array of doubles", noiseRows);
  std::vector<double> noise(2 * static_cast<std::size_t>(noiseRows) + 2);
  objects.m_Noise.Seek(0);
  if (noiseRows > 0) objects.m_Noise.Read(noise.data(), noiseRows);
  for (int i = 0; wrong.empty() && i < noiseRows; ++i) {
    if (noise[2 * i] != Noise(i) || noise[2 * i + 1] != Noise(-i)) wrong = "double row " + std::to_string(i) + " differs";
  }
  int const names = objects.m_Names.Length();
  if (wrong.empty()) wrong = within("the array of strings", names);
  objects.m_Names.Seek(0);
  for (int i = 0; wrong.empty() && i < names; ++i) {
    cow_String label;
    objects.m_Names.Read(&label, 1);
    if (label != Label(i)) wrong = "string row " + std::to_string(i) + " differs";
  }
  int items = 0;
  while (wrong.empty() && objects.m_Stream.Next()) {
    if (objects.m_Stream.GetID() != items || objects.m_Stream.GetDouble() != Noise(items)) {
      wrong = "item " + std::to_string(items) + " differs";
    }
    ++items;
  }
  if (wrong.empty()) wrong = within("the stream", items);
  return wrong;
}

// Runs body in a child whose standard error goes to a pipe; answers the
// child's exit status (128 + signal when one ended it) and what it said.
template <class Body>
int RunChild(Body body, std::string& said) {
  int errors[2];
  if (::pipe(errors) != 0) return -1;
  std::fflush(nullptr);
  pid_t child = ::fork();
  if (child == 0) {
    ::dup2(errors[1], 2);
    ::close(errors[0]);
    ::close(errors[1]);
    ::_exit(body());
  }
  ::close(errors[1]);
  char block[4096];
  for (ssize_t got; (got = ::read(errors[0], block, sizeof block)) > 0;) said.append(block, static_cast<std::size_t>(got));
  ::close(errors[0]);
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// How the test limits the space: answers "" when the limit is in place,
// else why it cannot be (in the child that then writes).
using Limiter = std::string (*)(cow_String const& directory);

std::string MountSmallFileSystem(cow_String const& directory) {
  if (::unshare(CLONE_NEWNS) != 0) return std::string("unshare: ") + std::strerror(errno);
  // The new namespace's mounts must not reach the system's.
  if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    return std::string("private mounts: ") + std::strerror(errno);
  }
  std::string const options = "size=" + std::to_string(kFileSystemBytes);
  if (::mount("tmpfs", directory.CStr(), "tmpfs", 0, options.c_str()) != 0) {
    return std::string("mount: ") + std::strerror(errno);
  }
  zqa_WriteFileBytes(directory + "/filler", std::string(kFillerBytes, 'f'));
  return std::string();
}

std::string LimitFileSize(cow_String const&) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit;
  ::getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = kFileSizeLimit;
  if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return std::string("setrlimit: ") + std::strerror(errno);
  return std::string();
}

// Runs a writer of kind under limiter; answers false when the limit could
// not be set, with why in skipped.
bool RunWriter(Limiter limiter, char const* path, rfm_TestFileKind kind, int reason, std::string& skipped) {
  zqa_TestDir dir;
  cow_String const directory = dir.File("space");
  ::mkdir(directory.CStr(), 0755);
  cow_String const name = directory + (kind == rfm_TestFileKind::Plain ? "/full.zdb" : "/full.mdb");
  int reports[2];
  if (::pipe(reports) != 0) throw std::runtime_error("no pipe");
  std::string said;
  int const status = RunChild(
      [&] {
        ::close(reports[0]);
        std::string const why = limiter(directory);
        if (!why.empty()) {
          Report report;
          report.m_Failed = -1;
          report.m_Message = why;
          Send(reports[1], report);
          return 0;
        }
        Report report = WriteUntilFull(name, kind);
        Send(reports[1], report);
        if (report.m_Failed != 1) return 0;
        // A plain file must read; a compressed one may be refused.
        std::string wrong;
        report.m_Failed = 0;
        try {
          wrong = CheckRows(name, report);
        } catch (rfm_TestMessage const& e) {
          bool const refused = kind == rfm_TestFileKind::Compressed &&
                               std::string(e.what()).find(name.CStr()) != std::string::npos;
          report.m_Failed = refused ? 1 : 0;
          wrong = refused ? std::string() : e.what();
        }
        report.m_Message = wrong;
        Send(reports[1], report);
        return 0;
      },
      said);
  ::close(reports[1]);
  Report written;
  Report reopened;
  bool const got = Receive(reports[0], written);
  bool const checked = got && written.m_Failed == 1 && Receive(reports[0], reopened);
  ::close(reports[0]);
  EXPECT_EQ(0, status) << "the writer's child died";
  EXPECT_TRUE(got) << "the writer's child told nothing";
  if (!got) return true;
  if (written.m_Failed == -1) {
    skipped = written.m_Message;
    return false;
  }
  EXPECT_EQ(1, written.m_Failed) << "the writer ended with " << written.m_Message;
  EXPECT_EQ(name.CStr() + std::string(": ") + std::strerror(reason), written.m_Message);
  EXPECT_EQ("", said) << "standard error";
  EXPECT_GE(written.m_Completed, 0) << "the space ran out before the first flush";
  EXPECT_TRUE(checked);
  EXPECT_EQ("", reopened.m_Message) << "reopened after step " << written.m_Step << " failed";
  std::printf("%s, %s file: the write failed in step %d, after the flush of step %d; reopened, it %s\n", path,
              kind == rfm_TestFileKind::Plain ? "plain" : "compressed", written.m_Step, written.m_Completed,
              reopened.m_Failed == 1 ? "was refused with the library's message" : "held a completed flush");
  return true;
}

}  // namespace

TEST(FullDiskTest, AWriterGetsTheReasonWithTheFileNameAndTheFileKeepsACompletedFlush) {
  std::string const limit = "file size limit of " + std::to_string(kFileSizeLimit) + " bytes";
  std::string const tmpfs = "tmpfs of " + std::to_string(kFileSystemBytes) + " bytes, " +
                            std::to_string(kFileSystemBytes - kFillerBytes) + " free";
  for (rfm_TestFileKind kind : {rfm_TestFileKind::Plain, rfm_TestFileKind::Compressed}) {
    std::string skipped;
    EXPECT_TRUE(RunWriter(LimitFileSize, limit.c_str(), kind, EFBIG, skipped)) << skipped;
    // Without the right to mount, the file size limit runs alone, and says so.
    if (!RunWriter(MountSmallFileSystem, tmpfs.c_str(), kind, ENOSPC, skipped)) {
      std::printf("no tmpfs (%s): only the file size limit ran\n", skipped.c_str());
    }
  }
}
