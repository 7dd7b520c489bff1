// A writer process makes a transporter file step by step (rom_KillWorkload):
// new classes with their tables and catalogue rows, rows for every class,
// and the transporter's Flush after each step; it dies by SIGKILL, at a
// random moment or at one of the writes of a flush. A transporter must
// then open the file read-only and find every class of its catalogue with
// its table, named after the class, holding rows exactly as written: at
// least those of the last completed flush, at most those of the step under
// way, and the catalogue the classes of the one or the other.

#include "atr_SubstituteFormat.h"
#include "nex_PrimException.h"
#include "rfm_DyingFile.h"
#include "rom_CatalogFieldHandle.h"
#include "rom_KillWorkload.h"
#include "zqa_KilledChild.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using Message = nex_PrimException<atr_String, 1>;

// What the writer tells the test: the start and the end of each step's flush.
struct Report {
  enum Kind : char { kFlushBegins = 'B', kFlushEnds = 'E' };
  Kind kind;
  int step;
};

// Steps on until the process dies.
void Write(rfm_File const& file, unsigned seed, int pipe) {
  cls_ClassRegistrar registrar;
  rom_Kill::Register(registrar);
  rom_Kill::Writer writer(registrar, file, seed);
  for (int step = 0;; ++step) {
    writer.Step(step);
    zqa_SendReport(pipe, Report{Report::kFlushBegins, step});
    writer.Flush();
    zqa_SendReport(pipe, Report{Report::kFlushEnds, step});
  }
}

// Where the writer died, from the last report it sent. A death inside the
// first flush is before the first completed one.
enum class Moment { BeforeFirstFlush, InsideFlush, BetweenFlushes };

struct Death {
  Moment moment = Moment::BeforeFirstFlush;
  int lastStep = -1;  // the step of the last report
  // The last step whose flush completed.
  int Completed() const { return moment == Moment::BetweenFlushes ? lastStep : lastStep - 1; }
};

// Runs a writer on the file that open makes in a child process. With a
// delay the test kills it then; without, it must die by itself.
Death WatchWriter(std::function<rfm_File()> const& open, unsigned seed, long const* killAfterMicroseconds) {
  Death death;
  zqa_WatchKilledChild<Report>([&](int pipe) { Write(open(), seed, pipe); }, killAfterMicroseconds,
                               [&](Report const& report) {
                                 death.lastStep = report.step;
                                 death.moment =
                                     report.kind == Report::kFlushBegins ? Moment::InsideFlush : Moment::BetweenFlushes;
                               });
  if (death.moment == Moment::InsideFlush && death.lastStep == 0) death.moment = Moment::BeforeFirstFlush;
  return death;
}

// Checks class k's table: named after the class, holding between fewest and
// most rows, each as written. Answers its rows. A write cut at a page
// boundary can give the last extent of a table its growth without the link
// to the extent that follows (only slot 109 of a group lies across a
// boundary, see rfm_LinkageGroups::Write), and the format counts a last row
// from half its bytes on: with cut writes, the last row of the flush under
// way may be torn.
int CheckClass(rom_Transporter& transporter, int k, int fewest, int most, bool cutWrite) {
  rom_ClassBag const& bag = transporter.GetClassBagForRead(rom_Kill::ClassId(k));
  EXPECT_EQ(rom_Kill::ClassName(k), bag.Table().TableMetadata().TableName());
  int const rows = bag.Table().Length();
  for (int i = 0; i < std::min(rows, most); ++i) {
    if (cutWrite && i >= fewest && i == rows - 1) break;
    rfm_Row const row = bag.Table().ReadRow(i);
    if (rom_Kill::Derived(k)) {
      EXPECT_EQ(rom_Kill::BaseRow(i), row.ReadFieldInt(rfm_FieldHandle(kRomBaseClassOidName, 0))) << k << ":" << i;
    }
    EXPECT_EQ(rom_Kill::RowId(k, i), row.ReadFieldInt(rfm_FieldHandle("Id", bag.MapField(1)))) << k << ":" << i;
    EXPECT_EQ(rom_Kill::RowValue(k, i), row.ReadFieldDouble(rfm_FieldHandle("Value", bag.MapField(2)))) << k << ":" << i;
    EXPECT_EQ(rom_Kill::RowLabel(i), row.ReadFieldString(rfm_FieldHandle("Label", bag.MapField(3)))) << k << ":" << i;
  }
  EXPECT_LE(fewest, rows) << "class " << k << " lost rows of a completed flush";
  EXPECT_GE(most, rows) << "class " << k << " holds rows never written";
  return rows;
}

// Opens the file a writer left with a transporter and reads every class its
// catalogue lists; answers what happened, and fails the test for anything
// but the outcomes allowed. A file whose writer died before its first flush
// was complete never was a whole transporter file: any of the library's
// errors is an honest answer for it, though wrong data never is.
std::string CheckFile(cow_String const& name, unsigned seed, Death const& death, bool cutWrite = false) {
  std::string const notYet = "no transporter file yet: died before its first flush";
  cls_ClassRegistrar registrar;
  rom_Kill::Register(registrar);
  rom_Kill::Plan plan(seed);
  int const completed = death.Completed();
  try {
    rom_Transporter transporter(registrar, rfm_File::Open(name, utl_FileAccessRead, false), rom_Kill::kMagic, -1);
    rfm_Table const& catalog = transporter.Catalog();
    int const classes = catalog.Length();
    EXPECT_LE(plan.ClassesAfter(completed), classes) << "classes of a completed flush are missing";
    EXPECT_GE(plan.ClassesAfter(death.lastStep), classes) << "the catalogue holds classes never made";
    bool partial = classes != plan.ClassesAfter(completed);
    // The classes are made in order, each with its catalogue row.
    for (int k = 0; k < std::min(classes, rom_Kill::kClasses); ++k) {
      rfm_Row const row = catalog.ReadRow(k);
      EXPECT_EQ(static_cast<int>(rom_Kill::ClassId(k)), row.ReadFieldInt(rom_CatalogFieldHandle(kRomCatalogClassId)));
      EXPECT_EQ(rom_Kill::ClassName(k), row.ReadFieldString(rom_CatalogFieldHandle(kRomCatalogClassName)));
      EXPECT_EQ(rom_Kill::ClassVersion(k), row.ReadFieldInt(rom_CatalogFieldHandle(kRomCatalogClassVersion)));
      int const fewest = plan.RowsAfter(completed, k);
      partial = CheckClass(transporter, k, fewest, plan.RowsAfter(death.lastStep, k), cutWrite) != fewest || partial;
    }
    return partial ? "opened with part of the flush under way" : "opened with the last completed flush";
  } catch (Message const& e) {
    if (death.moment == Moment::BeforeFirstFlush) return notYet;
    ADD_FAILURE() << "died at step " << death.lastStep << ": " << e.what();
    return "failed to open or read";
  }
}

void Print(std::string const& title, std::map<std::string, int> const& outcomes) {
  std::printf("%s\n", title.c_str());
  for (auto const& [outcome, count] : outcomes) std::printf("  %4d %s\n", count, outcome.c_str());
}

}  // namespace

TEST(KilledTransporterWriterTest, KilledAtRandomMomentsTheFileHoldsEveryCompletedFlushsClassesAndRows) {
  constexpr int kRuns = 50;
  // The writer is killed this long after it starts, at most: time for a
  // few dozen steps, and with them every class of the model.
  constexpr long kLongestLifeMicroseconds = 60000;
  std::map<std::string, int> outcomes;
  std::map<Moment, int> moments;
  for (int run = 0; run < kRuns; ++run) {
    SCOPED_TRACE(testing::Message() << "run " << run);
    zqa_TestDir dir;
    cow_String const name = dir.File("killed.zdb");
    unsigned const seed = 2000 + static_cast<unsigned>(run);
    std::mt19937 random(seed);
    long const delay = std::uniform_int_distribution<long>(0, kLongestLifeMicroseconds)(random);
    Death const death = WatchWriter([&] { return rfm_File::Open(name, utl_FileAccessCreate, false); }, seed, &delay);
    ++moments[death.moment];
    ++outcomes[CheckFile(name, seed, death)];
  }
  Print(atr_SubstituteFormat("%d kills: %d before the first flush, %d inside a flush, %d between flushes", kRuns,
                             moments[Moment::BeforeFirstFlush], moments[Moment::InsideFlush],
                             moments[Moment::BetweenFlushes])
            .CStr(),
        outcomes);
  // Too few kills inside flushes, and the runs would prove little.
  EXPECT_GE(moments[Moment::InsideFlush], kRuns / 5);
}

// Every write of the flushes that make new classes, before it and torn at a
// page boundary: a rehearsal in this process finds which writes belong to
// which step's flush, as the writes of the same steps are the same in
// every run.
TEST(KilledTransporterWriterTest, DyingAtAnyWriteOfAFlushThatMakesClassesLeavesTheLastFlushOrMore) {
  unsigned const seed = 11;
  zqa_TestDir dir;
  rom_Kill::Plan plan(seed);
  std::vector<std::pair<std::size_t, std::size_t>> flushes;  // first and end write of each step's flush
  std::vector<rfm_DyingFile::Written> writes;
  {
    cls_ClassRegistrar registrar;
    rom_Kill::Register(registrar);
    auto* counting = new rfm_DyingFile(dir.File("rehearsal.zdb"), false, 0, false);
    rom_Kill::Writer writer(registrar, rfm_File(counting), seed);
    for (int step = 0; plan.ClassesAfter(step - 1) < rom_Kill::kClasses; ++step) {
      writer.Step(step);
      std::size_t const first = counting->Writes().size();
      writer.Flush();
      flushes.push_back({first, counting->Writes().size()});
    }
    writes = counting->Writes();
  }
  std::vector<std::pair<std::size_t, bool>> cases;  // the write to die at, and whether torn
  int stepsWithNewClasses = 0;
  for (std::size_t step = 0; step < flushes.size(); ++step) {
    if (plan.ClassesAfter(static_cast<int>(step)) == plan.ClassesAfter(static_cast<int>(step) - 1)) continue;
    ++stepsWithNewClasses;
    for (std::size_t write = flushes[step].first; write < flushes[step].second; ++write) {
      cases.push_back({write + 1, false});
      if (writes[write].CrossesPage()) cases.push_back({write + 1, true});
    }
  }
  std::map<std::string, int> outcomes;
  for (auto const& [dieAt, torn] : cases) {
    SCOPED_TRACE(testing::Message() << "dying at write " << dieAt << (torn ? ", torn" : ""));
    zqa_TestDir runDir;
    cow_String const name = runDir.File("dying.zdb");
    Death const death =
        WatchWriter([&, dieAt = dieAt, torn = torn] { return rfm_File(new rfm_DyingFile(name, false, dieAt, torn)); },
                    seed, nullptr);
    ++outcomes[CheckFile(name, seed, death, torn)];
  }
  Print(atr_SubstituteFormat("%d deaths at single writes of %d flushes that made classes",
                             static_cast<int>(cases.size()), stepsWithNewClasses)
            .CStr(),
        outcomes);
  EXPECT_GE(stepsWithNewClasses, 8);
}
