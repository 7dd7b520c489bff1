#include "omi_Swapper.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(SwapperTest, FilesAreLittleEndianOnEveryHost) {
  omi_Swapper fileOrder(omi_LittleEndian);
  omi_Swapper otherOrder(omi_BigEndian);
  EXPECT_NE(fileOrder.Swap(), otherOrder.Swap());
  std::uint32_t probe = 1;
  unsigned char first;
  std::memcpy(&first, &probe, 1);
  EXPECT_EQ(first == 1, !fileOrder.Swap());
}

TEST(SwapperTest, SwappingReversesEachElementAndIsItsOwnInverse) {
  unsigned char const stored[8] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08};

  unsigned char words[8];
  omi_SwapperGuts::InternalizeArray(words, stored, 2, 4);
  unsigned char const expectWords[8] = {0x04, 0x03, 0x02, 0x01, 0x08, 0x07, 0x06, 0x05};
  EXPECT_EQ(0, std::memcmp(words, expectWords, 8));

  unsigned char doubles[8];
  omi_SwapperGuts::InternalizeArray(doubles, stored, 1, 8);
  unsigned char const expectDouble[8] = {0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01};
  EXPECT_EQ(0, std::memcmp(doubles, expectDouble, 8));

  unsigned char back[8];
  omi_SwapperGuts::ExternalizeArray(back, words, 2, 4);
  EXPECT_EQ(0, std::memcmp(back, stored, 8));

  // In place, as the buffered layers use it.
  unsigned char inPlace[8];
  std::memcpy(inPlace, stored, 8);
  omi_SwapperGuts::ExternalizeArray(inPlace, inPlace, 4, 2);
  unsigned char const expectShorts[8] = {0x02, 0x01, 0x04, 0x03, 0x06, 0x05, 0x08, 0x07};
  EXPECT_EQ(0, std::memcmp(inPlace, expectShorts, 8));

  double value = 1.5;
  unsigned char raw[8];
  omi_SwapperGuts::CopyBytes(raw, &value, 8);
  double twice;
  omi_SwapperGuts::ExternalizeArray(raw, raw, 1, 8);
  omi_SwapperGuts::InternalizeArray(&twice, raw, 1, 8);
  EXPECT_EQ(1.5, twice);
}
