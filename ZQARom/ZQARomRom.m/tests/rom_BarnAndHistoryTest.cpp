#include "cls_ClassRegistrar.h"
#include "cls_CowDtor.h"
#include "cls_CowValue.h"
#include "cls_Uid.h"
#include "cow_COW.h"
#include "cow_String.h"
#include "nex_PrimException.h"
#include "rom_CowBarn.h"
#include "rom_History.h"
#include "rom_HistoryEntry.h"
#include "zqa_TextOf.h"

#include <gtest/gtest.h>

namespace {

using Assertion = nex_PrimException<cow_String, 3>;

struct Part {
  static constexpr unsigned int kClassId = 0x01000301;
};

TEST(CowBarnInsertTest, EachAddressAndRowKeepOnlyTheNewestStallAndReplacedStallsLetGo) {
  cls_ClassRegistrar registrar;
  cls_ClassMetadata const& md =
      registrar.CreateClassMD("Part", Part::kClassId, 1, nullptr, cls_kNoClass).AddDtor(&cls_CowDtor<Part>);
  cow_COW<Part> a(new Part), b(new Part), c(new Part);
  rom_CowBarn barn;

  // The same value at the same row again: one stall, one share of the barn.
  barn.Insert(1, 0, cls_CowValue(a), md);
  barn.Insert(1, 0, cls_CowValue(a), md);
  EXPECT_EQ(barn.Size(), 1);
  EXPECT_EQ(cls_CowValue(a).ReferenceCount(), 3);  // a, the probe, the barn

  // An address held at one row and a row held by another address: both
  // old stalls go, and their shares with them.
  barn.Insert(1, 1, cls_CowValue(b), md);
  barn.Insert(1, 1, cls_CowValue(a), md);
  EXPECT_EQ(barn.Size(), 1);
  EXPECT_FALSE(barn.IsPresent(1, 0));
  EXPECT_FALSE(barn.IsPresent(cls_CowValue(b)));
  EXPECT_EQ(barn.Stall(cls_CowValue(a))->Row(), rom_CidOid(1, 1));
  EXPECT_EQ(barn.Stall(1, 1)->Value().Address(), cls_CowValue(a).Address());
  EXPECT_EQ(cls_CowValue(a).ReferenceCount(), 3);
  EXPECT_EQ(cls_CowValue(b).ReferenceCount(), 2);  // b and the probe

  // A new value at a new row leaves the others where they are.
  EXPECT_EQ(barn.Insert(2, 0, cls_CowValue(c), md).Address(), cls_CowValue(c).Address());
  EXPECT_EQ(barn.Size(), 2);
  EXPECT_EQ(barn.Stall(1, 1)->Value().Address(), cls_CowValue(a).Address());
  EXPECT_EQ(barn.Stall(cls_CowValue(c))->Row(), rom_CidOid(2, 0));
}

// A value whose end asks the barn that lets it go what it holds.
struct Asking {
  static constexpr unsigned int kClassId = 0x01000302;
  ~Asking() {
    *sizeSeen = barn->Size();
    *otherSeen = barn->IsPresent(cls_CowValue(other)) || barn->IsPresent(1, 0);
  }
  rom_CowBarn const* barn = nullptr;
  cow_COW<Part> other;
  int* sizeSeen = nullptr;
  bool* otherSeen = nullptr;
};

TEST(CowBarnClearTest, EveryValueGoesAndTheirEndsFindTheBarnEmpty) {
  cls_ClassRegistrar registrar;
  cls_ClassMetadata const& partMd =
      registrar.CreateClassMD("Part", Part::kClassId, 1, nullptr, cls_kNoClass).AddDtor(&cls_CowDtor<Part>);
  cls_ClassMetadata const& askingMd =
      registrar.CreateClassMD("Asking", Asking::kClassId, 1, nullptr, cls_kNoClass).AddDtor(&cls_CowDtor<Asking>);
  rom_CowBarn barn;
  cow_COW<Part> part(new Part);
  int sizeSeen = -1;
  bool otherSeen = true;
  {
    auto* asking = new Asking;
    asking->barn = &barn;
    asking->other = part;
    asking->sizeSeen = &sizeSeen;
    asking->otherSeen = &otherSeen;
    cow_COW<Asking> held(asking);
    barn.Insert(1, 0, cls_CowValue(part), partMd);
    barn.Insert(2, 0, cls_CowValue(held), askingMd);
  }
  EXPECT_EQ(cls_CowValue(part).ReferenceCount(), 4);  // part, the probe, the barn, the asking value

  barn.Clear();
  EXPECT_EQ(sizeSeen, 0);
  EXPECT_FALSE(otherSeen);
  EXPECT_EQ(barn.Size(), 0);
  EXPECT_FALSE(barn.IsPresent(cls_CowValue(part)));
  EXPECT_EQ(cls_CowValue(part).ReferenceCount(), 2);  // part and the probe
  barn.Insert(1, 0, cls_CowValue(part), partMd);
  EXPECT_EQ(barn.Stall(cls_CowValue(part))->Row(), rom_CidOid(1, 0));
}

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

TEST(HistoryRowIdentityTest, ARowGetsOneIdentityThatLastsWhileItIsHeld) {
  rom_History history;
  cls_Uid written;
  history.MakeEntry(written, Part::kClassId, 1);
  // A row with an entry answers its identity; a new row gets a new one.
  EXPECT_EQ(history.RowIdentity(Part::kClassId, 1), written);
  cls_Uid read = history.RowIdentity(Part::kClassId, 2);
  EXPECT_FALSE(read.IsNull());
  EXPECT_NE(read, written);
  EXPECT_EQ(history.RowIdentity(Part::kClassId, 2), read);
  EXPECT_EQ(history.GetEntry(read), history.GetEntry(Part::kClassId, 2));
  EXPECT_EQ(history.Size(), 2);
  read = cls_Uid();
  EXPECT_EQ(history.GetEntry(Part::kClassId, 2), nullptr);
  EXPECT_EQ(history.Size(), 1);
}

}  // namespace
