#include "zip_Zip.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned long kSegment = 64 * 1024;

// Rows of a node id and six doubles, as a results table holds them: what
// the compressed file's segments carry.
Bytes NodeRows(unsigned long length) {
  Bytes bytes;
  for (std::int32_t node = 0; bytes.size() < length; ++node) {
    double values[6] = {node * 0.0125, (node / 160) * 0.0125, 0.5, std::sin(node * 0.01) * 2.5e-3, 0, 1e-4 * node};
    auto const* id = reinterpret_cast<unsigned char const*>(&node);
    bytes.insert(bytes.end(), id, id + sizeof node);
    auto const* doubles = reinterpret_cast<unsigned char const*>(values);
    bytes.insert(bytes.end(), doubles, doubles + sizeof values);
  }
  bytes.resize(length);
  return bytes;
}

Bytes ZipCompress(Bytes const& plain, int level) {
  Bytes packed(compressBound(plain.size()));
  unsigned long size = packed.size();
  EXPECT_EQ(zip_compress2(packed.data(), &size, plain.data(), plain.size(), level), Z_OK) << "level " << level;
  packed.resize(size);
  return packed;
}

// zlib's own answer and zip_uncompress's for the same stream and room.
struct Statuses {
  int zlib;
  int zip;
};

Statuses UncompressBoth(Bytes const& packed, unsigned long room) {
  Bytes out(room + 1);
  uLongf zlibSize = room;
  unsigned long zipSize = room;
  return {uncompress(out.data(), &zlibSize, packed.data(), packed.size()),
          zip_uncompress(out.data(), &zipSize, packed.data(), packed.size())};
}

}  // namespace

TEST(ZipTest, StreamsAreReadByZlibAndZlibsAreRead) {
  for (unsigned long length : {0ul, 1ul, 1000ul, kSegment - 17, kSegment}) {
    Bytes const plain = NodeRows(length);
    for (int level : {Z_DEFAULT_COMPRESSION, 0, 1, 6, 9}) {
      SCOPED_TRACE(::testing::Message() << "length " << length << ", level " << level);
      Bytes packed = ZipCompress(plain, level);
      Bytes back(length + 1);
      uLongf size = back.size();
      ASSERT_EQ(uncompress(back.data(), &size, packed.data(), packed.size()), Z_OK);
      EXPECT_EQ(Bytes(back.begin(), back.begin() + static_cast<long>(size)), plain);

      Bytes zlibPacked(compressBound(length));
      uLongf zlibSize = zlibPacked.size();
      ASSERT_EQ(compress2(zlibPacked.data(), &zlibSize, plain.data(), length, level), Z_OK);
      zlibPacked.resize(zlibSize);
      // The container hands the decoder a few bytes past the stream's end.
      zlibPacked.insert(zlibPacked.end(), {0xde, 0xad, 0xbe, 0xef});
      unsigned long zipSize = back.size();
      ASSERT_EQ(zip_uncompress(back.data(), &zipSize, zlibPacked.data(), zlibPacked.size()), Z_OK);
      EXPECT_EQ(Bytes(back.begin(), back.begin() + static_cast<long>(zipSize)), plain);
    }
  }
}

TEST(ZipTest, ShortRoomAndDamageGiveZlibsStatuses) {
  Bytes const plain = NodeRows(kSegment);
  Bytes const packed = ZipCompress(plain, 6);
  ASSERT_GT(packed.size(), 64u);

  unsigned long room = packed.size() / 2;
  Bytes out(packed.size());
  EXPECT_EQ(zip_compress2(out.data(), &room, plain.data(), plain.size(), 6), Z_BUF_ERROR);
  room = out.size();
  EXPECT_EQ(zip_compress2(out.data(), &room, plain.data(), plain.size(), 10), Z_STREAM_ERROR);

  Statuses shortRoom = UncompressBoth(packed, kSegment - 1);
  EXPECT_EQ(shortRoom.zip, Z_BUF_ERROR);
  EXPECT_EQ(shortRoom.zip, shortRoom.zlib);

  Bytes cut(packed.begin(), packed.begin() + static_cast<long>(packed.size() / 2));
  Bytes flipped = packed;
  for (std::size_t i = flipped.size() / 3; i < flipped.size() / 3 + 8; ++i) flipped[i] ^= 0x5a;
  Bytes badChecksum = packed;
  // The last byte of the stream belongs to its checksum.
  badChecksum[badChecksum.size() - 1] ^= 1;
  Bytes badHeader = packed;
  badHeader[0] = 0x79;
  for (Bytes const& damaged : {cut, flipped, badChecksum, badHeader, Bytes()}) {
    Statuses statuses = UncompressBoth(damaged, 2 * kSegment);
    EXPECT_EQ(statuses.zip, Z_DATA_ERROR) << "damaged stream of " << damaged.size() << " bytes";
    EXPECT_EQ(statuses.zip, statuses.zlib) << "damaged stream of " << damaged.size() << " bytes";
  }
}
