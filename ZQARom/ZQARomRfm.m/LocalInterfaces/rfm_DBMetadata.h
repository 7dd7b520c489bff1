#ifndef rfm_DBMetadata_h
#define rfm_DBMetadata_h

#include "cow_List.h"
#include "cow_Map.h"
#include "omi_Btree.h"
#include "rfm_IOBuffer.h"
#include "rfm_SpaceRepr.h"
#include "rfm_TableMetadata.h"

#include <memory>

// The catalogue of a database's tables, on the space at handle 3: the word
// 0xFAAAEBBB, then one record per table (see rfm_TableMetadata), each
// written once and never changed. A table's identity in the database is the
// offset of its record, its metadata handle. Records are parsed lazily, when
// a program binds its description of the table to the file's.
//
// Invariants: every name maps to one handle; a bound description is owned
// here and never changes; writes reach the space at Flush.
class rfm_DBMetadata : public mem_AllocationOperators {
public:
  // Takes ownership of space.
  explicit rfm_DBMetadata(rfm_SpaceRepr* space);
  ~rfm_DBMetadata();
  rfm_DBMetadata(rfm_DBMetadata const&) = delete;
  rfm_DBMetadata& operator=(rfm_DBMetadata const&) = delete;

  // Learns the names of the records not yet known; after a Snap it only adds.
  void Load();
  void Flush();
  // Bytes of the catalogue, those waiting to be written included.
  utl_FileOffset Length() const;

  // Binds every table of the file with the description that it stores.
  void Bind();
  // The catalogue's description of the table that definition describes:
  // the one already bound, the file's record reconciled with definition, or,
  // for a table new to the file, a record written from definition.
  rfm_TableMetadata* Bind(rfm_TableMetadata const& definition);

  // The bound description of the record at handle, binding the file's own
  // description when no program has; raises when handle is no record.
  rfm_TableMetadata* BindHandle(utl_FileOffset handle);

  bool HasTable(cow_String const& name) const;
  cow_List<cow_String> GetTableMetadataNames() const;
  // The bound description of a table, or null when it is not bound.
  rfm_TableMetadata const* FindTableMetadata(cow_String const& name) const;
  rfm_TableMetadata const* FindTableMetadata(utl_FileOffset const& handle) const;
  utl_FileOffset FindTableMetadataHandle(cow_String const& name) const;

  cow_Map<cow_String, int> const& GetMapClassName2ClassVersion() const { return m_ClassVersions; }
  void InsertInMapClassName2ClassVersion(cow_String const& className, int version);

private:
  static constexpr utl_FileOffset kFirstRecord = 4;
  static constexpr int kBufferSize = 1024;

  rfm_TableMetadata* BindRecord(cow_String const& name, utl_FileOffset handle);
  // The version a table is read under: the class version map's, else fallback.
  int VersionOf(cow_String const& name, int fallback) const;

  std::unique_ptr<rfm_SpaceRepr> m_Space;
  rfm_IOBuffer m_Buffer;
  omi_Btree<cow_String, utl_FileOffset> m_Name2Handle;
  omi_Btree<utl_FileOffset, rfm_TableMetadata*> m_Handle2Table;
  cow_Map<cow_String, int> m_ClassVersions;
  utl_FileOffset m_Loaded = kFirstRecord;  // where Load goes on
};

#endif
