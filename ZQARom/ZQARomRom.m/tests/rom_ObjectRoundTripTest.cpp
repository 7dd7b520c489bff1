#include "ZQABasUtlVersion.h"
#include "rom_Objects.h"
#include "rom_TestModel.h"
#include "rom_Transporter.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <set>

namespace {
using namespace rom_TestModel;

rfm_File Create(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessCreate, false); }
rfm_File ReadOnly(cow_String const& path) { return rfm_File::Open(path, utl_FileAccessRead, false); }

TEST(ObjectRoundTrip, AModelReadsBackEqualWithEachStoredObjectOnceInMemory) {
  zqa_TestDir dir;
  cow_String const path = dir.File("model.mdl");
  cls_ClassRegistrar registrar;
  Register(registrar);
  Model const model = Make(200, 7, 11);
  {
    rom_Transporter t(registrar, Create(path), "MDL", "model", 0, -1);
    Write(t, model);
    t.Flush();
    EXPECT_EQ(t.GetTableSize(kMaterial), 7);
    EXPECT_EQ(t.GetTableSize(kNode), 200);
    EXPECT_EQ(t.GetTableSize(kElement), 100);
  }
  rom_Transporter t(registrar, ReadOnly(path), "MDL", -1);
  Model const read = Read(t);
  EXPECT_EQ(Difference(model, read), "");
  std::set<rom_TestMaterial const*> materials;
  std::set<rom_TestNode const*> nodes;
  for (auto const& node : read.nodes) {
    materials.insert(node.ConstGet()->m_Material.ConstGet());
    nodes.insert(node.ConstGet());
  }
  for (auto const& hex : read.hexes) {
    materials.insert(hex.ConstGet()->m_Material.ConstGet());
    for (auto const& node : hex.ConstGet()->m_Nodes) EXPECT_EQ(nodes.count(node.ConstGet()), 1u);
  }
  EXPECT_EQ(materials.size(), 7u);
}
}  // namespace
