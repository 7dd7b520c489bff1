#ifndef rfm_SpaceReprFile_h
#define rfm_SpaceReprFile_h

#include "rfm_SpaceRepr.h"

#include "rfm_LinkageGroups.h"

// A space stored in a database file: the concatenation of the used part of
// each extent of its linkage chain, in chain order. It has no header of its
// own. The linkages belong to the database's rfm_LinkageGroups, which the
// space asks for its extents and grows them through, so several
// representations of one handle may exist, each with its own position.
//
// Invariants:
// - Every extent before the current one is full: its length equals its
//   allocation. So the location is the sum of the earlier lengths plus the
//   offset in the current extent.
// - A space that writes alone at the end of the file grows in place; only
//   one that another object has overtaken starts a new extent.
// - A space whose quantum is at least a page starts every extent on a page.
// - The cached sizes are recomputed when the linkages' generation moves (at
//   every flush and every reload), so a reader's space stays right across
//   Snap.
class rfm_SpaceReprFile : public rfm_SpaceRepr {
public:
  static constexpr int kSmallestQuantum = 4;
  // Spaces with a quantum of at least this start each extent at a multiple of it.
  static constexpr int kPageSize = rfm_LinkageGroups::kPageSize;

  // A new space among linkages, whose strings go to strings; a quantum below
  // 4 means 4.
  rfm_SpaceReprFile(rfm_LinkageGroups& linkages, rfm_StringManager* strings, int quantum);
  // The existing space at handle.
  rfm_SpaceReprFile(rfm_LinkageGroups& linkages, rfm_StringManager* strings, rfm_Handle const& handle, int quantum);

  bool ReadOnly() const override;
  utl_FileOffset Length() const override;
  void Seek(utl_FileOffset offset) override;
  utl_FileOffset Location() const override { return m_Location; }
  void Flush() override {}
  // Guarantees delta bytes of allocation beyond the location.
  void Extend(utl_FileOffset delta) override;
  int Read(char* buffer, int count) override;
  int Write(char const* buffer, int count) override;
  rfm_StringManager* StringManager() const override;
  rfm_Handle Handle() const override { return m_Head; }
  utl_FileOffset Allocation() const override;
  void Truncate(utl_FileOffset length) override;

private:
  void ComputeSize() const;
  rfm_Handle LastLinkage() const;
  [[noreturn]] void RaiseBadSeek(int line, utl_FileOffset offset) const;

  rfm_LinkageGroups* m_Linkages;
  rfm_StringManager* m_Strings;
  rfm_Handle m_Head;
  int m_Quantum;
  rfm_Handle m_Current;
  utl_FileOffset m_Offset = 0;  // within the current extent
  mutable int m_GenerationSeen;
  utl_FileOffset m_Location = 0;
  mutable utl_FileOffset m_Length = 0;
  mutable utl_FileOffset m_Allocation = 0;
};

#endif
