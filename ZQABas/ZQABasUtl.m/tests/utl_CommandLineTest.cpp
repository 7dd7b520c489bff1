#include "utl_CommandLine.h"

#include "atr_String.h"
#include "nex_PrimException.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

namespace {

using Message = nex_PrimException<atr_String, 1>;

std::string MessageOf(char const* key) {
  try {
    utl_CommandLine::Instance().ConstGetValueAsInt(key);
  } catch (Message const& e) {
    return e.Value().CStr();
  }
  return "no failure";
}

}  // namespace

TEST(CommandLineTest, ParseTakesBothFormsAndLeavesOtherArguments) {
  utl_CommandLine& options = utl_CommandLine::Instance();
  char const* argv[] = {"-argv0", "-nzdb_page_size", "-64", "nzdb_cache_limit=12", "plain", "-job=a=b", "=x", "-last"};
  options.Parse(8, argv);
  EXPECT_EQ(-64, options.ConstGetValueAsInt("nzdb_page_size"));
  EXPECT_EQ(12, options.ConstGetValueAsInt("nzdb_cache_limit"));
  EXPECT_EQ("a=b", options.GetValue("job"));
  EXPECT_TRUE(options.IsMember("last"));
  EXPECT_EQ("", options.GetValue("last"));
  EXPECT_FALSE(options.IsMember("argv0"));
  EXPECT_FALSE(options.IsMember("plain"));
  EXPECT_FALSE(options.IsMember(""));
  for (char const* key : {"nzdb_page_size", "nzdb_cache_limit", "job", "last"}) options.Remove(key);
}

TEST(CommandLineTest, IntegerValuesAndClearFailures) {
  utl_CommandLine& options = utl_CommandLine::Instance();
  options.Set("size", " 2048 ");
  EXPECT_EQ(2048, options.ConstGetValueAsInt("size"));
  options.Set("size", "12x");
  EXPECT_EQ("The command-line option size has the value \"12x\", which is not an integer", MessageOf("size"));
  options.Set("size", "2147483648");
  EXPECT_NE("no failure", MessageOf("size"));
  options.Set("size", "");
  EXPECT_NE("no failure", MessageOf("size"));
  options.Remove("size");
  EXPECT_FALSE(options.IsMember("size"));
  EXPECT_EQ("The command-line option size is not set", MessageOf("size"));
}
