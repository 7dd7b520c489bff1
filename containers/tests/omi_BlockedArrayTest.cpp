#include "omi_BlockedArray.h"
#include "omi_CountedValue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

namespace {

// Fills new blocks with 7 instead of 0.
class SevenArray : public omi_BlockedArray<std::uint16_t> {
public:
  SevenArray() : omi_BlockedArray<std::uint16_t>(0, 2) {}

protected:
  void BlockInitialize(std::uint16_t** block) override {
    for (unsigned int cell = 0; cell < CellsPerBlock(); ++cell) ::new (*block + cell) std::uint16_t(7);
  }
};

TEST(BlockedArrayTest, MakesBlocksOnDemandKeepsCellsAcrossGrowthAndDumpsThem) {
  omi_BlockedArray<unsigned int> streams(4, 10);
  EXPECT_EQ(streams.GetCell(5), nullptr);
  streams.SetCell(5, 55);
  EXPECT_EQ(*streams.GetCell(5), 55u);
  EXPECT_EQ(*streams.GetCell(1023), 0u);  // the rest of the block is value-initialised
  EXPECT_EQ(streams.GetCell(1024), nullptr);
  streams.SetCell(9 * 1024, 9);  // past the table: it grows
  EXPECT_EQ(*streams.GetCell(5), 55u);
  EXPECT_EQ(streams.GetCell(8 * 1024), nullptr);
  EXPECT_EQ(streams.GetCell(12 * 1024), nullptr);
  EXPECT_EQ(streams.GetCell(0xffffffffu), nullptr);
  streams.Realloc(8);  // never shrinks
  streams.Realloc(40);
  EXPECT_EQ(*streams.GetCell(9 * 1024), 9u);
  EXPECT_EQ(streams.GetCell(39 * 1024), nullptr);
  omi_BlockedArray<unsigned int> copy(streams);
  copy.SetCell(5, 56);
  EXPECT_EQ(*streams.GetCell(5), 55u);
  streams.Clear();
  EXPECT_EQ(streams.GetCell(5), nullptr);
  EXPECT_EQ(*copy.GetCell(9 * 1024), 9u);

  SevenArray sevens;
  EXPECT_EQ(sevens.GetCell(13), nullptr);
  sevens.SetCell(13, 0x0102);  // block 3 of 4 cells
  testing::internal::CaptureStdout();
  sevens.DumpArray();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Block indices= 12 - 15\n0700|0201|0700|0700|");

  omi_BlockedArray<std::uint8_t> bytes(0, 3);
  bytes.SetCell(8, 0xab);
  testing::internal::CaptureStdout();
  bytes.DumpArray();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Block indices= 8 - 15\nab|00|00|00|00|00|00|00|\n");
}

TEST(BlockedArrayTest, CellsOfClassTypeLiveAsLongAsTheirBlock) {
  {
    omi_BlockedArray<omi_CountedValue> cells(2, 4);
    cells.SetCell(40, omi_CountedValue(4));
    EXPECT_EQ(omi_CountedValue::s_Live, 16);
    omi_BlockedArray<omi_CountedValue> copy(cells);
    copy.SetCell(0, omi_CountedValue(1));
    EXPECT_EQ(omi_CountedValue::s_Live, 48);
    cells = copy;
    EXPECT_EQ(cells.GetCell(0)->m_Value, 1);
    EXPECT_EQ(omi_CountedValue::s_Live, 64);
    copy.Clear();
    EXPECT_EQ(omi_CountedValue::s_Live, 32);
  }
  EXPECT_EQ(omi_CountedValue::s_Live, 0);
}

}  // namespace
