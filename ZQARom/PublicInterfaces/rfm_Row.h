#ifndef rfm_Row_h
#define rfm_Row_h

#include "cow_String.h"
#include "rfm_FieldHandle.h"
#include "rfm_Handle.h"
#include "rfm_TableMetadata.h"

class rfm_RowImpl;
struct rfm_RowRepr;

// A row of a table, by value: copies count as holders of the cached row, so
// it stays valid across the cache's culls for as long as one is held. A held
// row keeps its table open, and with it the database (see rfm_Database): a
// row written after the last table and database handles have gone reaches
// the file when the row goes. Give a row back with Release() (or let it go)
// when done.
class ZQA_EXPORT rfm_Row {
public:
  rfm_Row() = default;
  explicit rfm_Row(rfm_RowRepr* repr);
  rfm_Row(rfm_Row const& other);
  rfm_Row& operator=(rfm_Row const& other);
  ~rfm_Row() { Nullify(); }

  // Lets go of the row.
  void Nullify();
  void Release() { Nullify(); }
  bool IsNull() const { return m_Repr == nullptr; }

  bool FieldIsPresent(rfm_FieldHandle const& h) const;
  bool DataIsPresent(rfm_FieldHandle const& h) const;
  int ReadFieldInt(rfm_FieldHandle const& h) const;
  float ReadFieldFloat(rfm_FieldHandle const& h) const;
  double ReadFieldDouble(rfm_FieldHandle const& h) const;
  rfm_Handle ReadFieldHandle(rfm_FieldHandle const& h) const;
  cow_String ReadFieldString(rfm_FieldHandle const& h) const;
  void WriteFieldInt(rfm_FieldHandle const& h, int value) const;
  void WriteFieldFloat(rfm_FieldHandle const& h, float value) const;
  void WriteFieldDouble(rfm_FieldHandle const& h, double value) const;
  void WriteFieldHandle(rfm_FieldHandle const& h, rfm_Handle const& value) const;
  void WriteFieldString(rfm_FieldHandle const& h, cow_String const& value) const;
  void NeuterFieldString(rfm_FieldHandle const& h, cow_String const& replacement) const;
  void Erase() const;
  void Erase(rfm_FieldHandle const& h) const;
  void CopyField(rfm_Row const& source, rfm_FieldHandle const& h) const;
  int Location() const;
  rfm_MapName2FieldMetadata const& FieldMetadataMap() const;

private:
  friend class rfm_TableRepr;
  rfm_RowImpl& Impl() const;

  rfm_RowRepr* m_Repr = nullptr;
};

#endif
