#include "cls_ClassRegistrar.h"
#include "cls_CowDtor.h"
#include "cls_CowValue.h"
#include "cls_ReadVisitor.h"
#include "atr_String.h"
#include "cow_COW.h"
#include "nex_PrimException.h"

#include <gtest/gtest.h>

#include <string>

// Named, not anonymous, so that the messages show plain type names.
namespace cowtest {

// Counts the instances alive, so that a test sees who ended a referent.
struct Probe {
  static constexpr unsigned int kClassId = 0x01000011;
  static inline int s_Alive = 0;
  explicit Probe(int value = 0) : m_Value(value) { ++s_Alive; }
  Probe(Probe const& other) : m_Value(other.m_Value) { ++s_Alive; }
  explicit Probe(cls_ReadVisitor const&) : Probe(11) {}
  ~Probe() { --s_Alive; }
  void DBWrite(cls_WriteVisitor const&) const {}
  int m_Value;
};

struct Other {
  static constexpr unsigned int kClassId = 0x01000012;
};

std::string AsMessage(cls_CowValue const& value) {
  try {
    value.As<Other>();
  } catch (nex_PrimException<atr_String, 1> const& e) {
    return e.what();
  }
  return "nothing raised";
}

}  // namespace cowtest

using cowtest::Other;
using cowtest::Probe;

TEST(CowValueTest, SharesTheReferentAndCountOfTheHandlesItComesFromAndGives) {
  {
    cow_COW<Probe> handle(new Probe(7));
    cls_CowValue value(handle);
    EXPECT_TRUE(value.HasValue());
    EXPECT_EQ(handle.ConstGet(), value.Address());
    EXPECT_EQ(2, handle.ReferenceCount());
    {
      cls_CowValue copy(value);
      cls_CowValue assigned;
      assigned = copy;
      EXPECT_EQ(4, value.ReferenceCount());
      cls_CowValue sole{cow_COW<Probe>(new Probe(3))};
      sole = sole;
      ASSERT_TRUE(sole.HasValue());
      EXPECT_EQ(1, sole.ReferenceCount());
    }
    cow_COW<Probe> back = value.As<Probe>();
    EXPECT_TRUE(back.Identical(handle));
    EXPECT_EQ(3, value.ReferenceCount());

    // Writing through a shared handle copies, as for any cow_COW.
    back.Get()->m_Value = 8;
    EXPECT_EQ(7, value.As<Probe>().ConstGet()->m_Value);
    handle = cow_COW<Probe>();
    EXPECT_EQ(1, value.ReferenceCount());
    EXPECT_EQ(2, Probe::s_Alive);
    value.Reset();
    EXPECT_EQ(1, Probe::s_Alive);
    EXPECT_EQ(0, value.ReferenceCount());
  }
  EXPECT_EQ(0, Probe::s_Alive);
}

TEST(CowValueTest, GivesItsValueOnlyAsTheExactHandleTypeItHolds) {
  cls_CowValue value{cow_COW<Probe>(new Probe(1))};
  EXPECT_TRUE(value.Holds<Probe>());
  EXPECT_FALSE(value.Holds<Other>());
  EXPECT_FALSE((value.Holds<Probe, cow_Virtual<Probe>>()));
  EXPECT_EQ(
      "cls_CowValue::As - The value holds cow_COW<cowtest::Probe, cow_Direct<cowtest::Probe> >, not "
      "cow_COW<cowtest::Other, cow_Direct<cowtest::Other> >.",
      cowtest::AsMessage(value));

  cls_CowValue empty;
  EXPECT_FALSE(empty.HasValue());
  EXPECT_FALSE(empty.Holds<Probe>());
  EXPECT_EQ(0, empty.ReferenceCount());
  EXPECT_FALSE(empty.As<Probe>().HasValue());
}

TEST(CowValueTest, AdoptsWhatAClassBuiltAndEndsItThroughTheMetadataOrTheLastHandle) {
  cls_ClassRegistrar registrar;
  cls_ClassMetadata const& metadata =
      registrar.Register<Probe>("Probe", Probe::kClassId, 1, cls_kNoClass).AddDtor(&cls_CowDtor<Probe>);
  {
    cls_CowValue built(metadata.Ctor(cls_ReadVisitor(nullptr)), metadata);
    EXPECT_EQ(1, built.ReferenceCount());
    EXPECT_TRUE(built.Holds<Probe>());
    EXPECT_FALSE((built.Holds<Probe, cow_Virtual<Probe>>()));
    EXPECT_EQ("cls_CowValue::As - The value holds Probe, not cow_COW<cowtest::Other, cow_Direct<cowtest::Other> >.",
              cowtest::AsMessage(built));

    cow_COW<Probe> handle = built.As<Probe>();
    EXPECT_EQ(11, handle.ConstGet()->m_Value);
    cls_CowValue other(metadata.Ctor(cls_ReadVisitor(nullptr)), metadata);
    EXPECT_EQ(2, Probe::s_Alive);
    // What the object layer's cache does through DeleteCow.
    metadata.DeleteCow(&other);
    metadata.DeleteCow(&built);
    EXPECT_EQ(1, Probe::s_Alive);
    EXPECT_EQ(1, handle.ReferenceCount());
  }
  EXPECT_EQ(0, Probe::s_Alive);
}
