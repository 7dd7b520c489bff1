// Damaged transporter files: the sample transporter file is damaged by the
// record store's recipes and the object layer's (TransporterDamage), and
// each damaged file is opened by a transporter that knows the sample's
// classes and read whole (rom_TransporterWalk): the header, the up-to-date
// status, the class bag of every class, every row of every class table and
// every object of the model's tables, read as a root.
// Each file is read once read-only, and once opened for update, as a
// program that changes a file does, flushing at the end. Every case runs
// in a child process under the limits of rfm_TestDamageRun.
//
// A case may end as the record store's damaged-file test allows (see
// rfm_DamagedFileTest.cpp): with what the undamaged file gives, with one of
// the library's exceptions, or with different data where the damaged bytes
// hold data that the library stores as given (rows of class tables, the
// release's numbers in the header, a class's base class and version in the
// catalogue) or a structural field took another value that leaves the file
// well formed. Different data after any other damage fails the case: the
// catalogue must lead each class to its own table or to an error.

#include "rfm_File.h"
#include "rfm_TestDamageRun.h"
#include "rom_SampleTransporterFile.h"
#include "rom_TestTransporterDamage.h"
#include "rom_TransporterWalk.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class DamagedTransporterFileTest : public testing::TestWithParam<rom_TransporterWalk::Access> {};

}  // namespace

TEST_P(DamagedTransporterFileTest, EndsCorrectOrWithTheLibrarysError) {
  zqa_TestDir dir;
  cls_ClassRegistrar registrar;
  rom_SampleTransporterFile::Register(registrar);
  cow_String const sample = dir.File("sample.zdb");
  auto const contents =
      rom_SampleTransporterFile::Write(registrar, rfm_File::Open(sample, utl_FileAccessCreate, false));
  std::string const good = zqa_ReadFileBytes(sample);

  std::vector<unsigned int> const classes = rom_SampleTransporterFile::Classes();
  rom_TransporterWalk::Access const access = GetParam();
  auto const walk = [&](cow_String const& name) {
    return rom_TransporterWalk::Walk(name, registrar, classes, access);
  };
  cow_String const name = dir.File("damaged.zdb");
  zqa_WriteFileBytes(name, good);
  std::string const expected = walk(name);
  // The sample reads as it was written: every class that stores something
  // with its rows, the marker without a table, node sets with their lists
  // (an empty one, one with null elements).
  for (char const* line : {"class Material table [8]\"Material\" rows 3", "class Node table [4]\"Node\" rows 6",
                           "class Hex8 table [4]\"Hex8\" rows 2", "class Marker has no table",
                           "class ##InternalList table [14]\"##InternalList\" rows 29",
                           "class ##InternalBlob table [14]\"##InternalBlob\" rows 4",
                           "object FeNodeSet[0] name=[5]\"Set-0\" nodes= ids= masks= weights= scales= flags= labels= note= byId= "
                           "byLabel= attributes= tags=\n",
                           "class ##InternalMap table [13]\"##InternalMap\" rows 16",
                           " nodes= FeNode[6] FeNode[1] FeNode[23] null FeNode[8] ",
                           "class FeNode table [6]\"FeNode\" rows 24", "class FeMarker has no table",
                           "object FeNode[23] id=24 ", "object FeQuad4[2] id=6 kind=Contact material=FeMaterial[1] ",
                           " nodes= FeNode[10] FeNode[19] FeNode[21] FeNode[1] reference=FeNode[9]\n",
                           // The catalogue read without the registrar, with a node's reference to its material.
                           "catalogue 16777218 [4]\"Node\" version 1 base 1 table ", " rows 6 reference [8]\"Material\"\n"}) {
    EXPECT_NE(std::string::npos, expected.find(line)) << line << " in\n" << expected;
  }
  // Each object referred to is the one read from its row.
  EXPECT_EQ(std::string::npos, expected.find("unwalked")) << expected;

  auto const cases = TransporterDamage(good, contents);
  auto const write = [&](DamageCase const& damage) { zqa_WriteFileBytes(name, damage.Apply(good)); };
  DamageTally tally(cases, RunDamageCases(cases, write, name, expected, walk), name);
  tally.Print(access == rom_TransporterWalk::kReadOnly ? "transporter file, read-only"
                                                       : "transporter file, for update");
  EXPECT_GT(tally.Cases(), 1000);
  tally.ExpectNoFailures();
}

INSTANTIATE_TEST_SUITE_P(, DamagedTransporterFileTest,
                         testing::Values(rom_TransporterWalk::kReadOnly, rom_TransporterWalk::kForUpdate),
                         [](testing::TestParamInfo<rom_TransporterWalk::Access> const& info) {
                           return info.param == rom_TransporterWalk::kReadOnly ? std::string("ReadOnly")
                                                                               : std::string("ForUpdate");
                         });
