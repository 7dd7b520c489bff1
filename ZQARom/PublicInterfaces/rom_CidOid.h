#ifndef rom_CidOid_h
#define rom_CidOid_h

#include "cls_PTrieKeyWords.h"

#include <cstdint>

// Where an object lives in one database: its class (and so its table) and
// its object id, the row number in that table. Class id 1 with a negative
// object id is the stored null reference.
struct rom_CidOid {
  unsigned int m_Cid = 1;
  int m_Oid = -1;

  rom_CidOid() = default;
  rom_CidOid(unsigned int cid, int oid) : m_Cid(cid), m_Oid(oid) {}
  bool operator==(rom_CidOid const& other) const { return m_Cid == other.m_Cid && m_Oid == other.m_Oid; }
  bool operator!=(rom_CidOid const& other) const { return !(*this == other); }
};

// As a key of the object layer's tries: the object id is the low word, so a
// class's objects come together, in row order.
template <>
struct cls_PTrieKeyWords<rom_CidOid> {
  static void ToWords(rom_CidOid const& key, std::uint32_t (&words)[2]) noexcept {
    words[0] = static_cast<std::uint32_t>(key.m_Oid);
    words[1] = key.m_Cid;
  }
};

#endif
