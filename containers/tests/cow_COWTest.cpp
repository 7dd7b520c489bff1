#include "cow_ArrayCOW.h"
#include "cow_COW.h"
#include "cow_CountedHld.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Counts live instances so that tests see every delete.
struct Tracked {
  static int s_Live;
  explicit Tracked(int v) : value(v) { ++s_Live; }
  Tracked(Tracked const& other) : value(other.value) { ++s_Live; }
  ~Tracked() { --s_Live; }
  int value;
};
int Tracked::s_Live = 0;

class Shape {
public:
  virtual ~Shape() = default;
  virtual Shape* Copy() const = 0;
  virtual std::string Name() const = 0;
};

class Circle : public Shape {
public:
  Shape* Copy() const override { return new Circle(*this); }
  std::string Name() const override { return "circle"; }
};

// A copy that, as a side effect, releases the handle that shares with it.
struct Releasing;
cow_COW<Releasing>* g_Other = nullptr;
struct Releasing {
  Releasing() = default;
  Releasing(Releasing const&) {
    if (g_Other) g_Other->DropReference();
  }
};

}  // namespace

TEST(CountedHldTest, DefaultHolderOwnsACountButNoReferent) {
  cow_CountedHld<Tracked> holder;
  EXPECT_TRUE(holder.IsNull());
  EXPECT_FALSE(holder.HasValue());
  EXPECT_TRUE(holder.Exclusive());
  EXPECT_EQ(1, holder.ReferenceCount());
  EXPECT_EQ(nullptr, holder.ConstGet());
}

TEST(CountedHldTest, LastOwnerDeletesAndSelfAssignmentChangesNothing) {
  {
    cow_CountedHld<Tracked> a(new Tracked(1));
    cow_CountedHld<Tracked> b = a;
    EXPECT_EQ(2, a.ReferenceCount());
    a = a;
    EXPECT_EQ(2, a.ReferenceCount());
    EXPECT_EQ(1, a.GetRef().value);
    b.DropReference();
    EXPECT_EQ(0, b.ReferenceCount());
    EXPECT_EQ(1, a.ReferenceCount());
    EXPECT_EQ(1, Tracked::s_Live);
    b = a;
    EXPECT_EQ(2, b.ReferenceCount());
  }
  EXPECT_EQ(0, Tracked::s_Live);
}

TEST(CountedHldTest, AssigningAPointerReplacesOnlyThisHoldersShare) {
  cow_CountedHld<Tracked> a(new Tracked(1));
  cow_CountedHld<Tracked> b = a;
  b = new Tracked(2);
  EXPECT_EQ(1, a.GetRef().value);
  EXPECT_EQ(2, b.GetRef().value);
  EXPECT_TRUE(a.Exclusive());
  EXPECT_TRUE(b.Exclusive());
  b = new Tracked(3);
  EXPECT_EQ(2, Tracked::s_Live);
  b.DeleteReferent();
  EXPECT_TRUE(b.IsNull());
  EXPECT_EQ(1, b.ReferenceCount());
  a.DropReference();
  EXPECT_EQ(0, Tracked::s_Live);
}

TEST(COWTest, GetCopiesOnlyWhenShared) {
  cow_COW<Tracked> a(new Tracked(5));
  Tracked* original = a.Get();
  EXPECT_EQ(original, a.ConstGet());

  cow_COW<Tracked> b = a;
  EXPECT_TRUE(a.Identical(b));
  b.Get()->value = 6;
  EXPECT_FALSE(a.Identical(b));
  EXPECT_EQ(original, a.ConstGet());
  EXPECT_EQ(5, a.ConstGet()->value);
  EXPECT_EQ(6, b.ConstGet()->value);
  EXPECT_EQ(1, a.ReferenceCount());
  EXPECT_EQ(1, b.ReferenceCount());
}

TEST(COWTest, NullHandlesAreIdenticalWhateverTheirCounts) {
  cow_COW<Tracked> a;
  cow_COW<Tracked> b;
  cow_COW<Tracked> c = b;
  EXPECT_TRUE(a.Identical(b));
  EXPECT_TRUE(a.Identical(c));
  EXPECT_EQ(nullptr, c.Get());
}

TEST(COWTest, VirtualPolicyKeepsTheDynamicType) {
  cow_COW<Shape, cow_Virtual<Shape> > a(new Circle);
  cow_COW<Shape, cow_Virtual<Shape> > b = a;
  Shape* copy = b.Get();
  EXPECT_NE(a.ConstGet(), copy);
  EXPECT_EQ("circle", copy->Name());
  EXPECT_NE(nullptr, dynamic_cast<Circle*>(copy));

  cow_ArrayCOW<Shape, cow_Virtual<Shape> > element(new Circle);
  cow_ArrayCOW<Shape, cow_Virtual<Shape> > sharer = element;
  EXPECT_EQ(2, element.ReferenceCount());
  EXPECT_EQ("circle", sharer.Get()->Name());
  EXPECT_EQ(1, element.ReferenceCount());
}

TEST(COWTest, CopyThatReleasesTheOtherOwnersEndsTheOldReferent) {
  cow_COW<Releasing> a(new Releasing);
  cow_COW<Releasing> b = a;
  g_Other = &b;
  Releasing const* old = a.ConstGet();
  Releasing* mine = a.Get();
  g_Other = nullptr;
  EXPECT_NE(old, mine);
  EXPECT_EQ(1, a.ReferenceCount());
  EXPECT_EQ(0, b.ReferenceCount());
}
