#ifndef rom_CidOidNdx_h
#define rom_CidOidNdx_h

#include "cls_PTrieKeyWords.h"

#include <cstdint>

// An object's row in one of several databases: its class id and object id
// (see rom_CidOid), and the index that tells the databases apart (see
// rom_UtlDatabase::Index). A copy keys what it has copied by it, so that
// rows of equal numbers in two sources stay two objects.
struct rom_CidOidNdx {
  unsigned int m_Cid = 1;
  int m_Oid = -1;
  int m_Ndx = -1;

  rom_CidOidNdx() = default;
  rom_CidOidNdx(unsigned int cid, int oid, int ndx) : m_Cid(cid), m_Oid(oid), m_Ndx(ndx) {}
  bool operator==(rom_CidOidNdx const& other) const {
    return m_Cid == other.m_Cid && m_Oid == other.m_Oid && m_Ndx == other.m_Ndx;
  }
  bool operator!=(rom_CidOidNdx const& other) const { return !(*this == other); }
};

// As a trie key: the object id is the low word and the index the high one,
// so one database's objects come together, class by class, in row order.
template <>
struct cls_PTrieKeyWords<rom_CidOidNdx> {
  static void ToWords(rom_CidOidNdx const& key, std::uint32_t (&words)[3]) noexcept {
    words[0] = static_cast<std::uint32_t>(key.m_Oid);
    words[1] = key.m_Cid;
    words[2] = static_cast<std::uint32_t>(key.m_Ndx);
  }
};

#endif
