// A transporter reading a file while a transporter in another process
// writes it: after each Snap the reader knows every class the writer's last
// flush catalogued, finds each class's table, and reads rows as written.

#include "rfm_File.h"
#include "rfm_Row.h"
#include "rom_TestClasses.h"
#include "rom_Transporter.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <thread>

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
