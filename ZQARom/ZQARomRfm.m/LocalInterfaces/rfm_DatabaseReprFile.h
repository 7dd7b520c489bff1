#ifndef rfm_DatabaseReprFile_h
#define rfm_DatabaseReprFile_h

#include "rfm_DatabaseGroup.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_File.h"
#include "rfm_FileRepr.h"
#include "rfm_Space.h"
#include "rfm_StringManagerFile.h"

#include <memory>
#include <string>
#include <vector>

// A database in a file: block 0, the chain of linkage groups that lists
// where every object's bytes lie (laid out as rfm_GroupLayout.h says), and
// the objects themselves.
//
// Invariants:
// - The groups stay in memory while the database is open; Linkage() is an
//   index step. Only dirty groups are written, and only at Flush.
// - The flush count is written after everything it vouches for.
// - Group offsets strictly increase along the chain: a new group always
//   goes to the end of the file, 1024 bytes past a page boundary as group 0.
// - A flush rewrites the groups in an order that leaves, at every moment,
//   groups that describe a prefix of every object (see DumpGroupList), so
//   that a writer killed inside a flush loses no earlier flush.
// - Extents and groups never overlap, every linkage continues at most one
//   other, every chain starts at a head, and an extent's used bytes lie
//   within the file: a group list read from disk that breaks these or
//   rfm_LinkageRules is refused whole. Free slots are not read.
class rfm_DatabaseReprFile : public rfm_DatabaseRepr {
public:
  explicit rfm_DatabaseReprFile(rfm_File const& file);
  ~rfm_DatabaseReprFile() override;

  void Create(cow_String const& magic, cow_String const& description, long creationTime);
  void Open(cow_String const& magic);
  static bool IsMagic(rfm_File const& file, cow_String const& magic);
  static long GetCreationTime(rfm_File const& file);

  cow_String FileName() const override { return m_File.FileName(); }
  cow_String Description() const override;
  bool ReadOnly() const override { return m_File.ReadOnly(); }
  void Flush() override;
  bool Snap() override;
  int GetFlushCount() const override { return m_FlushCount; }
  void SetCreationTime(long creationTime) override;
  rfm_Handle RootTableHandle() const override;
  rfm_Handle RootTableHandle2() const override;
  rfm_FileStatus::RfmFileStatus FileStatus() override { return File().FileStatus(); }
  cow_String CheckNZDBCache() override { return File().CheckNZDBCache(); }
  void ReaderSemaphoreSet() override { File().ReaderSemaphoreSet(); }
  void ReaderSemaphoreClear() override { File().ReaderSemaphoreClear(); }
  cow_List<cow_String> GetObjStatistics(rfm_Handle const& handle) const override;
  cow_List<cow_String> GetDBStatistics() const override;
  // The used slots with a location that no other used slot continues, in
  // group and slot order.
  cow_List<rfm_Handle> ObjectHandles() const override;
  int GroupCount() const override { return static_cast<int>(m_Groups.size()); }
  // Counts the linkages of the chain whose location is past block 0: a
  // space that has not grown holds its slot with a placeholder location.
  int ExtentCount(rfm_Handle const& handle) const override;
  cow_String GetObjectLocationReport(utl_FileOffset const& offset) const override;
  rfm_SpaceRepr* Space(int quantum) override;
  rfm_SpaceRepr* Space(rfm_Handle const& handle, int quantum) override;

  // What the spaces need of their database.
  rfm_FileRepr& File() const { return *m_File.Repr(); }
  rfm_StringManager* StringManager() const { return &m_StringManager; }
  // The linkage of handle; raises the corrupt-file error for a handle
  // outside the groups. Slot 0 passes, so a chain's null end resolves.
  rfm_Linkage& Linkage(rfm_Handle handle);
  rfm_Linkage const& Linkage(rfm_Handle handle) const;
  void MakeDirty(rfm_Handle handle);
  // A free slot at the end of the last group, opening a new group when it is
  // full. The new linkage is not dirty: its owner marks it when it grows.
  rfm_Handle CreateLinkage();
  // Whether handle names an object: a slot other than 0, in a group that
  // exists, with a location.
  bool HandleOk(rfm_Handle handle) const;
  utl_FileOffset LogicalEnd() const override;
  // Grows the file's logical length; when the real file grows, the transfer
  // record follows it.
  void Extend(utl_FileOffset delta);
  // More links than any chain can have: a longer walk means a damaged file.
  int ChainLimit() const { return static_cast<int>(m_Groups.size()) * rfm_DatabaseGroup::kSlots; }
  // The last linkage of the chain that link is part of.
  rfm_Handle ChainEnd(rfm_Handle link) const;
  [[noreturn]] void RaiseCorrupt(int line) const;

private:
  using GroupList = std::vector<std::unique_ptr<rfm_DatabaseGroup> >;

  void CreateGroup();
  GroupList LoadGroupList();
  // Appends the bytes of every group along the chain, read afresh past any
  // cache when asked; raises the corrupt-file error where the chain leaves
  // the file or turns back, with the bytes read until then appended.
  // Answers the stored length that bounded the walk.
  utl_FileOffset ReadGroupChain(std::string& bytes, bool afresh);
  // The groups whose bytes ReadGroupChain read, checked.
  GroupList DecodeGroupList(std::string const& bytes, utl_FileOffset stored) const;
  void DecodeGroup(char const* bytes, utl_FileOffset offset, rfm_DatabaseGroup& group) const;
  // The group list as a reader beside a writer must read it: see the
  // reader's rule above Snap. Answers false when the groups changed under
  // every one of readings; raises when two readings find the same damaged
  // bytes.
  bool LoadSteadyGroupList(GroupList& groups, int readings);
  int ReadFlushCount();
  // Holds the slots in use to rfm_LinkageRules and to each other: chains
  // join nowhere, each starts at a head, and no two extents, groups or block
  // 0 share a byte. Marks the linkages that continue a chain. How a chain
  // fills its extents (rfm_ChainSizes) is its space's to check, as it opens.
  void CheckLinkages(GroupList& groups, utl_FileOffset stored) const;
  void DumpGroupList();
  // Which of the objects that others refer to owns link: 0 the string pool,
  // 1 the catalogue, 2 neither.
  int ReferencedObject(rfm_Handle link) const;
  // The 28 bytes of link on disk.
  static void EncodeLinkage(rfm_Linkage const& link, char* bytes);
  // The space at handle, checked to begin with magic; the caller owns it.
  rfm_SpaceRepr* OpenWellKnownSpace(int handle, std::uint32_t magic, char const* misplacedText);
  // A new space that begins with magic; the caller owns it.
  rfm_SpaceRepr* NewWellKnownSpace(std::uint32_t magic);
  void Close();

  rfm_File m_File;
  mutable rfm_StringManagerFile m_StringManager;
  GroupList m_Groups;
  std::unique_ptr<char[]> m_Scratch;  // one group's bytes, for writing groups
  int m_FlushCount = 0;
  // The last linkages of the string pool and of the catalogue as the file
  // holds them: the only linkages of theirs, besides new ones, that a flush
  // can change. Rows and tables refer to their records, so their growth
  // reaches the file before any other object's.
  rfm_Handle m_ReferencedTails[2];
};

#endif
