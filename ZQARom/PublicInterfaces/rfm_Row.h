#ifndef rfm_Row_h
#define rfm_Row_h

#include "rfm_RowImpl.h"

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

  bool FieldIsPresent(rfm_FieldHandle const& h) const { return Impl().FieldIsPresent(h); }
  bool DataIsPresent(rfm_FieldHandle const& h) const { return Impl().DataIsPresent(h); }
  int ReadFieldInt(rfm_FieldHandle const& h) const { return Impl().ReadFieldInt(h); }
  float ReadFieldFloat(rfm_FieldHandle const& h) const { return Impl().ReadFieldFloat(h); }
  double ReadFieldDouble(rfm_FieldHandle const& h) const { return Impl().ReadFieldDouble(h); }
  rfm_Handle ReadFieldHandle(rfm_FieldHandle const& h) const { return Impl().ReadFieldHandle(h); }
  cow_String ReadFieldString(rfm_FieldHandle const& h) const { return Impl().ReadFieldString(h); }
  void WriteFieldInt(rfm_FieldHandle const& h, int value) const { Impl().WriteFieldInt(h, value); }
  void WriteFieldFloat(rfm_FieldHandle const& h, float value) const { Impl().WriteFieldFloat(h, value); }
  void WriteFieldDouble(rfm_FieldHandle const& h, double value) const { Impl().WriteFieldDouble(h, value); }
  void WriteFieldHandle(rfm_FieldHandle const& h, rfm_Handle const& value) const { Impl().WriteFieldHandle(h, value); }
  void WriteFieldString(rfm_FieldHandle const& h, cow_String const& value) const { Impl().WriteFieldString(h, value); }
  void NeuterFieldString(rfm_FieldHandle const& h, cow_String const& replacement) const {
    Impl().NeuterFieldString(h, replacement);
  }
  void Erase() const { Impl().Erase(); }
  void Erase(rfm_FieldHandle const& h) const { Impl().Erase(h); }
  void CopyField(rfm_Row const& source, rfm_FieldHandle const& h) const { Impl().CopyField(source.Impl(), h); }
  int Location() const { return Impl().Location(); }
  rfm_MapName2FieldMetadata const& FieldMetadataMap() const { return Impl().FieldMetadataMap(); }

private:
  friend class rfm_TableRepr;
  rfm_RowImpl& Impl() const { return *m_Repr->m_Impl; }

  rfm_RowRepr* m_Repr = nullptr;
};

#endif
