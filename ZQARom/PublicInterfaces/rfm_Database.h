#ifndef rfm_Database_h
#define rfm_Database_h

#include "cow_CountedHld.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_File.h"

class rfm_Space;
class rfm_Table;
class rfm_TaggedStream;
template <class T, rfm_Type Type>
class rfm_Array;

// A database by value: copies share one representation. A database is one
// file holding any number of objects, each named by a handle; a writer's
// changes reach the file at Flush, and a reader sees them after its own Snap.
//
// Lifetime: every object taken from a database holds a share of it, as a
// copy of this handle does: a space (and a buffered space built on one), a
// table (and each row held from it, which holds the table), an array, a
// tagged stream. The database therefore closes, flushing everything, when
// the last handle of any kind goes, in whatever order they go: an object
// kept after the last rfm_Database handle stays usable, and what it holds
// unflushed reaches the file when it goes. The objects close first, each
// writing into the database; its string pool and catalogue follow.
class ZQA_EXPORT rfm_Database {
public:
  rfm_Database() = default;
  // Takes ownership of repr.
  explicit rfm_Database(rfm_DatabaseRepr* repr) : m_Repr(repr) {}

  // A new database in file, which must be empty and writable. magic is the
  // application's mark (its first four characters are kept).
  static rfm_Database Create(rfm_File const& file, cow_String const& magic, cow_String const& description,
                             long creationTime);
  // An existing database; an empty magic accepts any application's file.
  static rfm_Database Open(rfm_File const& file, cow_String const& magic);
  // Whether file is a database with that application magic; never raises
  // for a file that is not.
  static bool IsMagic(rfm_File const& file, cow_String const& magic);
  // The creation time stored in file; 0 for files older than version 12.
  static long GetCreationTime(rfm_File const& file);

  rfm_Space Space(int quantum) const;

  // Tables (cache rows below 0 mean 32), arrays and tagged streams, by handle
  // or new. A table is made new for a description (bound first) or for the
  // name of a table the catalogue has bound. An array opened by handle must
  // hold elements of the factory's type.
  rfm_Table Table(rfm_Handle handle, int quantum, int cacheRows) const;
  rfm_Table Table(rfm_TableMetadata const& definition, int quantum, int cacheRows) const;
  rfm_Table Table(cow_String const& name, int quantum, int cacheRows) const;
  rfm_Array<int, rfm_TypeInt> ArrayInt(rfm_Handle handle, int quantum, int bufferSize) const;
  rfm_Array<int, rfm_TypeInt> ArrayInt(int fieldsPerRow, int quantum, int bufferSize) const;
  rfm_Array<float, rfm_TypeFloat> ArrayFloat(rfm_Handle handle, int quantum, int bufferSize) const;
  rfm_Array<float, rfm_TypeFloat> ArrayFloat(int fieldsPerRow, int quantum, int bufferSize) const;
  rfm_Array<double, rfm_TypeDouble> ArrayDouble(rfm_Handle handle, int quantum, int bufferSize) const;
  rfm_Array<double, rfm_TypeDouble> ArrayDouble(int fieldsPerRow, int quantum, int bufferSize) const;
  rfm_Array<cow_String, rfm_TypeString> ArrayString(rfm_Handle handle, int quantum, int bufferSize) const;
  rfm_Array<cow_String, rfm_TypeString> ArrayString(int fieldsPerRow, int quantum, int bufferSize) const;
  rfm_TaggedStream TaggedStream(rfm_Handle handle, int bufferSize) const;
  rfm_TaggedStream TaggedStream(int bufferSize) const;
  rfm_Space Space(rfm_Handle const& handle, int quantum) const;

  cow_String FileName() const { return Repr().FileName(); }
  cow_String Description() const { return Repr().Description(); }
  bool ReadOnly() const { return Repr().ReadOnly(); }
  void Flush() const { Repr().Flush(); }
  bool Snap() const { return Repr().Snap(); }
  int GetFlushCount() const { return Repr().GetFlushCount(); }
  rfm_Handle RootTableHandle() const { return Repr().RootTableHandle(); }
  rfm_Handle RootTableHandle2() const { return Repr().RootTableHandle2(); }
  void SetCreationTime(long creationTime) const { Repr().SetCreationTime(creationTime); }
  rfm_Type HandleType(rfm_Handle const& handle) const { return Repr().HandleType(handle); }
  rfm_FileStatus::RfmFileStatus FileStatus() const { return Repr().FileStatus(); }
  cow_String CheckNZDBCache() const { return Repr().CheckNZDBCache(); }
  void ReaderSemaphoreSet() const { Repr().ReaderSemaphoreSet(); }
  void ReaderSemaphoreClear() const { Repr().ReaderSemaphoreClear(); }
  cow_List<cow_String> GetObjStatistics(rfm_Handle const& handle) const { return Repr().GetObjStatistics(handle); }
  cow_List<cow_String> GetDBStatistics() const { return Repr().GetDBStatistics(); }
  cow_String GetObjectLocationReport(utl_FileOffset const& offset) const {
    return Repr().GetObjectLocationReport(offset);
  }

  rfm_TableMetadata const* GetTableMetadata(cow_String const& name) const { return Repr().GetTableMetadata(name); }
  rfm_TableMetadata const* GetTableMetadata(utl_FileOffset const& handle) const {
    return Repr().GetTableMetadata(handle);
  }
  utl_FileOffset GetTableMetadataHandle(cow_String const& name) const { return Repr().GetTableMetadataHandle(name); }
  cow_List<cow_String> GetTableMetadataNames() const { return Repr().GetTableMetadataNames(); }
  bool HasTable(cow_String const& name) const { return Repr().HasTable(name); }
  void Bind() const { Repr().Bind(); }
  rfm_TableMetadata* Bind(rfm_TableMetadata const& definition) const { return Repr().Bind(definition); }
  cow_Map<cow_String, int> const& GetMapClassName2ClassVersion() const {
    return Repr().GetMapClassName2ClassVersion();
  }
  void InsertInMapClassName2ClassVersion(cow_String const& className, int version) const {
    Repr().InsertInMapClassName2ClassVersion(className, version);
  }

  bool IsNull() const { return m_Repr.IsNull(); }
  rfm_DatabaseRepr& Repr() const { return m_Repr.GetRef(); }

private:
  cow_CountedHld<rfm_DatabaseRepr> m_Repr;
};

#endif
