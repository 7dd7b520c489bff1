#include "rfm_FileCache.h"
#include "rfm_TestDatabase.h"
#include "utl_BinIStream.h"
#include "utl_BinOStream.h"
#include "utl_CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

namespace {

// Sets a command-line option for the lifetime of a scope.
class ScopedOption {
public:
  ScopedOption(char const* key, char const* value) : m_Key(key) { utl_CommandLine::Instance().Set(key, value); }
  ~ScopedOption() { utl_CommandLine::Instance().Remove(m_Key); }

private:
  char const* m_Key;
};

std::vector<long long> Keys(cow_List<long long> const& list) {
  std::vector<long long> keys;
  for (int index = 0; index < list.Length(); ++index) keys.push_back(list[index]);
  return keys;
}

}  // namespace

TEST(FileCacheTest, PageSizesAndLimitsFromTheCommandLine) {
  EXPECT_EQ(1 << 20, rfm_FileCache::PageSizeFromCommandLine());
  for (auto [kib, bytes] : {std::pair{"0", 4096}, {"5", 8192}, {"65536", 64 << 20}, {"65537", 2 << 20}}) {
    ScopedOption size("nzdb_page_size", kib);
    EXPECT_EQ(bytes, rfm_FileCache::PageSizeFromCommandLine()) << kib;
  }
  unsigned long long const available = 100ull << 20;
  EXPECT_EQ(80, rfm_FileCache::PageLimitFor(1 << 20, available));
  {
    ScopedOption limit("nzdb_cache_limit", "10");
    EXPECT_EQ(10, rfm_FileCache::PageLimitFor(1 << 20, available));
  }
  ScopedOption limit("nzdb_cache_limit", "1000");
  EXPECT_EQ(80, rfm_FileCache::PageLimitFor(1 << 20, available));
}

TEST(FileCacheTest, BlocksAreFreeThenNewThenTakenFromTheLongestIdle) {
  rfm_FileCache cache(4096, 1);
  rfm_FileCachePageMap first;
  rfm_FileCachePageMap second;
  rfm_FileCacheBlock* block = cache.GetPage(0, &first);
  EXPECT_EQ("Cache Space Exausted.", MessageOf([&] { cache.GetPage(4096, &second); }));

  // An idle block goes to another file, which leaves its old owner a null.
  cache.IdlePage(block);
  EXPECT_EQ(block, cache.GetPage(4096, &second));
  EXPECT_EQ(nullptr, first.Get(0));
  EXPECT_EQ(std::vector<long long>{0}, Keys(cache.SiftMap(&first)));
  EXPECT_TRUE(Keys(cache.SiftMap(&first)).empty());

  // A freed block is taken before the limit is looked at.
  cache.IdlePage(block);
  cache.FreePage(4096, &second);
  EXPECT_EQ(nullptr, second.Get(4096));
  EXPECT_EQ(block, cache.GetPage(4096, &second));
  EXPECT_EQ(block, second.Get(4096));
  EXPECT_EQ(1, cache.PageCount());
}

TEST(FileCacheTest, FetchedPagesAreReadBackInParts) {
  rfm_FileCache cache(4096, 4);
  rfm_FileCachePageMap pages;
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  {
    utl_BinOStream out(ends[1], 0);
    out.WriteInt(5);
    out.Write("hello", 5);
    out.WriteInt(4097);
    out.Flush();
  }
  ::close(ends[1]);
  utl_BinIStream in(ends[0], 0);
  rfm_FileCacheBlock* block = cache.GetPage(8192, &pages);
  block->FetchPage(in);
  EXPECT_EQ(5, block->Length());

  char buffer[16] = {};
  char* cursor = buffer;
  int count = 0;
  int remaining = 10;
  long long position = 8193;
  block->ReadPartial(count, cursor, remaining, position);
  EXPECT_EQ("ello", std::string(buffer, 4));
  EXPECT_EQ(4, count);
  EXPECT_EQ(6, remaining);
  EXPECT_EQ(8197, position);
  EXPECT_EQ(buffer + 4, cursor);

  // A page that would not fit is refused before anything is written.
  rfm_FileCacheBlock* next = cache.GetPage(0, &pages);
  EXPECT_NE(std::string::npos, MessageOf([&] { next->FetchPage(in); }).find("4097"));
  ::close(ends[0]);
}
