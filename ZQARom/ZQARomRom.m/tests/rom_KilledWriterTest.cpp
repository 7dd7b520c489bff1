// A writer process makes a transporter file step by step (rom_KillWorkload):
// new classes with their tables and catalogue rows, rows for every class,
// objects written as roots, and the transporter's Flush after each step; it
// dies by SIGKILL, at a random moment or at one of the writes of a flush. A
// transporter must then open the file read-only and find every class of its
// catalogue with its table, named after the class, holding rows exactly as
// written: at least those of the last completed flush, at most those of the
// step under way, and the catalogue the classes of the one or the other.
// Objects likewise: every object of a completed flush reads back equal, with
// the objects it refers to, and an object of the step under way is either
// not in its table or reads back equal too.

#include "atr_SubstituteFormat.h"
#include "nex_PrimException.h"
#include "rfm_DyingFile.h"
#include "rom_CatalogFieldHandle.h"
#include "rom_KillWorkload.h"
#include "rom_Objects.h"
#include "zqa_KilledChild.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// The objects of the steps up to last, one step's after the other's, as the
// model's tables hold them.
rom_TestModel::Model StepModels(unsigned seed, int last) {
  rom_TestModel::Model all;
  for (int step = 0; step <= last; ++step) {
    rom_TestModel::Model const model = rom_Kill::StepModel(seed, step);
    all.nodes.insert(all.nodes.end(), model.nodes.begin(), model.nodes.end());
    all.hexes.insert(all.hexes.end(), model.hexes.begin(), model.hexes.end());
    all.quads.insert(all.quads.end(), model.quads.begin(), model.quads.end());
    all.sets.insert(all.sets.end(), model.sets.begin(), model.sets.end());
  }
  return all;
}

// Checks the objects of one list of the model (nodes, hexes, quads or sets) whose
// class is T: at least those of the last completed flush, at most those of
// the step under way, each read as a root and compared, with the objects it
// refers to, with the one the writer wrote in its row. Answers their number.
// As with rows, the last object of the flush under way may be torn by a cut
// write.
template <class T>
int CheckObjects(rom_Transporter& transporter, std::vector<cow_COW<T>> rom_TestModel::Model::*list,
                 rom_TestModel::Model const& written, int perStep, Death const& death, bool cutWrite) {
  int const fewest = (death.Completed() + 1) * perStep;
  int const most = (death.lastStep + 1) * perStep;
  int const objects = transporter.GetTableSize(T::kClassId);
  for (int oid = 0; oid < std::min(objects, most); ++oid) {
    if (cutWrite && oid >= fewest && oid == objects - 1) break;
    rom_TestModel::Model expected, read;
    (expected.*list).push_back((written.*list)[static_cast<std::size_t>(oid)]);
    (read.*list).push_back(rom_ReadObject<T>(transporter, oid));
    EXPECT_EQ("", rom_TestModel::Difference(expected, read)) << "object " << oid << " of class " << std::hex << T::kClassId;
  }
  EXPECT_LE(fewest, objects) << "class " << T::kClassId << " lost objects of a completed flush";
  EXPECT_GE(most, objects) << "class " << T::kClassId << " holds objects never written";
  return objects;
}

// Checks every object the writer wrote; answers whether the file holds part
// of the step under way.
bool CheckModel(rom_Transporter& transporter, unsigned seed, Death const& death, bool cutWrite) {
  rom_TestModel::Model const written = StepModels(seed, death.lastStep);
  rom_TestModel::Model const one = rom_Kill::StepModel(seed, 0);
  int const perStep[] = {static_cast<int>(one.nodes.size()), static_cast<int>(one.hexes.size()),
                         static_cast<int>(one.quads.size()), static_cast<int>(one.sets.size())};
  int const found[] = {
      CheckObjects(transporter, &rom_TestModel::Model::nodes, written, perStep[0], death, cutWrite),
      CheckObjects(transporter, &rom_TestModel::Model::hexes, written, perStep[1], death, cutWrite),
      CheckObjects(transporter, &rom_TestModel::Model::quads, written, perStep[2], death, cutWrite),
      CheckObjects(transporter, &rom_TestModel::Model::sets, written, perStep[3], death, cutWrite)};
  bool partial = false;
  for (int i = 0; i < 4; ++i) partial = partial || found[i] != (death.Completed() + 1) * perStep[i];
  return partial;
}

// Opens the file a writer left with a transporter and reads every class its
// catalogue lists, and every object; answers what happened, and fails the test for anything
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
    // The series' classes are made in order, each with its catalogue row;
    // the model's classes, and the collection classes of its lists, come
    // between them, made by the first objects.
    int classes = 0;
    bool partial = false;
    for (int i = 0; i < catalog.Length(); ++i) {
      rfm_Row const row = catalog.ReadRow(i);
      unsigned int const classId = static_cast<unsigned int>(row.ReadFieldInt(rom_CatalogFieldHandle(kRomCatalogClassId)));
      if (rom_Kill::IsModelClass(classId)) continue;
      int const k = classes++;
      if (k >= rom_Kill::kClasses) break;
      EXPECT_EQ(rom_Kill::ClassId(k), classId);
      EXPECT_EQ(rom_Kill::ClassName(k), row.ReadFieldString(rom_CatalogFieldHandle(kRomCatalogClassName)));
      EXPECT_EQ(rom_Kill::ClassVersion(k), row.ReadFieldInt(rom_CatalogFieldHandle(kRomCatalogClassVersion)));
      int const fewest = plan.RowsAfter(completed, k);
      partial = CheckClass(transporter, k, fewest, plan.RowsAfter(death.lastStep, k), cutWrite) != fewest || partial;
    }
    EXPECT_LE(plan.ClassesAfter(completed), classes) << "classes of a completed flush are missing";
    EXPECT_GE(plan.ClassesAfter(death.lastStep), classes) << "the catalogue holds classes never made";
    partial = classes != plan.ClassesAfter(completed) || partial;
    partial = CheckModel(transporter, seed, death, cutWrite) || partial;
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
