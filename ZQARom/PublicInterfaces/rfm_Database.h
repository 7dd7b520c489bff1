#ifndef rfm_Database_h
#define rfm_Database_h

#include "cow_CountedHld.h"
#include "cow_List.h"
#include "cow_String.h"
#include "rfm_File.h"
#include "rfm_FileStatus.h"
#include "rfm_Handle.h"
#include "rfm_Type.h"
#include "utl_FileOffset.h"

class rfm_DatabaseRepr;
class rfm_Space;
class rfm_Table;
class rfm_TableMetadata;
class rfm_TaggedStream;
template <class T, rfm_Type Type>
class rfm_Array;
template <class K, class V>
class cow_Map;

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
  rfm_Database();
  // Takes ownership of repr.
  explicit rfm_Database(rfm_DatabaseRepr* repr);
  rfm_Database(rfm_Database const& other);
  rfm_Database& operator=(rfm_Database const& other);
  ~rfm_Database();

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
  // or new. A table is opened by handle, or made new for a description
  // (bound first) or for the name of a table the catalogue has bound. An
  // array opened by handle must hold elements of its type.
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

  // The head handle of every object, in handle order: what HandleType,
  // Table, the arrays, TaggedStream and Space accept. Handles that only
  // continue another object's storage are not among them.
  cow_List<rfm_Handle> ObjectHandles() const;
  // The type of the object at handle, told by its first words: a table, a
  // tagged stream, an array's element type (none for an array whose element
  // type is damaged), or a plain space.
  rfm_Type HandleType(rfm_Handle const& handle) const;
  // The number of linkage groups: every handle's Group() is below it.
  int GroupCount() const;
  // The extents of the file that hold the bytes of the object at handle; 0
  // for an object that has not yet grown, and for a handle that names no
  // object.
  int ExtentCount(rfm_Handle const& handle) const;

  cow_String FileName() const;
  cow_String Description() const;
  bool ReadOnly() const;
  void Flush() const;
  bool Snap() const;
  int GetFlushCount() const;
  rfm_Handle RootTableHandle() const;
  rfm_Handle RootTableHandle2() const;
  void SetCreationTime(long creationTime) const;
  rfm_FileStatus::RfmFileStatus FileStatus() const;
  cow_String CheckNZDBCache() const;
  void ReaderSemaphoreSet() const;
  void ReaderSemaphoreClear() const;
  cow_List<cow_String> GetObjStatistics(rfm_Handle const& handle) const;
  cow_List<cow_String> GetDBStatistics() const;
  // Which object holds a file offset: a debugging aid for damaged files.
  cow_String GetObjectLocationReport(utl_FileOffset const& offset) const;

  // The catalogue of tables.
  rfm_TableMetadata const* GetTableMetadata(cow_String const& name) const;
  rfm_TableMetadata const* GetTableMetadata(utl_FileOffset const& handle) const;
  utl_FileOffset GetTableMetadataHandle(cow_String const& name) const;
  cow_List<cow_String> GetTableMetadataNames() const;
  bool HasTable(cow_String const& name) const;
  void Bind() const;
  rfm_TableMetadata* Bind(rfm_TableMetadata const& definition) const;
  cow_Map<cow_String, int> const& GetMapClassName2ClassVersion() const;
  void InsertInMapClassName2ClassVersion(cow_String const& className, int version) const;

  bool IsNull() const { return m_Repr.IsNull(); }
  // The representation, for the library's own layers.
  rfm_DatabaseRepr& Repr() const { return m_Repr.GetRef(); }

private:
  cow_CountedHld<rfm_DatabaseRepr> m_Repr;
};

#endif
