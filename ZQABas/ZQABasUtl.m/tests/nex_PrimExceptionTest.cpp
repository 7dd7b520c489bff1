#include "ZQABasAssert.h"
#include "atr_String.h"
#include "cow_String.h"
#include "nex_PrimException.h"

#include <gtest/gtest.h>

namespace {

char const kSource[] = "ZQABas/tests/nex_PrimExceptionTest";

class DerivedMessage : public nex_PrimException<atr_String, 1> {
public:
  explicit DerivedMessage(atr_String text) : nex_PrimException(std::move(text)) {}
  [[noreturn]] void Propagate() const override { throw *this; }
};

}  // namespace

TEST(ExceptionTest, ThrowRecordsWhereAndKeepsTheDynamicType) {
  try {
    ZQABasException&& base = DerivedMessage(atr_String("boom"));
    base.Throw(kSource, 42);
    FAIL() << "Throw returned";
  } catch (DerivedMessage const& e) {
    EXPECT_STREQ("boom", e.what());
    EXPECT_STREQ(kSource, e.SourcePath());
    EXPECT_EQ(42, e.Line());
  }
}

TEST(ExceptionTest, MessagesAndAssertionsAreTheirOwnTypes) {
  try {
    nex_ThrowMessage(kSource, 7, atr_String("***ERROR: something."));
    FAIL();
  } catch (nex_PrimException<cow_String, 3> const&) {
    FAIL() << "a message was raised as an assertion";
  } catch (nex_PrimException<atr_String, 1> const& e) {
    EXPECT_EQ(atr_String("***ERROR: something."), e.Value());
    EXPECT_EQ(7, e.Line());
  }

  int value = 3;
  EXPECT_NO_THROW(ZQA_ASSERT(kSource, value == 3));
  try {
    ZQA_ASSERT(kSource, !"Incorrect file access.");
    FAIL();
  } catch (nex_PrimException<cow_String, 3> const& e) {
    EXPECT_STREQ("!\"Incorrect file access.\"", e.what());
    EXPECT_STREQ(kSource, e.SourcePath());
  }
}
