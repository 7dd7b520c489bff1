#include "rfm_RowImpl.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_HandleConverter.h"
#include "rfm_Row.h"
#include "rfm_StringManager.h"
#include "rfm_TableRepr.h"

#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_RowImpl";


}  // namespace

rfm_RowImpl::rfm_RowImpl(rfm_TableRepr& table, int rowNumber)
    : m_Table(&table), m_Presence(new std::uint32_t[static_cast<std::size_t>(table.BitmapWords())]()),
      m_WordCount(table.BitmapWords()), m_Bytes(new char[static_cast<std::size_t>(table.RowSize())]()),
      m_Size(table.RowSize()), m_RowNumber(rowNumber) {}

void rfm_RowImpl::Reset(int rowNumber) {
  std::memset(m_Presence.get(), 0, sizeof(std::uint32_t) * static_cast<std::size_t>(m_WordCount));
  std::memset(m_Bytes.get(), 0, static_cast<std::size_t>(m_Size));
  m_RowNumber = rowNumber;
  m_Dirty = 0;
}

void rfm_RowImpl::RaiseDetached() { nex_ThrowAssertion(kSourcePath, __LINE__, "m_Table != nullptr"); }

rfm_MapName2FieldMetadata const& rfm_RowImpl::FieldMetadataMap() const { return TableRef().GetFieldMap(); }

cow_String rfm_RowImpl::FieldName(rfm_FieldHandle const& handle) const {
  return handle.ByIndex() ? TableRef().GetFieldMD(handle).Name() : handle.Name();
}

// The fast road stays small; what it cannot decide goes the long way.
int rfm_RowImpl::PrepReadField(rfm_FieldHandle const& handle, rfm_Type type) const {
  int known = TableRef().PositionForType(handle, type);
  if (known >= 0 && PresenceBit(known)) return known;
  return PrepReadFieldSlowly(handle, type);
}

int rfm_RowImpl::PrepReadFieldSlowly(rfm_FieldHandle const& handle, rfm_Type type) const {
  rfm_TableRepr& table = TableRef();
  table.Metadata().Verify(handle, type);
  int position = table.Position(handle);
  if (position < 0 || !PresenceBit(position)) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("rfm_RowImpl::PrepReadField: Attempt to access absent field "
                                                        "data in ZDB/ZAE file (%1$s:%2$s). File may be unreadable."),
                                          table.Metadata().TableName(), FieldName(handle)));
  }
  return position;
}

int rfm_RowImpl::PrepWriteField(rfm_FieldHandle const& handle, rfm_Type type) {
  m_Dirty = 1;
  int known = TableRef().PositionForType(handle, type);
  return known >= 0 ? known : PrepWriteFieldSlowly(handle, type);
}

int rfm_RowImpl::PrepWriteFieldSlowly(rfm_FieldHandle const& handle, rfm_Type type) const {
  rfm_TableRepr& table = TableRef();
  table.Metadata().Verify(handle, type);
  int position = table.Position(handle);
  if (position < 0) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("rfm_RowImpl::PrepWriteField: Attempt to access absent field "
                                                        "in ZDB/ZAE file (%1$s:%2$s).File may be corrupt."),
                                          table.Metadata().TableName(), FieldName(handle)));
  }
  return position;
}

template <class T>
T rfm_RowImpl::ReadNumber(rfm_FieldHandle const& handle, rfm_Type type) const {
  char const* at = m_Bytes.get() + m_Table->FieldOffset(PrepReadField(handle, type));
  T value;
  if (rfm_FileOrder().Swap()) {
    omi_SwapperGuts::InternalizeArray(&value, at, 1, sizeof value);
  } else {
    std::memcpy(&value, at, sizeof value);
  }
  return value;
}

template <class T>
void rfm_RowImpl::WriteNumber(rfm_FieldHandle const& handle, rfm_Type type, T value) {
  int position = PrepWriteField(handle, type);
  char* at = m_Bytes.get() + m_Table->FieldOffset(position);
  if (rfm_FileOrder().Swap()) {
    omi_SwapperGuts::ExternalizeArray(at, &value, 1, sizeof value);
  } else {
    std::memcpy(at, &value, sizeof value);
  }
  SetPresenceBit(position);
}

bool rfm_RowImpl::FieldIsPresent(rfm_FieldHandle const& handle) const {
  rfm_TableRepr& table = TableRef();
  return table.Position(handle) >= 0 && table.GetFieldMD(handle).Present() != 0;
}

bool rfm_RowImpl::DataIsPresent(rfm_FieldHandle const& handle) const {
  rfm_TableRepr& table = TableRef();
  int position = table.Position(handle);
  return position >= 0 && PresenceBit(position) && table.GetFieldMD(handle).Present() != 0;
}

int rfm_RowImpl::ReadFieldInt(rfm_FieldHandle const& handle) const { return ReadNumber<int>(handle, rfm_TypeInt); }

float rfm_RowImpl::ReadFieldFloat(rfm_FieldHandle const& handle) const {
  return ReadNumber<float>(handle, rfm_TypeFloat);
}

double rfm_RowImpl::ReadFieldDouble(rfm_FieldHandle const& handle) const {
  return ReadNumber<double>(handle, rfm_TypeDouble);
}

rfm_Handle rfm_RowImpl::ReadFieldHandle(rfm_FieldHandle const& handle) const {
  int position = PrepReadField(handle, rfm_TypeHandle);
  return rfm_HandleConverter::Internalize(rfm_FileOrder(), m_Bytes.get() + m_Table->FieldOffset(position));
}

cow_String rfm_RowImpl::ReadFieldString(rfm_FieldHandle const& handle) const {
  int position = PrepReadField(handle, rfm_TypeString);
  cow_String text;
  m_Table->StringManager()->Internalize(m_Bytes.get() + m_Table->FieldOffset(position), &text, 1);
  return text;
}

void rfm_RowImpl::WriteFieldInt(rfm_FieldHandle const& handle, int value) { WriteNumber(handle, rfm_TypeInt, value); }

void rfm_RowImpl::WriteFieldFloat(rfm_FieldHandle const& handle, float value) {
  WriteNumber(handle, rfm_TypeFloat, value);
}

void rfm_RowImpl::WriteFieldDouble(rfm_FieldHandle const& handle, double value) {
  WriteNumber(handle, rfm_TypeDouble, value);
}

void rfm_RowImpl::WriteFieldHandle(rfm_FieldHandle const& handle, rfm_Handle const& value) {
  int position = PrepWriteField(handle, rfm_TypeHandle);
  rfm_HandleConverter::Externalize(rfm_FileOrder(), m_Bytes.get() + m_Table->FieldOffset(position), value);
  SetPresenceBit(position);
}

void rfm_RowImpl::WriteFieldString(rfm_FieldHandle const& handle, cow_String const& value) {
  int position = PrepWriteField(handle, rfm_TypeString);
  m_Table->StringManager()->Externalize(m_Bytes.get() + m_Table->FieldOffset(position), &value, 1);
  SetPresenceBit(position);
}

void rfm_RowImpl::NeuterFieldString(rfm_FieldHandle const& handle, cow_String const& replacement) {
  int position = PrepReadField(handle, rfm_TypeString);
  m_Table->StringManager()->Neuter(m_Bytes.get() + m_Table->FieldOffset(position), replacement);
}

void rfm_RowImpl::Erase() {
  std::memset(m_Presence.get(), 0, sizeof(std::uint32_t) * static_cast<std::size_t>(m_WordCount));
  m_Dirty = 1;
}

void rfm_RowImpl::Erase(rfm_FieldHandle const& handle) {
  rfm_TableRepr& table = TableRef();
  table.Metadata().Verify(handle, table.GetFieldMD(handle).Type());
  int position = table.Position(handle);
  if (position >= 0) m_Presence[static_cast<std::size_t>(position) / 32] &= ~(1u << (position % 32));
  m_Dirty = 1;
}

void rfm_RowImpl::CopyField(rfm_RowImpl const& source, rfm_FieldHandle const& handle) {
  switch (TableRef().GetFieldMD(handle).Type()) {
    case rfm_TypeInt:
      WriteFieldInt(handle, source.ReadFieldInt(handle));
      break;
    case rfm_TypeFloat:
      WriteFieldFloat(handle, source.ReadFieldFloat(handle));
      break;
    case rfm_TypeDouble:
      WriteFieldDouble(handle, source.ReadFieldDouble(handle));
      break;
    case rfm_TypeString:
      WriteFieldString(handle, source.ReadFieldString(handle));
      break;
    case rfm_TypeHandle:
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_translate("rfm_RowImpl::CopyField: Attempt to copy handle type field..  No can do."));
    default:
      ZQA_ASSERT(kSourcePath, !"Invalid field type.");
  }
}

// A field read or written through rfm_Row is one call: defined here, each
// of these takes in the row's own operation, which a definition in
// rfm_Row.cpp would have to call (about a tenth more per field).
int rfm_Row::ReadFieldInt(rfm_FieldHandle const& h) const { return m_Repr->m_Impl->ReadFieldInt(h); }
float rfm_Row::ReadFieldFloat(rfm_FieldHandle const& h) const { return m_Repr->m_Impl->ReadFieldFloat(h); }
double rfm_Row::ReadFieldDouble(rfm_FieldHandle const& h) const { return m_Repr->m_Impl->ReadFieldDouble(h); }
rfm_Handle rfm_Row::ReadFieldHandle(rfm_FieldHandle const& h) const { return m_Repr->m_Impl->ReadFieldHandle(h); }
void rfm_Row::WriteFieldInt(rfm_FieldHandle const& h, int value) const { m_Repr->m_Impl->WriteFieldInt(h, value); }

void rfm_Row::WriteFieldFloat(rfm_FieldHandle const& h, float value) const {
  m_Repr->m_Impl->WriteFieldFloat(h, value);
}

void rfm_Row::WriteFieldDouble(rfm_FieldHandle const& h, double value) const {
  m_Repr->m_Impl->WriteFieldDouble(h, value);
}

void rfm_Row::WriteFieldHandle(rfm_FieldHandle const& h, rfm_Handle const& value) const {
  m_Repr->m_Impl->WriteFieldHandle(h, value);
}
