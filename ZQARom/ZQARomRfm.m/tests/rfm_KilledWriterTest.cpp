#include "atr_SubstituteFormat.h"
#include "rfm_Block0.h"
#include "rfm_DatabaseReprFile.h"
#include "rfm_DyingFile.h"
#include "rfm_FileReprLocal.h"
#include "rfm_GroupLayout.h"
#include "rfm_KillWorkload.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDatabase.h"
#include "zqa_KilledChild.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

// A writer process appends rows to tables and elements to arrays, flushing
// after every step, and dies by SIGKILL. The file must then open with every
// object holding a prefix of what was written, at least all of the last
// completed flush (W1 to W5), or refuse to open with the transfer error,
// which a preallocated file may give only when the writer died between
// growing the file and rewriting its length record (W7).

namespace {

constexpr int kFtpRecordOffset = 500;
constexpr int kFtpRecordSize = 12;
constexpr utl_FileOffset kPreallocationStep = rfm_FileReprLocal::kPreallocationStep;

// What the writer tells the test: the objects' handles once they exist, and
// the start and the end of each step's flush.
struct Message {
  enum Kind : char { kHandles = 'H', kFlushBegins = 'B', kFlushEnds = 'E' };
  Kind kind;
  int step;
  std::array<int, kObjects> handles;
};

// Steps on until the process dies.
void Writer(rfm_File const& file, unsigned seed, int pipe) {
  rfm_KillWorkload workload(file, seed);
  zqa_SendReport(pipe, Message{Message::kHandles, -1, workload.Handles()});
  for (int step = 0;; ++step) {
    workload.Append(step);
    zqa_SendReport(pipe, Message{Message::kFlushBegins, step, {}});
    workload.Flush();
    zqa_SendReport(pipe, Message{Message::kFlushEnds, step, {}});
  }
}

// Where the writer died, from the last message it sent. A death inside the
// first flush is before the first completed one.
enum class Moment { BeforeFirstFlush, InsideFlush, BetweenFlushes };

struct Death {
  Moment moment = Moment::BeforeFirstFlush;
  int lastStep = -1;  // the step of the last message
  bool handlesKnown = false;
  std::array<int, kObjects> handles{};
};

// Runs a writer on the file that open makes in a child process. With a
// delay the test kills it then; without, it must die by itself.
Death WatchWriter(std::function<rfm_File()> const& open, unsigned seed, long const* killAfterMicroseconds) {
  Death death;
  zqa_WatchKilledChild<Message>([&](int pipe) { Writer(open(), seed, pipe); }, killAfterMicroseconds,
                                [&](Message const& message) {
                                  death.lastStep = message.step;
                                  if (message.kind == Message::kHandles) {
                                    death.handles = message.handles;
                                    death.handlesKnown = true;
                                  } else {
                                    death.moment = message.kind == Message::kFlushBegins ? Moment::InsideFlush
                                                                                         : Moment::BetweenFlushes;
                                  }
                                });
  if (death.moment == Moment::InsideFlush && death.lastStep == 0) death.moment = Moment::BeforeFirstFlush;
  return death;
}

std::string const kTransferError =
    "***ERROR: The Zorbex database file is corrupt. If this file was transferred from another machine using FTP or "
    "equivalent, ensure that the file was copied using the binary mode instead of ASCII mode.";

// The file grew, and the writer died before its length record followed.
bool DiedBetweenGrowthAndRecord(cow_String const& name) {
  std::string bytes = zqa_ReadFileBytes(name);
  auto size = static_cast<utl_FileOffset>(bytes.size());
  auto recorded = static_cast<utl_FileOffset>(StoredDouble(bytes, kFtpRecordOffset + 4) + 0.5);
  return recorded > 0 && recorded < size && recorded % kPreallocationStep == 0 && size % kPreallocationStep == 0;
}

// Opens the file a writer left and reads everything in it; answers what
// happened, and fails the test for anything but the outcomes allowed. A file
// whose writer died before its first flush was complete never was a
// database: any of the library's errors is an honest answer for it, though
// wrong data never is.
std::string CheckFile(cow_String const& name, bool preallocate, unsigned seed, Death const& death) {
  std::string const notYet = "no database yet: died before its first flush";
  rfm_Database database;
  try {
    database = OpenTestDatabase(name, utl_FileAccessRead, "APP");
  } catch (rfm_TestMessage const& e) {
    if (death.moment == Moment::BeforeFirstFlush) return notYet;
    if (e.what() == kTransferError && preallocate && DiedBetweenGrowthAndRecord(name)) {
      return "transfer error: died between growing the file and recording its length";
    }
    ADD_FAILURE() << "died at step " << death.lastStep << ": " << e.what();
    return "failed to open";
  }
  if (!death.handlesKnown) return "opened before any object existed";
  rfm_KillPlan plan(seed);
  // Outside a flush the file holds exactly the last; inside, anything from
  // the last completed flush up to the one under way.
  int completed = death.moment == Moment::BetweenFlushes ? death.lastStep : death.lastStep - 1;
  bool partial = false;
  try {
    for (int object = 0; object < kObjects; ++object) {
      int fewest = plan.RowsAfter(completed, object);
      int rows = CheckObject(database, object, rfm_Handle(death.handles[object]), fewest,
                             plan.RowsAfter(death.lastStep, object));
      partial = partial || rows != fewest;
    }
  } catch (rfm_TestMessage const& e) {
    if (death.moment == Moment::BeforeFirstFlush) return notYet;
    ADD_FAILURE() << "died at step " << death.lastStep << ", reading: " << e.what();
    return "failed to read";
  }
  return partial ? "opened with part of the flush under way" : "opened with the last completed flush";
}

void Report(char const* title, std::map<std::string, int> const& outcomes) {
  std::printf("%s\n", title);
  for (auto const& [outcome, count] : outcomes) std::printf("  %4d %s\n", count, outcome.c_str());
}

class KilledWriterTest : public testing::TestWithParam<bool> {};

}  // namespace

TEST_P(KilledWriterTest, KilledAtRandomMomentsTheFileHoldsEveryCompletedFlush) {
  constexpr int kRuns = 50;
  // The writer is killed this long after it starts, at most: time for a
  // thousand steps or so, and with them a few linkage groups.
  constexpr long kLongestLifeMicroseconds = 60000;
  bool const preallocate = GetParam();
  std::map<std::string, int> outcomes;
  std::map<Moment, int> moments;
  for (int run = 0; run < kRuns; ++run) {
    SCOPED_TRACE(testing::Message() << "run " << run);
    zqa_TestDir dir;
    cow_String name = dir.File("killed.zdb");
    unsigned const seed = 1000 + static_cast<unsigned>(run);
    std::mt19937 random(seed);
    long delay = std::uniform_int_distribution<long>(0, kLongestLifeMicroseconds)(random);
    Death death = WatchWriter([&] { return rfm_File::Open(name, utl_FileAccessCreate, preallocate); }, seed, &delay);
    ++moments[death.moment];
    ++outcomes[CheckFile(name, preallocate, seed, death)];
  }
  std::string title = atr_SubstituteFormat(
                          "%s file, %d kills: %d before the first flush, %d inside a flush, %d "
                          "between flushes",
                          preallocate ? "preallocated" : "plain", kRuns, moments[Moment::BeforeFirstFlush],
                          moments[Moment::InsideFlush], moments[Moment::BetweenFlushes])
                          .CStr();
  Report(title.c_str(), outcomes);
  // Too few kills inside flushes, and the runs would prove little.
  EXPECT_GE(moments[Moment::InsideFlush], kRuns / 5);
}

TEST_P(KilledWriterTest, DyingAtAnyWriteOfAFlushLeavesTheLastFlushOrMore) {
  bool const preallocate = GetParam();
  unsigned const seed = 7;
  zqa_TestDir dir;
  cow_String name = dir.File("dying.zdb");

  // A rehearsal in this process finds which writes belong to which step's
  // flush: the writes of the same steps are the same in every run. Worth
  // dying in are the flushes whose new linkages reach past a page boundary
  // of group 0 (at slots 109, 256 and 402) and the one that opens group 1.
  std::vector<std::pair<std::size_t, std::size_t> > flushes;  // first and end write of each flush
  std::vector<int> steps = {1};
  int secondGrowthStep = -1;
  std::vector<rfm_DyingFile::Written> writes;
  {
    auto* counting = new rfm_DyingFile(name, preallocate, 0, false);
    rfm_KillWorkload workload(rfm_File(counting), seed);
    auto& repr = static_cast<rfm_DatabaseReprFile&>(workload.Database().Repr());
    std::vector<rfm_Handle> marks = {rfm_Handle(109), rfm_Handle(256), rfm_Handle(402), rfm_Handle::Make(1, 1)};
    int growths = 0;
    for (int step = 0; !marks.empty() || (preallocate && secondGrowthStep < 0); ++step) {
      utl_FileOffset size = counting->LengthPysical();
      workload.Append(step);
      std::size_t first = counting->Writes().size();
      workload.Flush();
      flushes.push_back({first, counting->Writes().size()});
      if (!marks.empty() && repr.HandleOk(marks.front())) {
        steps.push_back(step);
        marks.erase(marks.begin());
      }
      if (counting->LengthPysical() != size && ++growths == 2) secondGrowthStep = step;
    }
    writes = counting->Writes();
  }

  // Every write of those flushes, before it and torn; and with preallocation,
  // the rewrites of the length record that follow the first two growths.
  struct Case {
    std::size_t dieAt;
    bool torn;
  };
  std::vector<Case> cases;
  for (int step : steps) {
    for (std::size_t write = flushes[step].first; write < flushes[step].second; ++write) {
      cases.push_back({write + 1, false});
      if (writes[write].CrossesPage()) cases.push_back({write + 1, true});
    }
  }
  if (preallocate) {
    // The first record is written at creation; one follows each growth.
    std::size_t end = flushes[static_cast<std::size_t>(secondGrowthStep)].second;
    int records = 0;
    for (std::size_t write = 0; write < end; ++write) {
      if (writes[write].offset != kFtpRecordOffset || writes[write].count != kFtpRecordSize) continue;
      if (++records > 1) cases.push_back({write + 1, false});
    }
    EXPECT_EQ(3, records);
  }

  std::map<std::string, int> outcomes;
  for (Case const& each : cases) {
    SCOPED_TRACE(testing::Message() << "dying at write " << each.dieAt << (each.torn ? ", torn" : ""));
    zqa_TestDir runDir;
    cow_String runName = runDir.File("dying.zdb");
    Death death = WatchWriter([&] { return rfm_File(new rfm_DyingFile(runName, preallocate, each.dieAt, each.torn)); },
                              seed, nullptr);
    ++outcomes[CheckFile(runName, preallocate, seed, death)];
  }
  std::string title =
      atr_SubstituteFormat("%s file, %d deaths at single writes of %d flushes", preallocate ? "preallocated" : "plain",
                           static_cast<int>(cases.size()), static_cast<int>(steps.size()))
          .CStr();
  Report(title.c_str(), outcomes);
}

namespace {

// Group 0 lies 1024 bytes past a page boundary, and the next boundary cuts
// the location of the linkage in this slot in half.
constexpr int kCutSlot = 109;
constexpr utl_FileOffset kCutLocation =
    kRfmBlock0Size + kRfmLinkageSize * kCutSlot + kRfmLinkageLocation;
constexpr utl_FileOffset kCutBoundary = 4096;
std::string const kCutSlotBytes = "the bytes of the space whose linkage a page boundary cuts";

// A new database in file with spaces up to the one in the cut slot, which it
// answers: all flushed, all empty but that one, which holds its bytes if
// written.
rfm_Space FillUpToTheCutSlot(rfm_Database& database, rfm_File const& file, bool written) {
  database = rfm_Database::Create(file, "APP", "cut", 1700000000);
  rfm_Space space;
  while (space.IsNull() || space.Handle().Value() < kCutSlot) space = database.Space(-1);
  if (written) space.Write(kCutSlotBytes.data(), static_cast<int>(kCutSlotBytes.size()));
  return space;
}

}  // namespace

// The space in the cut slot is a placeholder at the first flush and gets its
// extent before the second; wherever the second is cut, it reads empty or
// whole, never the bytes at the placeholder's location 1.
TEST(KilledWriterCutSlotTest, APlaceholderGivenItsExtentInACutFlushReadsEmptyOrWhole) {
  zqa_TestDir dir;
  auto writer = [&](cow_String const& name, std::size_t dieAt, bool torn) {
    auto* file = new rfm_DyingFile(name, false, dieAt, torn);
    rfm_Database database;
    rfm_Space space = FillUpToTheCutSlot(database, rfm_File(file), false);
    database.Flush();
    std::size_t first = file->Writes().size();
    space.Write(kCutSlotBytes.data(), static_cast<int>(kCutSlotBytes.size()));
    database.Flush();
    return std::vector<rfm_DyingFile::Written>(file->Writes().begin() + static_cast<std::ptrdiff_t>(first),
                                               file->Writes().end());
  };
  std::size_t const first = [&] {
    auto* file = new rfm_DyingFile(dir.File("count.zdb"), false, 0, false);
    rfm_Database database;
    FillUpToTheCutSlot(database, rfm_File(file), false);
    database.Flush();
    return file->Writes().size();
  }();
  std::vector<rfm_DyingFile::Written> flush = writer(dir.File("rehearsal.zdb"), 0, false);

  bool locationTorn = false;
  for (std::size_t write = 0; write < flush.size(); ++write) {
    for (bool torn : {false, true}) {
      if (torn && !flush[write].CrossesPage()) continue;
      locationTorn = locationTorn || (torn && flush[write].offset == kCutLocation);
      SCOPED_TRACE(testing::Message() << "dying at write " << write << " of the flush" << (torn ? ", torn" : ""));
      cow_String name = dir.File(atr_SubstituteFormat("cut%d%d.zdb", static_cast<int>(write), torn ? 1 : 0).CStr());
      EXPECT_EQ(128 + SIGKILL, zqa_RunInChild([&] { writer(name, first + write + 1, torn); }));
      std::string text = SpaceBytes(OpenTestDatabase(name, utl_FileAccessRead, "APP"), kCutSlot);
      EXPECT_TRUE(text.empty() || text == kCutSlotBytes) << text;
    }
  }
  EXPECT_TRUE(locationTorn) << "the location is written alone, and a page boundary cuts it";
}

// A writer killed in its first flush, which wrote the new group 0 up to the
// page boundary inside the cut slot: that slot holds the space's sizes but no
// location, so it is free. The file opens for update, and a new space in that
// slot starts empty instead of taking those sizes over at location 1, which
// would write over block 0.
TEST(KilledWriterCutSlotTest, AFileLeftByAKilledWriterTakesNewObjectsInItsTornFreeSlot) {
  zqa_TestDir dir;
  cow_String name = dir.File("updated.zdb");
  std::size_t dieAt = [&] {
    auto* file = new rfm_DyingFile(dir.File("count.zdb"), false, 0, false);
    rfm_Database database;
    rfm_Space space = FillUpToTheCutSlot(database, rfm_File(file), true);
    std::size_t first = file->Writes().size();
    database.Flush();
    for (std::size_t write = first; write < file->Writes().size(); ++write) {
      rfm_DyingFile::Written const& written = file->Writes()[write];
      if (written.offset < kCutBoundary && written.offset + written.count > kCutBoundary) return write + 1;
    }
    return std::size_t{0};
  }();
  ASSERT_NE(0u, dieAt);
  EXPECT_EQ(128 + SIGKILL, zqa_RunInChild([&] {
              rfm_Database database;
              rfm_Space space =
                  FillUpToTheCutSlot(database, rfm_File(new rfm_DyingFile(name, false, dieAt, true)), true);
              database.Flush();
            }));
  {
    rfm_Database database = OpenTestDatabase(name, utl_FileAccessUpdate, "APP");
    rfm_Space space = database.Space(-1);
    ASSERT_EQ(kCutSlot, space.Handle().Value());
    space.Write("after the kill", 14);
  }
  rfm_Database reopened = OpenTestDatabase(name, utl_FileAccessRead, "APP");
  EXPECT_EQ("after the kill", SpaceBytes(reopened, kCutSlot));
  EXPECT_EQ("", SpaceBytes(reopened, kCutSlot - 1));
}

// A flush that starts a second linkage group and links a space of the first
// group, new in this flush, to an extent whose linkage lies in the new group.
// Wherever a writer dies in that flush, the file opens, and the first
// flush's space reads whole: no link leads into a group before the group
// joins the file's chain of groups.
TEST(KilledWriterNewGroupTest, DyingWhileASecondGroupIsWrittenLeavesTheFirstFlush) {
  zqa_TestDir dir;
  std::string const kept = "written by the first flush";
  int keptHandle = 0;
  auto writer = [&](cow_String const& name, std::size_t dieAt) {
    auto* file = new rfm_DyingFile(name, false, dieAt, false);
    rfm_Database database = rfm_Database::Create(rfm_File(file), "APP", "groups", 1700000000);
    rfm_Space first = database.Space(-1);
    first.Write(kept.data(), static_cast<int>(kept.size()));
    keptHandle = first.Handle().Value();
    database.Flush();
    std::size_t const flushStart = file->Writes().size();
    std::vector<rfm_Space> spaces;
    while (spaces.empty() || spaces.back().Handle().Group() == 0) spaces.push_back(database.Space(-1));
    // The last space of group 0 grows, another space's bytes follow its
    // extent, and it grows again: into an extent whose linkage is taken in
    // the new group.
    rfm_Space const& edge = spaces[spaces.size() - 2];
    std::string const bytes(100, 'e');
    edge.Write(bytes.data(), 100);
    spaces.back().Write(bytes.data(), 100);
    edge.Write(bytes.data(), 100);
    database.Flush();
    return file->Writes().size() - flushStart;
  };
  std::size_t const flushWrites = writer(dir.File("rehearsal.zdb"), 0);
  std::size_t const before = [&] {
    auto* file = new rfm_DyingFile(dir.File("count.zdb"), false, 0, false);
    rfm_Database database = rfm_Database::Create(rfm_File(file), "APP", "groups", 1700000000);
    rfm_Space first = database.Space(-1);
    first.Write(kept.data(), static_cast<int>(kept.size()));
    database.Flush();
    return file->Writes().size();
  }();
  ASSERT_GT(flushWrites, 2u);
  for (std::size_t write = 0; write < flushWrites; ++write) {
    SCOPED_TRACE(testing::Message() << "dying at write " << write << " of the flush");
    cow_String const name = dir.File(atr_SubstituteFormat("groups%d.zdb", static_cast<int>(write)).CStr());
    EXPECT_EQ(128 + SIGKILL, zqa_RunInChild([&] { writer(name, before + write + 1); }));
    try {
      EXPECT_EQ(kept, SpaceBytes(OpenTestDatabase(name, utl_FileAccessRead, "APP"), keptHandle));
    } catch (std::exception const& e) {
      ADD_FAILURE() << e.what();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, KilledWriterTest, testing::Values(false, true),
                         [](testing::TestParamInfo<bool> const& info) {
                           return info.param ? std::string("Preallocated") : std::string("Plain");
                         });
