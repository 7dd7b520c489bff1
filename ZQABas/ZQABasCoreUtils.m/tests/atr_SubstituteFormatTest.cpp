#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <gtest/gtest.h>

TEST(SubstituteFormatTest, SequentialAndPositionalForms) {
  EXPECT_EQ(atr_String("*** ERROR: No such file: /tmp/a.zdb."),
            atr_SubstituteFormat("*** ERROR: No such file: %s.", "/tmp/a.zdb"));
  EXPECT_EQ(atr_String("count=7 ratio=0.500000"), atr_SubstituteFormat("count=%d ratio=%f", 7, 0.5));
  EXPECT_EQ(atr_String("(T:F)"), atr_SubstituteFormat("(%1$s:%2$s)", "T", "F"));
  EXPECT_EQ(atr_String("F then T"), atr_SubstituteFormat("%2$s then %1$s", "T", "F"));
  EXPECT_EQ(atr_String("100% sure"), atr_SubstituteFormat("%d%% sure", 100));
}

TEST(SubstituteFormatTest, WidthsPrecisionsAndWordFormsFollowPrintf) {
  EXPECT_EQ(atr_String("Object: 0000020a - Offset:                   12"),
            atr_SubstituteFormat("Object: %08x - Offset: %20.0lf", 522, 12.0));
  EXPECT_EQ(atr_String("FFFFFFFF"), atr_SubstituteFormat("%08X", -1));
  EXPECT_EQ(atr_String("3.14"), atr_SubstituteFormat("%.2f", 3.14159));
  EXPECT_EQ(atr_String("[  ab]"), atr_SubstituteFormat("[%4s]", "ab"));
  EXPECT_EQ(atr_String("5000000000"), atr_SubstituteFormat("%d", 5000000000LL));
}

TEST(SubstituteFormatTest, MismatchedOrMissingArgumentsNeverReadPastTheList) {
  EXPECT_EQ(atr_String("n=12"), atr_SubstituteFormat("n=%s", 12));
  EXPECT_EQ(atr_String("x=abc"), atr_SubstituteFormat("x=%d", "abc"));
  EXPECT_EQ(atr_String("%s %s %1$s"), atr_SubstituteFormat("%s %s %1$s"));
  EXPECT_EQ(atr_String("one %s"), atr_SubstituteFormat("%s %s", "one"));
  EXPECT_EQ(atr_String("50%"), atr_SubstituteFormat("50%"));
  EXPECT_EQ(atr_String("%y"), atr_SubstituteFormat("%y", 1));
  std::string longText(300, 'q');
  EXPECT_EQ(300, atr_SubstituteFormat("%s", longText.c_str()).Length());
}

TEST(SubstituteFormatTest, TranslationIsIdentityUntilATranslatorIsSet) {
  EXPECT_EQ(atr_String("hello"), atr_translate("hello"));
  atr_SetTranslator([](char const* text) {
    atr_String translated("<");
    translated.append(text, -1, 0, atr_StringBase::kAll);
    return translated;
  });
  EXPECT_EQ(atr_String("<hello"), atr_translate("hello"));
  atr_SetTranslator(nullptr);
  EXPECT_EQ(atr_String("hello"), atr_translate("hello"));
}
