#ifndef rfm_Table_h
#define rfm_Table_h

#include "rfm_TableRepr.h"

// A table by value: copies share one representation, which flushes when the
// last copy and the last row taken from it that is still held have gone.
// The table holds a share of its database, which stays open while the table
// lives (see rfm_Database); a held row keeps the table open in turn.
class ZQA_EXPORT rfm_Table {
public:
  rfm_Table() = default;
  // Takes ownership of repr.
  explicit rfm_Table(rfm_TableRepr* repr) : m_Repr(repr) {
    if (m_Repr) m_Repr->AddHolder();
  }
  rfm_Table(rfm_Table const& other) : rfm_Table(other.m_Repr) {}
  rfm_Table& operator=(rfm_Table const& other) {
    // Taking the new share first makes self-assignment harmless.
    if (other.m_Repr) other.m_Repr->AddHolder();
    LetGo();
    m_Repr = other.m_Repr;
    return *this;
  }
  ~rfm_Table() { LetGo(); }

  rfm_Row NewRow() const { return Repr().NewRow(); }
  rfm_Row UpdateRow(int row) const { return Repr().UpdateRow(row); }
  rfm_Row ReadRow(int row) const { return Repr().ReadRow(row); }
  bool RowExists(int row) const { return Repr().RowExists(row); }
  void Append(rfm_Table const& other) const {
    if (!other.IsNull()) Repr().Append(other.Repr());
  }
  int CopyAllowed(rfm_Table const& other) const { return Repr().CopyAllowed(other.Repr()); }
  rfm_FieldMetadata const& GetFieldMD(rfm_FieldHandle const& handle) const { return Repr().GetFieldMD(handle); }
  rfm_MapName2FieldMetadata const& GetFieldMap() const { return Repr().GetFieldMap(); }
  rfm_TableMetadata const& TableMetadata() const { return Repr().TableMetadata(); }
  int Index(cow_String const& name) const { return Repr().Index(name); }
  rfm_Type Type(cow_String const& name) const { return Repr().Type(name); }
  int RowSize() const { return Repr().RowSize(); }
  void Extend(int rows) const { Repr().Extend(rows); }
  int GetFlushCount() const { return Repr().GetFlushCount(); }
  int Snap() const { return Repr().Snap(); }
  int Flush() const { return Repr().Flush(); }
  void Truncate(int rows) const { Repr().Truncate(rows); }
  void Seek(int row) const { Repr().Seek(row); }
  int Location() const { return Repr().Location(); }
  int Length() const { return Repr().Length(); }
  rfm_Handle Handle() const { return Repr().Handle(); }
  rfm_StringManager* StringManager() const { return Repr().StringManager(); }
  utl_FileOffset SpaceAllocation() const { return Repr().SpaceAllocation(); }
  utl_FileOffset SpaceLength() const { return Repr().SpaceLength(); }
  cow_List<cow_String> GetObjStatistics() const { return Repr().GetObjStatistics(); }

  bool IsNull() const { return m_Repr == nullptr; }
  rfm_TableRepr& Repr() const { return *m_Repr; }

private:
  void LetGo() {
    if (m_Repr) rfm_TableRepr::DropHolder(m_Repr);
    m_Repr = nullptr;
  }

  rfm_TableRepr* m_Repr = nullptr;
};

#endif
