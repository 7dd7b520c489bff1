#ifndef rfm_DatabaseRepr_h
#define rfm_DatabaseRepr_h

#include "cow_List.h"
#include "cow_String.h"
#include "mem_Alloc.h"
#include "rfm_FileStatus.h"
#include "rfm_Handle.h"
#include "rfm_Type.h"
#include "utl_FileOffset.h"

class rfm_DBMetadata;
class rfm_SpaceRepr;
class rfm_TableMetadata;
template <class K, class V>
class cow_Map;

// What a database is, whatever stores it: the operations that rfm_Database
// forwards. The objects stored in it are made by rfm_Database, so that each
// holds a share of the database; its own spaces (the string pool, the
// catalogue) hold none, or it could never close.
class rfm_DatabaseRepr : public mem_AllocationOperators {
public:
  virtual ~rfm_DatabaseRepr();

  virtual cow_String FileName() const = 0;
  virtual cow_String Description() const = 0;
  virtual bool ReadOnly() const = 0;
  // Writes everything changed; the flush count, written last, vouches for it.
  virtual void Flush() = 0;
  // A reader picks up a writer's flushes; answers whether the view changed.
  virtual bool Snap() = 0;
  virtual int GetFlushCount() const = 0;
  virtual void SetCreationTime(long creationTime) = 0;
  virtual rfm_Handle RootTableHandle() const = 0;
  virtual rfm_Handle RootTableHandle2() const = 0;
  virtual rfm_FileStatus::RfmFileStatus FileStatus() = 0;
  virtual cow_String CheckNZDBCache() = 0;
  virtual void ReaderSemaphoreSet() = 0;
  virtual void ReaderSemaphoreClear() = 0;
  virtual cow_List<cow_String> GetObjStatistics(rfm_Handle const& handle) const = 0;
  // The head handle of every object, in handle order.
  virtual cow_List<rfm_Handle> ObjectHandles() const = 0;
  virtual int GroupCount() const = 0;
  // The extents that hold the object's bytes; 0 for a handle that names no object.
  virtual int ExtentCount(rfm_Handle const& handle) const = 0;
  // Where the database ends: past block 0, its last group and the
  // allocation of every extent in use. A writer's file is exactly this long
  // after each flush; the bytes beyond belong to no one.
  virtual utl_FileOffset LogicalEnd() const = 0;
  virtual cow_List<cow_String> GetDBStatistics() const = 0;
  // Which object holds a file offset: a debugging aid for damaged files.
  virtual cow_String GetObjectLocationReport(utl_FileOffset const& offset) const;
  // A new space, or an existing one; the caller owns the result. A quantum
  // below 4 (callers pass -1 for no wish) means 4.
  virtual rfm_SpaceRepr* Space(int quantum) = 0;
  virtual rfm_SpaceRepr* Space(rfm_Handle const& handle, int quantum) = 0;

  // The type of the object at handle, told by its first words: a table, a
  // tagged stream, an array's element type (none for an array whose element
  // type is damaged), or a plain space.
  rfm_Type HandleType(rfm_Handle const& handle);

  // The catalogue of tables (see rfm_DBMetadata).
  rfm_TableMetadata const* GetTableMetadata(cow_String const& name) const;
  rfm_TableMetadata const* GetTableMetadata(utl_FileOffset const& handle) const;
  utl_FileOffset GetTableMetadataHandle(cow_String const& name) const;
  cow_List<cow_String> GetTableMetadataNames() const;
  bool HasTable(cow_String const& name) const;
  // The bound description of the catalogue record at handle, binding the
  // file's own when no program has.
  rfm_TableMetadata* BindTableMetadata(utl_FileOffset handle);
  void Bind();
  rfm_TableMetadata* Bind(rfm_TableMetadata const& definition);
  cow_Map<cow_String, int> const& GetMapClassName2ClassVersion() const;
  void InsertInMapClassName2ClassVersion(cow_String const& className, int version);

protected:
  rfm_DatabaseRepr() = default;

  // The catalogue, owned; set by Create and Open.
  rfm_DBMetadata* m_Metadata = nullptr;

  // Set once Create or Open has completed; only then does closing write.
  bool m_Opened = false;
};

#endif
