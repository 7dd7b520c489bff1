#ifndef rfm_TestBytes_h
#define rfm_TestBytes_h

#include <cstdint>
#include <cstring>
#include <string>

// Little-endian numbers read straight out of a file's bytes, independent of
// the code under test.
inline std::int32_t StoredInt(std::string const& bytes, std::size_t offset) {
  std::uint32_t word = 0;
  for (int i = 3; i >= 0; --i) word = (word << 8) | static_cast<unsigned char>(bytes.at(offset + i));
  return static_cast<std::int32_t>(word);
}

inline double StoredDouble(std::string const& bytes, std::size_t offset) {
  std::uint64_t bits = 0;
  for (int i = 7; i >= 0; --i) bits = (bits << 8) | static_cast<unsigned char>(bytes.at(offset + i));
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

inline void PutStoredInt(std::string& bytes, std::size_t offset, std::int32_t value) {
  auto word = static_cast<std::uint32_t>(value);
  for (int i = 0; i < 4; ++i) bytes.at(offset + i) = static_cast<char>((word >> (8 * i)) & 0xff);
}

inline void PutStoredDouble(std::string& bytes, std::size_t offset, double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  for (int i = 0; i < 8; ++i) bytes.at(offset + i) = static_cast<char>((bits >> (8 * i)) & 0xff);
}

#endif
