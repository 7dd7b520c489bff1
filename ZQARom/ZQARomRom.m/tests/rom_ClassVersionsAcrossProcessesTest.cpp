// Two programs of one model at different versions of its Node class, each
// in a process of its own: a program of version 2 (which adds Temperature)
// and one of version 1 read each other's files whole. Each child registers
// only its own version, as a real program does, and checks what it reads
// against the model it expects; the test sees only exit statuses.

#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {
using namespace rom_TestModel;

constexpr int kNodes = 120;
constexpr int kMaterials = 5;
constexpr unsigned int kSeed = 41;
constexpr char kMagic[] = "MDL";

// A program of Node version nodeVersion writes its view of the model into a new file.
void WriteAs(int nodeVersion, cow_String const& path) {
  cls_ClassRegistrar registrar;
  Register(registrar, nodeVersion);
  rom_Transporter t(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kMagic, "versions", 0, -1);
  Write(t, Make(kNodes, kMaterials, kSeed, nodeVersion));
  t.Flush();
}

// A program of Node version nodeVersion opens the file read-only and reads
// every node and element; what it finds must be the model as the writer's
// version sees it: a version-1 writer stores no temperature.
void ReadAs(int nodeVersion, int writerVersion, cow_String const& path) {
  cls_ClassRegistrar registrar;
  Register(registrar, nodeVersion);
  rom_Transporter t(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kMagic, -1);
  Model const read = Read(t);
  std::string const difference = Difference(Make(kNodes, kMaterials, kSeed, std::min(nodeVersion, writerVersion)), read);
  zqa_Require(difference.empty(), "version " + std::to_string(nodeVersion) + " reads: " + difference);
  if (writerVersion == 1) {
    for (auto const& node : read.nodes)
      zqa_Require(node.ConstGet()->m_Temperature == kRoomTemperature, "a version-1 node read with a temperature");
  }
}

}  // namespace

TEST(ClassVersionsAcrossProcessesTest, ProgramsOfEitherNodeVersionReadTheOthersModelWhole) {
  // The models really differ between versions, or the test would prove nothing.
  ASSERT_NE("", Difference(Make(kNodes, kMaterials, kSeed, 1), Make(kNodes, kMaterials, kSeed, 2)));
  zqa_TestDir dir;
  for (int writer : {1, 2}) {
    int const reader = 3 - writer;
    SCOPED_TRACE(testing::Message() << "written by version " << writer << ", read by version " << reader);
    cow_String const path = dir.File(("node-v" + std::to_string(writer) + ".mdl").c_str());
    ASSERT_EQ(0, zqa_RunInChild([&] { WriteAs(writer, path); }));
    EXPECT_EQ(0, zqa_RunInChild([&] { ReadAs(reader, writer, path); }));
    // The writer's own version reads its file back too.
    EXPECT_EQ(0, zqa_RunInChild([&] { ReadAs(writer, writer, path); }));
  }
}
