#ifndef rfm_StringManagerFile_h
#define rfm_StringManagerFile_h

#include "omi_HashTable.h"
#include "rfm_SpaceRepr.h"
#include "rfm_StringManager.h"

#include <cstddef>
#include <memory>
#include <vector>

// The string pool of a database, on the space at handle 1. Every string is
// stored once; elsewhere the file holds its external string, the offset of
// its record in the pool as a stored offset.
//
//  offset  size  content
//       0     4  0xAAFFBBEE
//       4        records, without gaps:
//          4     length N, integer
//          N     the characters, no terminator
//        0-3     zero bytes up to a multiple of 4
//
// Invariants: both maps hold every string known in this process, written
// or not, and agree with each other; records at and above the space's
// length are pending, in m_Pending in offset order, and reach the space in
// one write at Flush; m_NextFree is the offset the next new string gets.
class rfm_StringManagerFile : public rfm_StringManager {
public:
  rfm_StringManagerFile() = default;
  ~rfm_StringManagerFile() override;

  // Takes ownership of space (null closes the pool) and loads its strings.
  void Open(rfm_SpaceRepr* space);
  // Reads the records that the space has beyond those known: at opening, and
  // lazily when a reader meets an offset written since.
  void Load();
  // The string stored at offset; raises when there is none, even after a Load.
  cow_String String(utl_FileOffset offset);
  // The offset of text, given a new record (written at the next Flush) if
  // the pool does not hold it yet.
  utl_FileOffset String(cow_String const& text);

  void Flush() override;
  void Neuter(char const* external, cow_String const& replacement) override;
  void Internalize(char const* source, cow_String* strings, int count) override;
  void Externalize(char* target, cow_String const* strings, int count) override;
  int ExternalStringSize() const override;

  int Count() const { return m_Offset2Name.Size(); }
  utl_FileOffset EndOffset() const { return m_NextFree; }

private:
  static constexpr utl_FileOffset kFirstRecord = 4;

  static constexpr std::size_t kRecentStrings = 4096;

  static utl_FileOffset RecordSize(int length) { return 4 + ((static_cast<utl_FileOffset>(length) + 3) & ~3); }
  void Remember(cow_String const& text, utl_FileOffset offset);
  utl_FileOffset Lookup(cow_String const& text);

  // Every string of a row passes through these maps, strings are never
  // forgotten, and nothing needs the keys in order: so they are hashed.
  std::unique_ptr<rfm_SpaceRepr> m_Space;
  utl_FileOffset m_NextFree = kFirstRecord;
  omi_HashTable<cow_String, utl_FileOffset> m_Name2Offset;
  omi_HashTable<utl_FileOffset, cow_String> m_Offset2Name;
  std::vector<cow_String> m_Pending;
  // Rows are written from a few strings over and over, each usually the
  // same shared representation: the last strings looked up, by the address
  // of their characters, answer those without hashing. An entry holds its
  // string, so no other string can have those characters' address while it
  // stands; a shared representation is never changed in place.
  struct Recent {
    cow_String m_Text;
    utl_FileOffset m_Offset = 0;
  };
  std::vector<Recent> m_Recent = std::vector<Recent>(kRecentStrings);
};

#endif
