#ifndef rfm_DatabaseReprFile_h
#define rfm_DatabaseReprFile_h

#include "rfm_DatabaseRepr.h"
#include "rfm_File.h"
#include "rfm_FileRepr.h"
#include "rfm_LinkageGroups.h"
#include "rfm_StringManagerFile.h"

// A database in a file: block 0, the linkage groups (rfm_LinkageGroups)
// that list where every object's bytes lie, and the objects themselves.
// This class opens, creates, flushes, snaps and closes the file; what one
// writer and many readers may rely on meanwhile is rfm_SharingProtocol.h.
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
  int GroupCount() const override { return m_Linkages.GroupCount(); }
  // Counts the linkages of the chain whose location is past block 0: a
  // space that has not grown holds its slot with a placeholder location.
  int ExtentCount(rfm_Handle const& handle) const override;
  cow_String GetObjectLocationReport(utl_FileOffset const& offset) const override;
  rfm_SpaceRepr* Space(int quantum) override;
  rfm_SpaceRepr* Space(rfm_Handle const& handle, int quantum) override;

  rfm_FileRepr& File() const { return *m_File.Repr(); }
  rfm_StringManager* StringManager() const { return &m_StringManager; }
  // The linkage of handle, as rfm_LinkageGroups::Linkage.
  rfm_Linkage const& Linkage(rfm_Handle handle) const { return m_Linkages.Linkage(handle); }
  bool HandleOk(rfm_Handle handle) const { return m_Linkages.HandleOk(handle); }
  utl_FileOffset LogicalEnd() const override;
  [[noreturn]] void RaiseCorrupt(int line) const;

private:
  int ReadFlushCount();
  // The groups as a reader must read them at Open (R3, R4).
  void LoadSteadyLinkages();
  // The space at handle, checked to begin with magic; the caller owns it.
  rfm_SpaceRepr* OpenWellKnownSpace(int handle, std::uint32_t magic, char const* misplacedText);
  // A new space that begins with magic; the caller owns it.
  rfm_SpaceRepr* NewWellKnownSpace(std::uint32_t magic);
  void Close();

  rfm_File m_File;
  // Before the pool, whose space it lists, so that it goes after it.
  rfm_LinkageGroups m_Linkages;
  mutable rfm_StringManagerFile m_StringManager;
  int m_FlushCount = 0;
};

#endif
