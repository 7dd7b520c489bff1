// A transporter reading a file while a transporter in another process
// writes it: after each Snap the reader knows every class the writer's last
// flush catalogued, finds each class's table, and reads rows as written;
// and, with objects written and read as roots, every object a Snap shows
// reads whole, with its references, as the writer made it.

#include "rfm_File.h"
#include "rfm_Row.h"
#include "rom_TestClasses.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace {

using namespace rom_TestClasses;

// The classes the writer adds, one more every few flushes.
constexpr unsigned int kWritten[] = {kMaterial, kNode, kElement, kHex8, kQuad4};
constexpr int kRounds = 200;
constexpr int kRoundsPerClass = 20;

// A row's Id (or Label, or Thickness) tells the round and the class that wrote it.
int Stamp(int round, int classIndex) { return round * 10 + classIndex; }

void WriteRow(rom_Transporter& t, int classIndex, int round) {
  unsigned int const cid = kWritten[classIndex];
  rom_ClassBag& bag = t.GetClassBagForWrite(cid);
  rfm_Row const row = bag.Table().NewRow();
  int const stamp = Stamp(round, classIndex);
  switch (cid) {
    case kMaterial:
      row.WriteFieldDouble(rfm_FieldHandle("Young", bag.MapField(2)), stamp);
      break;
    case kNode:
      row.WriteFieldInt(rfm_FieldHandle("Id", bag.MapField(1)), stamp);
      break;
    case kElement:
      row.WriteFieldString(rfm_FieldHandle("Label", bag.MapField(1)), std::to_string(stamp).c_str());
      break;
    default:
      row.WriteFieldInt(rfm_FieldHandle("##BaseClassOID", 0), stamp);
      break;
  }
}

int ReadStamp(rom_Transporter& t, int classIndex, int row) {
  unsigned int const cid = kWritten[classIndex];
  rom_ClassBag& bag = t.GetClassBagForRead(cid);
  rfm_Row const r = bag.Table().ReadRow(row);
  switch (cid) {
    case kMaterial:
      return static_cast<int>(r.ReadFieldDouble(rfm_FieldHandle("Young", bag.MapField(2))));
    case kNode:
      return r.ReadFieldInt(rfm_FieldHandle("Id", bag.MapField(1)));
    case kElement:
      return std::stoi(r.ReadFieldString(rfm_FieldHandle("Label", bag.MapField(1))).CStr());
    default:
      return r.ReadFieldInt(rfm_FieldHandle("##BaseClassOID", 0));
  }
}

[[noreturn]] void Writer(cow_String const& path) {
  int status = 0;
  try {
    cls_ClassRegistrar registrar;
    Register(registrar);
    rom_Transporter t(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), "TEST", "beside", 7, -1);
    for (int round = 0; round < kRounds; ++round) {
      int const classes = std::min(5, 1 + round / kRoundsPerClass);
      for (int c = 0; c < classes; ++c) WriteRow(t, c, round);
      t.Flush();
    }
  } catch (std::exception const& e) {
    std::fprintf(stderr, "writer: %s\n", e.what());
    status = 1;
  }
  _exit(status);
}

}  // namespace

TEST(TransporterBesideAWriterTest, ReaderSeesNewClassesAndTheirRowsAfterEachSnap) {
  zqa_TestDir dir;
  cow_String const path = dir.File("beside.zdb");
  cls_ClassRegistrar registrar;
  Register(registrar);
  pid_t const writer = fork();
  ASSERT_NE(-1, writer);
  if (writer == 0) Writer(path);

  // The reader opens once the writer's first flush has made a whole file.
  std::unique_ptr<rom_Transporter> reader;
  for (int attempt = 0; !reader && attempt < 2000; ++attempt) {
    try {
      reader = std::make_unique<rom_Transporter>(registrar, rfm_File::Open(path, utl_FileAccessRead, false), "TEST", -1);
    } catch (std::exception const&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  ASSERT_TRUE(reader) << "the writer's file never opened";

  int snaps = 0, maxClasses = 0;
  bool writerDone = false;
  for (;;) {
    int status = 0;
    if (!writerDone && waitpid(writer, &status, WNOHANG) == writer) {
      writerDone = true;
      ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    if (reader->Snap()) ++snaps;
    // Every catalogued class has its table; the rows of each class were
    // written by rounds in order, so row i of class c holds round
    // (first round of c) + i.
    int classes = 0;
    for (int c = 0; c < 5; ++c) {
      if (reader->Catalog().Length() <= c) break;
      int const rows = reader->GetTableSize(kWritten[c]);
      for (int row = 0; row < rows; ++row) ASSERT_EQ(Stamp(c * kRoundsPerClass + row, c), ReadStamp(*reader, c, row));
      ++classes;
    }
    EXPECT_GE(classes, maxClasses);
    maxClasses = classes;
    if (writerDone) break;
  }
  EXPECT_EQ(5, maxClasses);
  for (int c = 0; c < 5; ++c) EXPECT_EQ(kRounds - c * kRoundsPerClass, reader->GetTableSize(kWritten[c]));
  std::printf("%d snaps took changes in\n", snaps);
}

namespace {

// The objects' writer adds a model of kNodesPerRound nodes and their
// elements and materials each round, drawn from the round's number.
constexpr int kObjectRounds = 10;
constexpr int kNodesPerRound = 200;
constexpr int kMaterialsPerRound = 3;
// How often the reader snaps and reads everything while a round is written.
constexpr int kSnapsPerRound = 6;

rom_TestModel::Model RoundModel(int round) {
  return rom_TestModel::Make(kNodesPerRound, kMaterialsPerRound, 9000 + static_cast<unsigned int>(round));
}

// The models of rounds 0 to rounds - 1, one after the other, as a reader
// reads them: each round's nodes, elements and node sets follow the
// previous round's in their tables.
rom_TestModel::Model FirstRounds(int rounds) {
  rom_TestModel::Model all;
  for (int round = 0; round < rounds; ++round) {
    rom_TestModel::Model const model = RoundModel(round);
    all.nodes.insert(all.nodes.end(), model.nodes.begin(), model.nodes.end());
    all.hexes.insert(all.hexes.end(), model.hexes.begin(), model.hexes.end());
    all.quads.insert(all.quads.end(), model.quads.begin(), model.quads.end());
    all.sets.insert(all.sets.end(), model.sets.begin(), model.sets.end());
  }
  return all;
}

// The rounds whose objects the reader's tables now show, which must be whole
// rounds: every class's table as one flush left it.
int RoundsShown(rom_Transporter& reader) {
  int const nodes = reader.GetTableSize(rom_TestModel::kNode);
  int const rounds = nodes / kNodesPerRound;
  zqa_Require(nodes % kNodesPerRound == 0, "part of a round's nodes: " + std::to_string(nodes));
  int const elements = static_cast<int>(RoundModel(0).hexes.size());
  for (unsigned int cid : {rom_TestModel::kHex8, rom_TestModel::kQuad4})
    zqa_Require(reader.GetTableSize(cid) == rounds * elements,
                "elements of another flush than the nodes: " + std::to_string(reader.GetTableSize(cid)));
  int const sets = static_cast<int>(RoundModel(0).sets.size());
  zqa_Require(reader.GetTableSize(rom_TestModel::kNodeSet) == rounds * sets,
              "node sets of another flush than the nodes: " + std::to_string(reader.GetTableSize(rom_TestModel::kNodeSet)));
  return rounds;
}

// Reads every object the reader's tables show and compares it with the
// writer's: values, and the nodes and materials each refers to.
void RequireWholeObjects(rom_Transporter& reader, int rounds) {
  std::string const difference = rom_TestModel::Difference(FirstRounds(rounds), rom_TestModel::Read(reader));
  zqa_Require(difference.empty(), "after " + std::to_string(rounds) + " rounds: " + difference);
}

// The two sides' signals: the reader lets the writer begin each round, and
// the writer tells when a round's flush is done.
struct Rounds {
  zqa_Signal begin;
  zqa_Signal flushed;
};

void ObjectWriter(cow_String const& path, Rounds const& rounds) {
  cls_ClassRegistrar registrar;
  rom_TestModel::Register(registrar);
  rom_Transporter t(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), "TEST", "objects", 7, -1);
  t.Flush();
  rounds.flushed.Send();
  for (int round = 0; round < kObjectRounds; ++round) {
    rounds.begin.Wait();
    rom_TestModel::Write(t, RoundModel(round));
    t.Flush();
    rounds.flushed.Send();
  }
}

// Snaps while the writer writes a round, when each Snap may show the
// round's flush or the one before, and once more after the flush, when it
// must show the round.
void ObjectReader(cow_String const& path, Rounds const& rounds) {
  cls_ClassRegistrar registrar;
  rom_TestModel::Register(registrar);
  rounds.flushed.Wait();
  rom_Transporter reader(registrar, rfm_File::Open(path, utl_FileAccessRead, false), "TEST", -1);
  int early = 0;
  for (int round = 0; round < kObjectRounds; ++round) {
    rounds.begin.Send();
    for (int snap = 0; snap < kSnapsPerRound; ++snap) {
      reader.Snap();
      // Before the first round the classes have no tables yet.
      if (round == 0 && reader.Catalog().Length() == 0) continue;
      int const shown = RoundsShown(reader);
      zqa_Require(shown == round || shown == round + 1, "a Snap shows " + std::to_string(shown) + " rounds in round " +
                                                            std::to_string(round));
      early += shown == round + 1;
      RequireWholeObjects(reader, shown);
    }
    rounds.flushed.Wait();
    reader.Snap();
    zqa_Require(RoundsShown(reader) == round + 1, "a Snap after the flush of round " + std::to_string(round) +
                                                      " does not show it");
    RequireWholeObjects(reader, round + 1);
  }
  // On standard error, which a child ending with _exit does not leave in a buffer.
  std::fprintf(stderr, "%d snaps of %d showed a round before it was announced\n", early,
               kObjectRounds * kSnapsPerRound);
}

// Waits for two children; when one fails, the other may wait for it for
// ever, and is killed. Answers each one's status as zqa_WaitChild does.
std::pair<int, int> WaitForBoth(int first, int second) {
  int statuses[2] = {-1, -1};
  for (int ended = 0; ended < 2; ++ended) {
    int raw = 0;
    pid_t const child = ::waitpid(-1, &raw, 0);
    if (child != first && child != second) return {-1, -1};
    int const status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    statuses[child == first ? 0 : 1] = status;
    if (status != 0 && ended == 0) ::kill(child == first ? second : first, SIGKILL);
  }
  return {statuses[0], statuses[1]};
}

}  // namespace

TEST(TransporterBesideAWriterTest, ReaderFindsEveryObjectOfEachFlushWholeAndFinallyAll) {
  zqa_TestDir dir;
  cow_String const path = dir.File("objects.mdl");
  Rounds rounds;
  int const writer = zqa_StartChild([&] { ObjectWriter(path, rounds); });
  int const reader = zqa_StartChild([&] { ObjectReader(path, rounds); });
  auto const [writerStatus, readerStatus] = WaitForBoth(writer, reader);
  EXPECT_EQ(0, writerStatus);
  EXPECT_EQ(0, readerStatus);
}
