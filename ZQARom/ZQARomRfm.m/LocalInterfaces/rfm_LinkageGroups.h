#ifndef rfm_LinkageGroups_h
#define rfm_LinkageGroups_h

#include "cow_List.h"
#include "rfm_DatabaseGroup.h"

#include <memory>
#include <string>
#include <vector>

class rfm_FileRepr;

// The linkage groups of a database file: where every object's extents lie.
// They are laid out on disk as rfm_GroupLayout.h says and read and written
// here only; the spaces ask this class for their extents and grow them
// through it. Every operation that changes a linkage marks its group dirty
// itself, and a flush writes the dirty groups (Write).
//
// Invariants:
// - The groups stay in memory while the database is open; Linkage() is an
//   index step. Only dirty groups are written, and only by Write.
// - Group offsets strictly increase along the chain: a new group always
//   goes to the end of the file, 1024 bytes past a page boundary as group 0.
// - Write leaves, at every moment, groups that describe a prefix of every
//   object (W2 and W4 of rfm_SharingProtocol.h), so that a writer killed
//   inside a flush loses no earlier flush.
// - Extents and groups never overlap, every linkage continues at most one
//   other, every chain starts at a head, and an extent's used bytes lie
//   within the file: a group list read from disk that breaks these or
//   rfm_LinkageRules is refused whole. Free slots are not read.
class rfm_LinkageGroups {
public:
  // Extents of spaces whose quantum is at least this start on a multiple of it.
  static constexpr int kPageSize = 4096;

  // The groups of file, none yet: Create or Load them.
  explicit rfm_LinkageGroups(rfm_FileRepr& file);
  ~rfm_LinkageGroups();
  rfm_LinkageGroups(rfm_LinkageGroups const&) = delete;
  rfm_LinkageGroups& operator=(rfm_LinkageGroups const&) = delete;

  rfm_FileRepr& File() const { return m_File; }

  // A new file's first group, at the file's end.
  void Create();
  // The groups as the file holds them, for a writer: nothing else writes.
  void Load();
  // The groups as a reader beside a writer must read them (R3, R4): false,
  // with the groups as they were, when they changed under every one of
  // readings; raises when two equal readings find damage.
  bool LoadSteady(int readings);
  // Writes the dirty groups in the order that W2 demands: the string pool's
  // and then the catalogue's growth before any other object's.
  void Write();

  // Moves whenever the groups may have changed under a space: at every
  // Write and every load. A space recomputes its sizes when it moves.
  int Generation() const { return m_Generation; }
  int GroupCount() const { return static_cast<int>(m_Groups.size()); }
  // More links than any chain can have: a longer walk means a damaged file.
  int ChainLimit() const { return GroupCount() * rfm_DatabaseGroup::kSlots; }

  // The linkage of handle; raises the corrupt-file error for a handle
  // outside the groups. Slot 0 passes, so a chain's null end resolves.
  rfm_Linkage const& Linkage(rfm_Handle handle) const;
  // Whether handle names an object: a slot other than 0, in a group that
  // exists, with a location.
  bool HandleOk(rfm_Handle handle) const;
  // The last linkage of the chain that link is part of.
  rfm_Handle ChainEnd(rfm_Handle link) const;
  // The used slots with a location that no other used slot continues, in
  // group and slot order.
  cow_List<rfm_Handle> ObjectHandles() const;
  // The linkages of the chain whose location is past block 0; 0 for a
  // handle that names no object or continues one.
  int ExtentCount(rfm_Handle handle) const;
  // The linkages of handle's chain, 0 when it names nothing.
  int LinkageCount(rfm_Handle handle) const;
  // Past block 0, the last group and the allocation of every extent in use.
  utl_FileOffset LogicalEnd() const;

  // A new object's linkage: a free slot at the end of the last group (a new
  // group when it is full), holding the placeholder location. A placeholder
  // alone is not written: it reaches the file with its space's first growth,
  // or with any other change to its group.
  rfm_Handle NewObject();
  // Makes room for need more bytes after the chain's last extent, last:
  // grows it in place when it lies at the file's end, or chains a new
  // extent when another object lies beyond it. The allocation grows in
  // whole quanta; answers by how much.
  utl_FileOffset Grow(rfm_Handle last, utl_FileOffset need, int quantum);
  // The bytes used in the extent of link.
  void RecordLength(rfm_Handle link, utl_FileOffset length);
  // Grows the file's logical length; when the real file grows, the transfer
  // record follows it.
  void ExtendFile(utl_FileOffset delta);

  [[noreturn]] void RaiseCorrupt(int line) const;

private:
  using GroupList = std::vector<std::unique_ptr<rfm_DatabaseGroup> >;

  rfm_Linkage& Changed(rfm_Handle handle);
  rfm_Handle NewLinkage();
  void CreateGroup();
  // Where a new extent goes: the file's end, on a page for a quantum of a
  // page or more.
  utl_FileOffset StartOfNewExtent(int quantum);
  // Appends the bytes of every group along the chain, read afresh past any
  // cache when asked; raises the corrupt-file error where the chain leaves
  // the file or turns back, with the bytes read until then appended.
  // Answers the stored length that bounded the walk.
  utl_FileOffset ReadChain(std::string& bytes, bool afresh);
  // The groups whose bytes ReadChain read, checked.
  GroupList Decode(std::string const& bytes, utl_FileOffset stored) const;
  void DecodeGroup(char const* bytes, utl_FileOffset offset, rfm_DatabaseGroup& group) const;
  // Holds the slots in use to rfm_LinkageRules and to each other: chains
  // join nowhere, each starts at a head, and no two extents, groups or block
  // 0 share a byte. Marks the linkages that continue a chain. How a chain
  // fills its extents (rfm_ChainSizes) is its space's to check, as it opens.
  void Check(GroupList& groups, utl_FileOffset stored) const;
  void Install(GroupList groups);
  // The referenced tails of groups that match the file.
  void FindReferencedTails();
  // Which of the objects that others refer to owns link: 0 the string pool,
  // 1 the catalogue, 2 neither.
  int ReferencedObject(rfm_Handle link) const;
  // The 28 bytes of link on disk.
  static void Encode(rfm_Linkage const& link, char* bytes);
  // Reads back what Write wrote of each group and compares it with memory.
  void CheckWritten() const;

  rfm_FileRepr& m_File;
  GroupList m_Groups;
  std::unique_ptr<char[]> m_Scratch;  // one group's bytes, for writing groups
  int m_Generation = 0;
  // The last linkages of the string pool and of the catalogue as the file
  // holds them: the only linkages of theirs, besides new ones, that a flush
  // can change. Rows and tables refer to their records, so their growth
  // reaches the file before any other object's.
  rfm_Handle m_ReferencedTails[2];
};

#endif
