#ifndef rfm_MemoryIOS_h
#define rfm_MemoryIOS_h

#include "rfm_IOS.h"

#include <algorithm>
#include <cstring>
#include <string>

// A byte sequence in memory behind the typed I/O interfaces, in any byte
// order and with any string manager, for tests of the layers above.
class rfm_MemoryIOS : public rfm_IOS {
public:
  explicit rfm_MemoryIOS(int endType = kRfmFileEndType) : rfm_IOS(endType) {}

  bool ReadOnly() const override { return false; }
  utl_FileOffset Length() const override { return static_cast<utl_FileOffset>(bytes.size()); }
  void Seek(utl_FileOffset offset) override { location = static_cast<std::size_t>(offset); }
  utl_FileOffset Location() const override { return static_cast<utl_FileOffset>(location); }
  void Flush() override {}
  void Extend(utl_FileOffset) override {}
  int Read(char* buffer, int count) override {
    std::size_t n = std::min(bytes.size() - std::min(location, bytes.size()), static_cast<std::size_t>(count));
    std::memcpy(buffer, bytes.data() + location, n);
    location += n;
    return static_cast<int>(n);
  }
  int Write(char const* buffer, int count) override {
    if (bytes.size() < location + static_cast<std::size_t>(count)) bytes.resize(location + count);
    std::memcpy(bytes.data() + location, buffer, static_cast<std::size_t>(count));
    location += static_cast<std::size_t>(count);
    return count;
  }
  rfm_StringManager* StringManager() const override { return manager; }

  std::string bytes;
  std::size_t location = 0;
  rfm_StringManager* manager = nullptr;
};

#endif
