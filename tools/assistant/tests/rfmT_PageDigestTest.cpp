#include "rfmT_PageDigest.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Page(int length) {
  std::string page(static_cast<std::size_t>(length), '\0');
  for (int i = 0; i < length; ++i) page[i] = static_cast<char>((i * 131 + i / 7) % 256);
  return page;
}

std::uint64_t Digest(std::string const& page) { return rfmT_PageDigest(page.data(), static_cast<int>(page.size())); }

}  // namespace

// The assistant names a page stale only when its digest moved: a change the
// digest misses is a reader left with old bytes.
TEST(PageDigestTest, EveryChangedBitAndEveryLengthShows) {
  for (int length : {0, 1, 7, 8, 9, 31, 32, 33, 63, 4096, 4099}) {
    std::string const page = Page(length);
    std::uint64_t const digest = Digest(page);
    EXPECT_EQ(digest, Digest(Page(length)));
    for (int at = 0; at < length; ++at) {
      for (int bit = 0; bit < 8; bit += 3) {
        std::string changed = page;
        changed[at] = static_cast<char>(changed[at] ^ (1 << bit));
        ASSERT_NE(digest, Digest(changed)) << "length " << length << ", byte " << at << ", bit " << bit;
      }
    }
    // A page that only grew by zero bytes has changed too.
    EXPECT_NE(digest, Digest(page + std::string(1, '\0'))) << length;
  }
  // Words moved between lanes, or swapped, are a change.
  std::string page = Page(64);
  std::string swapped = page.substr(8, 8) + page.substr(0, 8) + page.substr(16);
  EXPECT_NE(Digest(page), Digest(swapped));
  std::string rotated = page.substr(32) + page.substr(0, 32);
  EXPECT_NE(Digest(page), Digest(rotated));
}
