#include "atr_StringBase.h"
#include "cow_String.h"
#include "mem_Alloc.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(StringTest, CopiesShareCharactersUntilOneChanges) {
  cow_String a("alpha");
  cow_String b = a;
  EXPECT_EQ(a.CStr(), b.CStr());
  EXPECT_EQ(2, a.ReferenceCount());

  b.Append("-beta");
  EXPECT_STREQ("alpha", a.CStr());
  EXPECT_STREQ("alpha-beta", b.CStr());
  EXPECT_EQ(1, a.ReferenceCount());
  EXPECT_EQ(1, b.ReferenceCount());

  a = a;
  EXPECT_STREQ("alpha", a.CStr());
  EXPECT_EQ(1, a.ReferenceCount());
}

TEST(StringTest, EmptyStringHasNoRepresentation) {
  cow_String empty;
  EXPECT_TRUE(empty.Empty());
  EXPECT_EQ(0, empty.Length());
  EXPECT_STREQ("", empty.CStr());
  EXPECT_EQ(0, empty.ReferenceCount());
  cow_String fromNull(static_cast<char const*>(nullptr));
  EXPECT_TRUE(fromNull.Empty());
  EXPECT_EQ(empty, fromNull);
}

TEST(StringTest, AppendGrowsInPlaceAndAcceptsItsOwnCharacters) {
  cow_String s("ab");
  for (int i = 0; i < 10; ++i) s.Append(s);
  EXPECT_EQ(2 * 1024, s.Length());
  EXPECT_EQ('a', s[2046]);
  EXPECT_EQ('b', s[2047]);

  cow_String part("0123456789");
  part.append(part.CStr() + 2, -1, 1, 3);
  EXPECT_STREQ("0123456789345", part.CStr());
}

TEST(StringTest, EmbeddedZerosAndAdoptedBuffersKeepTheirLength) {
  cow_String withZero("a\0b", 3);
  EXPECT_EQ(3, withZero.Length());
  EXPECT_NE(withZero, cow_String("a"));

  char* buffer = static_cast<char*>(mem_Malloc(4));
  std::memcpy(buffer, "x\0z", 3);
  cow_String adopted = cow_String::Adopt(buffer, 3);
  EXPECT_EQ(3, adopted.Length());
  EXPECT_EQ('z', adopted[2]);
  EXPECT_EQ('\0', adopted.CStr()[3]);
  cow_String copy = adopted;
  copy.Append("!");
  EXPECT_EQ(4, copy.Length());
  EXPECT_EQ(3, adopted.Length());
}

TEST(StringTest, NumbersBecomeTheirText) {
  EXPECT_EQ(cow_String("-2147483648"), cow_String(-2147483647 - 1));
  EXPECT_EQ(cow_String("4294967295"), cow_String(4294967295u));
}

TEST(StringTest, SearchingAndSlicing) {
  cow_String s("one/two/three");
  EXPECT_EQ(3, s.Find("/"));
  EXPECT_EQ(7, s.Find("/", 4));
  EXPECT_EQ(atr_StringBase::kNotFound, s.Find("four"));
  EXPECT_EQ(7, s.rfind("/"));
  EXPECT_EQ(3, s.rfind("/", 6));
  EXPECT_EQ(atr_StringBase::kNotFound, s.rfind("one", -1));
  EXPECT_EQ(cow_String("two"), s.Substr(4, 3));
  EXPECT_EQ(cow_String("three"), s.Substr(8, atr_StringBase::kAll));
  EXPECT_EQ(cow_String(""), s.Substr(50, 2));
  EXPECT_EQ(cow_String("one"), s.Substr(-4, 3));
}

TEST(StringTest, EditingOperations) {
  cow_String s("a-b-c-d");
  cow_String shared = s;
  EXPECT_EQ(2, s.Substitute(cow_String("-"), cow_String("+"), 2));
  EXPECT_STREQ("a+b+c-d", s.CStr());
  EXPECT_STREQ("a-b-c-d", shared.CStr());
  EXPECT_EQ(1, s.Substitute(cow_String("-"), cow_String(""), 0));
  EXPECT_STREQ("a+b+cd", s.CStr());
  EXPECT_EQ(0, s.Substitute(cow_String("x"), cow_String("y"), 0));

  s.Erase(1, 2);
  EXPECT_STREQ("a+cd", s.CStr());
  s.replace(1, 1, "XYZ", -1, 1, 5);
  EXPECT_STREQ("aYZcd", s.CStr());
  s = "plain";
  EXPECT_STREQ("plain", s.CStr());
}

TEST(StringTest, OrderIsByBytes) {
  EXPECT_LT(cow_String("abc"), cow_String("abd"));
  EXPECT_LT(cow_String("ab"), cow_String("abc"));
  EXPECT_LT(cow_String("Z"), cow_String("a"));
  EXPECT_FALSE(cow_String("b") < cow_String("b"));
  EXPECT_TRUE(cow_String("b") == "b");
  EXPECT_TRUE(cow_String("b") != "bb");
}
