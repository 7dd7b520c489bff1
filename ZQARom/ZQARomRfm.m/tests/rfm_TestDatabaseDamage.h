#ifndef rfm_TestDatabaseDamage_h
#define rfm_TestDatabaseDamage_h

#include "rfm_SampleDatabase.h"
#include "rfm_TestBytes.h"
#include "rfm_TestDamage.h"

#include <stdexcept>
#include <string>
#include <vector>

// Damage to a database's own bytes, for the tests that damage files and
// read them back: the damaged-file tests of the record store, and zdb's
// check held against the library.

constexpr std::size_t kBlock0 = 1024;
constexpr std::size_t kLinkage = 28;
constexpr std::size_t kGroup = 512 * kLinkage;

// The layout of a database's bytes, read straight from them: block 0, then
// linkage groups of 512 linkages (allocation, length, location as doubles,
// next handle), slot 0 of each leading to the next group.
inline std::size_t StoredOffset(std::string const& bytes, std::size_t at) {
  return static_cast<std::size_t>(StoredDouble(bytes, at) + 0.5);
}

class DatabaseLayout {
public:
  explicit DatabaseLayout(std::string const& bytes) : m_Bytes(bytes) {
    for (std::size_t group = kBlock0; group != 0; group = StoredOffset(bytes, group + 16)) m_Groups.push_back(group);
  }

  std::vector<std::size_t> const& Groups() const { return m_Groups; }
  std::size_t Slot(int handle) const {
    return m_Groups.at(static_cast<std::size_t>(handle) >> 9) + static_cast<std::size_t>(handle & 511) * kLinkage;
  }
  // Slots in use in a group: up to the first free one after slot 0.
  int Used(std::size_t group) const {
    int slot = 1;
    while (slot < 512 && StoredOffset(m_Bytes, m_Groups[group] + slot * kLinkage + 16) != 0) ++slot;
    return slot;
  }
  // Where byte `at` of the object at handle lies in the file.
  std::size_t Locate(int handle, std::size_t at) const {
    for (int link = handle; link != 0; link = StoredInt(m_Bytes, Slot(link) + 24)) {
      std::size_t length = StoredOffset(m_Bytes, Slot(link) + 8);
      if (at < length) return StoredOffset(m_Bytes, Slot(link) + 16) + at;
      at -= length;
    }
    throw std::out_of_range("beyond the object");
  }
  std::size_t Length(int handle) const {
    std::size_t length = 0;
    for (int link = handle; link != 0; link = StoredInt(m_Bytes, Slot(link) + 24)) {
      length += StoredOffset(m_Bytes, Slot(link) + 8);
    }
    return length;
  }
  Locator In(int handle, std::size_t at) const {
    return [this, handle, at](std::size_t i) { return Locate(handle, at + i); };
  }
  std::int32_t Int(int handle, std::size_t at) const {
    std::string word;
    for (std::size_t i = 0; i < 4; ++i) word += m_Bytes.at(Locate(handle, at + i));
    return StoredInt(word, 0);
  }
  // Whether size bytes from start are free: in the file, and in no extent,
  // group or block 0, the one extent at the linkage at `except` aside.
  bool Free(long long start, long long size, std::size_t except) const {
    if (start < static_cast<long long>(kBlock0) || start + size > static_cast<long long>(m_Bytes.size())) return false;
    for (std::size_t group = 0; group < m_Groups.size(); ++group) {
      auto taken = [&](long long from, long long bytes) { return from < start + size && start < from + bytes; };
      if (taken(static_cast<long long>(m_Groups[group]), kGroup)) return false;
      for (int slot = 1; slot < Used(group); ++slot) {
        std::size_t const at = m_Groups[group] + static_cast<std::size_t>(slot) * kLinkage;
        long long const allocation = static_cast<long long>(StoredOffset(m_Bytes, at));
        long long const location = static_cast<long long>(StoredOffset(m_Bytes, at + 16));
        if (at != except && allocation > 0 && taken(location, allocation)) return false;
      }
    }
    return true;
  }

private:
  std::string const& m_Bytes;
  std::vector<std::size_t> m_Groups;
};

// Every field of block 0, of the first slots of each group, its last slot in
// use and its first free one, of the string pool, the catalogue and each of
// the sample's objects (see rfm_SampleDatabase), and cuts at many lengths;
// each case classed by what the damaged bytes held.
std::vector<DamageCase> DatabaseDamage(std::string const& bytes,
                                       std::vector<rfm_SampleDatabase::Object> const& objects);

#endif
