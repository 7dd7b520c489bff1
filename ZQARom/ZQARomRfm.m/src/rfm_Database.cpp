#include "rfm_Database.h"

#include "rfm_DatabaseReprFile.h"
#include "rfm_Space.h"

rfm_Database rfm_Database::Create(rfm_File const& file, cow_String const& magic, cow_String const& description,
                                  long creationTime) {
  auto* repr = new rfm_DatabaseReprFile(file);
  // Owned before it is filled: a failed Create ends it without writing more.
  rfm_Database database(repr);
  repr->Create(magic, description, creationTime);
  return database;
}

rfm_Database rfm_Database::Open(rfm_File const& file, cow_String const& magic) {
  auto* repr = new rfm_DatabaseReprFile(file);
  rfm_Database database(repr);
  repr->Open(magic);
  return database;
}

bool rfm_Database::IsMagic(rfm_File const& file, cow_String const& magic) {
  return rfm_DatabaseReprFile::IsMagic(file, magic);
}

long rfm_Database::GetCreationTime(rfm_File const& file) { return rfm_DatabaseReprFile::GetCreationTime(file); }

rfm_Database::rfm_Database() = default;
rfm_Database::rfm_Database(rfm_DatabaseRepr* repr) : m_Repr(repr) {}
rfm_Database::rfm_Database(rfm_Database const& other) = default;
rfm_Database& rfm_Database::operator=(rfm_Database const& other) = default;
rfm_Database::~rfm_Database() = default;

rfm_Space rfm_Database::Space(int quantum) const { return rfm_Space(Repr().Space(quantum), *this); }

rfm_Space rfm_Database::Space(rfm_Handle const& handle, int quantum) const {
  return rfm_Space(Repr().Space(handle, quantum), *this);
}

cow_List<rfm_Handle> rfm_Database::ObjectHandles() const { return Repr().ObjectHandles(); }
rfm_Type rfm_Database::HandleType(rfm_Handle const& handle) const { return Repr().HandleType(handle); }
int rfm_Database::GroupCount() const { return Repr().GroupCount(); }
int rfm_Database::ExtentCount(rfm_Handle const& handle) const { return Repr().ExtentCount(handle); }

cow_String rfm_Database::FileName() const { return Repr().FileName(); }
cow_String rfm_Database::Description() const { return Repr().Description(); }
bool rfm_Database::ReadOnly() const { return Repr().ReadOnly(); }
void rfm_Database::Flush() const { Repr().Flush(); }
bool rfm_Database::Snap() const { return Repr().Snap(); }
int rfm_Database::GetFlushCount() const { return Repr().GetFlushCount(); }
rfm_Handle rfm_Database::RootTableHandle() const { return Repr().RootTableHandle(); }
rfm_Handle rfm_Database::RootTableHandle2() const { return Repr().RootTableHandle2(); }
void rfm_Database::SetCreationTime(long creationTime) const { Repr().SetCreationTime(creationTime); }
rfm_FileStatus::RfmFileStatus rfm_Database::FileStatus() const { return Repr().FileStatus(); }
cow_String rfm_Database::CheckNZDBCache() const { return Repr().CheckNZDBCache(); }
void rfm_Database::ReaderSemaphoreSet() const { Repr().ReaderSemaphoreSet(); }
void rfm_Database::ReaderSemaphoreClear() const { Repr().ReaderSemaphoreClear(); }

cow_List<cow_String> rfm_Database::GetObjStatistics(rfm_Handle const& handle) const {
  return Repr().GetObjStatistics(handle);
}

cow_List<cow_String> rfm_Database::GetDBStatistics() const { return Repr().GetDBStatistics(); }

cow_String rfm_Database::GetObjectLocationReport(utl_FileOffset const& offset) const {
  return Repr().GetObjectLocationReport(offset);
}

rfm_TableMetadata const* rfm_Database::GetTableMetadata(cow_String const& name) const {
  return Repr().GetTableMetadata(name);
}

rfm_TableMetadata const* rfm_Database::GetTableMetadata(utl_FileOffset const& handle) const {
  return Repr().GetTableMetadata(handle);
}

utl_FileOffset rfm_Database::GetTableMetadataHandle(cow_String const& name) const {
  return Repr().GetTableMetadataHandle(name);
}

cow_List<cow_String> rfm_Database::GetTableMetadataNames() const { return Repr().GetTableMetadataNames(); }
bool rfm_Database::HasTable(cow_String const& name) const { return Repr().HasTable(name); }
void rfm_Database::Bind() const { Repr().Bind(); }
rfm_TableMetadata* rfm_Database::Bind(rfm_TableMetadata const& definition) const { return Repr().Bind(definition); }

cow_Map<cow_String, int> const& rfm_Database::GetMapClassName2ClassVersion() const {
  return Repr().GetMapClassName2ClassVersion();
}

void rfm_Database::InsertInMapClassName2ClassVersion(cow_String const& className, int version) const {
  Repr().InsertInMapClassName2ClassVersion(className, version);
}
