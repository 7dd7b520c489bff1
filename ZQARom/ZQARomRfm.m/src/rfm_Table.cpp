#include "rfm_Table.h"

#include "rfm_TableRepr.h"

rfm_Table::rfm_Table() = default;

rfm_Table::rfm_Table(rfm_TableRepr* repr) : m_Repr(repr) {
  if (m_Repr) m_Repr->AddHolder();
}

rfm_Table::rfm_Table(rfm_Table const& other) : rfm_Table(other.m_Repr) {}

rfm_Table& rfm_Table::operator=(rfm_Table const& other) {
  // Taking the new share first makes self-assignment harmless.
  if (other.m_Repr) other.m_Repr->AddHolder();
  LetGo();
  m_Repr = other.m_Repr;
  return *this;
}

rfm_Table::~rfm_Table() { LetGo(); }

void rfm_Table::LetGo() {
  if (m_Repr) rfm_TableRepr::DropHolder(m_Repr);
  m_Repr = nullptr;
}

rfm_Row rfm_Table::NewRow() const { return Repr().NewRow(); }
rfm_Row rfm_Table::UpdateRow(int row) const { return Repr().UpdateRow(row); }
rfm_Row rfm_Table::ReadRow(int row) const { return Repr().ReadRow(row); }
bool rfm_Table::RowExists(int row) const { return Repr().RowExists(row); }

void rfm_Table::Append(rfm_Table const& other) const {
  if (!other.IsNull()) Repr().Append(other.Repr());
}

int rfm_Table::CopyAllowed(rfm_Table const& other) const { return Repr().CopyAllowed(other.Repr()); }

rfm_FieldMetadata const& rfm_Table::GetFieldMD(rfm_FieldHandle const& handle) const {
  return Repr().GetFieldMD(handle);
}

rfm_MapName2FieldMetadata const& rfm_Table::GetFieldMap() const { return Repr().GetFieldMap(); }
rfm_TableMetadata const& rfm_Table::TableMetadata() const { return Repr().TableMetadata(); }
int rfm_Table::Index(cow_String const& name) const { return Repr().Index(name); }
rfm_Type rfm_Table::Type(cow_String const& name) const { return Repr().Type(name); }
int rfm_Table::RowSize() const { return Repr().RowSize(); }
void rfm_Table::Extend(int rows) const { Repr().Extend(rows); }
int rfm_Table::GetFlushCount() const { return Repr().GetFlushCount(); }
int rfm_Table::Snap() const { return Repr().Snap(); }
int rfm_Table::Flush() const { return Repr().Flush(); }
void rfm_Table::Truncate(int rows) const { Repr().Truncate(rows); }
void rfm_Table::Seek(int row) const { Repr().Seek(row); }
int rfm_Table::Location() const { return Repr().Location(); }
int rfm_Table::Length() const { return Repr().Length(); }
rfm_Handle rfm_Table::Handle() const { return Repr().Handle(); }
rfm_StringManager* rfm_Table::StringManager() const { return Repr().StringManager(); }
utl_FileOffset rfm_Table::SpaceAllocation() const { return Repr().SpaceAllocation(); }
utl_FileOffset rfm_Table::SpaceLength() const { return Repr().SpaceLength(); }
cow_List<cow_String> rfm_Table::GetObjStatistics() const { return Repr().GetObjStatistics(); }

int rfm_Table::ReadColumns(int first, int count, rfm_Column const* columns, int columnCount) const {
  return Repr().ReadColumns(first, count, columns, columnCount);
}

void rfm_Table::AppendColumns(int count, rfm_Column const* columns, int columnCount) const {
  Repr().AppendColumns(count, columns, columnCount);
}
