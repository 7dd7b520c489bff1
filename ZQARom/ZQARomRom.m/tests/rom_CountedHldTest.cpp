#include "rom_COW.h"
#include "rom_CountedHld.h"
#include "rom_Counter.h"

#include "cow_String.h"
#include "nex_PrimException.h"

#include <gtest/gtest.h>

#include <string>

// Every member is compiled, not only those the tests call.
template class rom_CountedHld<int>;
template class rom_COW<int, rom_Direct<int> >;

namespace {

using IntCOW = rom_COW<int, rom_Direct<int> >;

// The text of the assertion that action raises from rom_Counter.
template <class Action>
std::string AssertionText(Action action) {
  try {
    action();
  } catch (nex_PrimException<cow_String, 3> const& e) {
    EXPECT_STREQ("ZQARom/ZQARomRom.m/src/rom_Counter", e.SourcePath());
    return e.what();
  }
  return "no assertion raised";
}

}  // namespace

TEST(RomCountedHldTest, ZeroedHolderIsDestroyedWithoutTouchingMemory) {
  IntCOW owner(7);
  {
    IntCOW zeroed = owner;
    zeroed.ZeroReference();
    EXPECT_TRUE(zeroed.IsNull());
    EXPECT_EQ(0, zeroed.ReferenceCount());
    EXPECT_EQ(2, owner.ReferenceCount());
    // The owner gives up the zeroed holder's share and its own, freeing
    // count and referent: the zeroed holder's drop and destruction must not
    // read either, which the address sanitizer would report.
    owner.LowerReference();
    owner.DropReference();
    zeroed.DropReference();
    zeroed.LowerReference();
  }
  EXPECT_TRUE(owner.IsNull());
}

TEST(RomCountedHldTest, LowerReferenceFreesNothingEvenAtZero) {
  IntCOW keeper(2);
  int* referent = keeper.GetPtr();
  {
    IntCOW lowered = keeper;
    IntCOW reassigned = keeper;
    lowered.LowerReference();
    reassigned.LowerReference();
    EXPECT_EQ(1, keeper.ReferenceCount());
    keeper.LowerReference();
    EXPECT_EQ(0, keeper.ReferenceCount());
    // Neither reassigning nor destroying a lowered holder frees anything.
    reassigned = rom_Direct<int>::Copy(4);
    EXPECT_EQ(4, reassigned.GetRef());
  }
  EXPECT_EQ(2, *referent);
  EXPECT_EQ(0, keeper.ReferenceCount());
  // Whoever took the memory over ends it; here Delete() does.
  keeper.Delete();
}

TEST(RomCOWTest, GetCopiesOnlyWhenShared) {
  IntCOW a(5);
  int* original = a.Get();
  EXPECT_EQ(original, a.ConstGet());

  IntCOW b = a;
  b = b;
  EXPECT_TRUE(a.Identical(b));
  *b.Get() = 6;
  EXPECT_FALSE(a.Identical(b));
  EXPECT_EQ(original, a.ConstGet());
  EXPECT_EQ(5, *a.ConstGet());
  EXPECT_EQ(6, *b.ConstGet());
  EXPECT_TRUE(a.Exclusive());
  EXPECT_TRUE(b.Exclusive());

  // Adopting into a shared handle leaves the other owner its referent.
  b = a;
  b = rom_Direct<int>::Copy(8);
  EXPECT_EQ(5, a.GetRef());
  EXPECT_EQ(8, b.GetRef());
  EXPECT_TRUE(a.Exclusive());
}

TEST(RomCounterTest, ChecksRaiseTheirAssertionTexts) {
  IntCOW lowered(3);
  IntCOW other = lowered;
  lowered.LowerReference();
  lowered.LowerReference();
  EXPECT_EQ("references > 0", AssertionText([&] { lowered.LowerReference(); }));
  EXPECT_EQ("references > 0", AssertionText([&] { lowered.DropReference(); }));
  EXPECT_EQ("references > 0", AssertionText([&] { IntCOW sharer = lowered; }));
  EXPECT_EQ("references > 0", AssertionText([&] { other.Get(); }));
  other.Delete();
  lowered.ZeroReference();

  IntCOW empty;
  EXPECT_EQ("CountedHld has no value", AssertionText([&] { empty.GetRef(); }));
}
