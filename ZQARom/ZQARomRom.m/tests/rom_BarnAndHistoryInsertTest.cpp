#include "cls_Uid.h"
#include "cow_String.h"
#include "nex_PrimException.h"
#include "rom_History.h"
#include "rom_HistoryEntry.h"
#include "zqa_TextOf.h"

#include <gtest/gtest.h>

namespace {

using Assertion = nex_PrimException<cow_String, 3>;

struct Part {
  static constexpr unsigned int kClassId = 0x01000301;
};

TEST(HistoryMakeEntryTest, ARowThatHasAnEntryRaisesAndNothingChanges) {
  rom_History history;
  cls_Uid first;
  rom_HistoryEntry* const entry = history.MakeEntry(first, Part::kClassId, 3);
  EXPECT_FALSE(first.IsNull());
  EXPECT_EQ(history.GetEntry(Part::kClassId, 3), entry);
  EXPECT_EQ(history.GetEntry(first), entry);

  cls_Uid second;
  char const* const kTaken = "!m_CidOid2EntryMap.IsMember(rom_CidOid(cid, oid))";
  EXPECT_EQ(kTaken, zqa_TextOf<Assertion>([&] { history.MakeEntry(second, Part::kClassId, 3); }));
  EXPECT_EQ(kTaken, zqa_TextOf<Assertion>([&] { history.MakePermanentEntry(second, Part::kClassId, 3); }));
  EXPECT_TRUE(second.IsNull());
  EXPECT_EQ(history.GetEntry(second), nullptr);
  EXPECT_EQ(history.Size(), 1);
  EXPECT_EQ(history.GetEntry(Part::kClassId, 3), entry);
  EXPECT_EQ(history.GetEntry(first), entry);

  // The row's entry still ends with its identity, and the row is free again.
  first = cls_Uid();
  EXPECT_EQ(history.Size(), 0);
  EXPECT_EQ(history.GetEntry(Part::kClassId, 3), nullptr);
  EXPECT_NE(history.MakeEntry(second, Part::kClassId, 3), nullptr);
  EXPECT_EQ(history.GetEntry(second), history.GetEntry(Part::kClassId, 3));
}

}  // namespace
