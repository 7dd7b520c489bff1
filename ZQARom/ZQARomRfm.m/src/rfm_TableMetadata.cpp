#include "rfm_TableMetadata.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_BtreeIterator.h"
#include "rfm_IOBuffer.h"
#include "rfm_StringManager.h"

#include <algorithm>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_TableMetadata";

// Bytes of a record: its length word and name, then type and name per field.
int HeadSize(int externalStringSize) { return 4 + externalStringSize; }
int FieldSize(int externalStringSize) { return 4 + externalStringSize; }

bool IsFieldType(int type) {
  return type == rfm_TypeInt || type == rfm_TypeHandle || type == rfm_TypeFloat || type == rfm_TypeDouble ||
         type == rfm_TypeString;
}

[[noreturn]] void RaiseCorrupt(int line) {
  nex_ThrowMessage(kSourcePath, line, atr_translate("***ERROR: Metadata is corrupt in ZORBEX database file."));
}

[[noreturn]] void RaiseTypeMismatch(int line, cow_String const& name) {
  nex_ThrowMessage(kSourcePath, line,
                   atr_SubstituteFormat(atr_translate("***ERROR: Field type mismatch: %s"), name));
}

}  // namespace

rfm_TableMetadata::rfm_TableMetadata(cow_String const& name, int version) : m_Name(name), m_Version(version) {}

rfm_TableMetadata::rfm_TableMetadata(rfm_TableMetadata const& other, int version) : rfm_TableMetadata(other) {
  m_Version = version;
}

rfm_TableMetadata::rfm_TableMetadata(rfm_TableMetadata const& other)
    : m_Name(other.m_Name), m_FieldCount(other.m_FieldCount), m_Fields(other.m_Fields),
      m_Version(other.m_Version) {
  BuildIndex();
}

rfm_TableMetadata& rfm_TableMetadata::operator=(rfm_TableMetadata const& other) {
  if (this != &other) {
    m_Name = other.m_Name;
    m_FieldCount = other.m_FieldCount;
    m_Fields = other.m_Fields;
    m_Version = other.m_Version;
    BuildIndex();
  }
  return *this;
}

rfm_TableMetadata::rfm_TableMetadata(rfm_IOBuffer& buffer, int version) : m_Version(version) {
  int fields = ReadHead(buffer);
  for (int i = 0; i < fields; ++i) {
    rfm_FieldMetadata field = ReadField(buffer);
    field.SetIndex(m_FieldCount++);
    if (!m_Fields.Insert(field.Name(), field)) RaiseCorrupt(__LINE__);
  }
  BuildIndex();
}

rfm_TableMetadata::rfm_TableMetadata(rfm_IOBuffer& buffer, rfm_MapName2FieldMetadata requested, int version)
    : m_Version(version) {
  // Fields the file alone has are numbered after all of the program's.
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(requested); !it.IsDone(); it.Next()) {
    m_FieldCount = std::max(m_FieldCount, it.CurrentValue().Index() + 1);
  }
  int fields = ReadHead(buffer);
  for (int i = 0; i < fields; ++i) {
    rfm_FieldMetadata field = ReadField(buffer);
    if (requested.IsMember(field.Name())) {
      rfm_FieldMetadata const& wanted = requested.ConstGet(field.Name());
      if (wanted.Type() != field.Type()) RaiseTypeMismatch(__LINE__, field.Name());
      field.SetIndex(wanted.Index());
      requested.Remove(field.Name());
    } else {
      field.SetIndex(m_FieldCount++);
    }
    if (!m_Fields.Insert(field.Name(), field)) RaiseCorrupt(__LINE__);
  }
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(requested); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata absent = it.CurrentValue();
    absent.SetPresent(0);
    m_Fields.Insert(absent.Name(), absent);
  }
  BuildIndex();
}

int rfm_TableMetadata::ReadHead(rfm_IOBuffer& buffer) {
  int stringSize = buffer.StringManager()->ExternalStringSize();
  int length = buffer.ReadInt();
  m_Name = buffer.ReadString();
  int body = length - HeadSize(stringSize);
  if (body < 0 || body % FieldSize(stringSize) != 0) RaiseCorrupt(__LINE__);
  return body / FieldSize(stringSize);
}

rfm_FieldMetadata rfm_TableMetadata::ReadField(rfm_IOBuffer& buffer) {
  int type = buffer.ReadInt();
  cow_String name = buffer.ReadString();
  if (!IsFieldType(type)) RaiseCorrupt(__LINE__);
  return rfm_FieldMetadata(name, static_cast<rfm_Type>(type), -1);
}

void rfm_TableMetadata::BuildIndex() {
  m_ByIndex.assign(static_cast<std::size_t>(m_FieldCount), nullptr);
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(m_Fields); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& field = it.CurrentValue();
    if (field.Index() >= 0 && field.Index() < m_FieldCount) m_ByIndex[static_cast<std::size_t>(field.Index())] = &field;
  }
}

int rfm_TableMetadata::DefineField(cow_String const& name, rfm_Type type) {
  InsertField(rfm_FieldMetadata(name, type, m_FieldCount));
  return m_FieldCount - 1;
}

void rfm_TableMetadata::InsertField(rfm_FieldMetadata const& field) {
  if (m_Fields.IsMember(field.Name())) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("***ERROR: Duplicate field metadata definition: \"%s\""),
                                          field.Name()));
  }
  m_Fields.Insert(field.Name(), field);
  m_FieldCount = std::max(m_FieldCount, field.Index() + 1);
  BuildIndex();
}

rfm_FieldMetadata const& rfm_TableMetadata::GetFieldMD(rfm_FieldHandle const& handle) const {
  if (handle.ByIndex()) {
    if (handle.Index() < m_FieldCount && m_ByIndex[static_cast<std::size_t>(handle.Index())] != nullptr) {
      return *m_ByIndex[static_cast<std::size_t>(handle.Index())];
    }
    return m_None;
  }
  return m_Fields.IsMember(handle.Name()) ? m_Fields.ConstGet(handle.Name()) : m_None;
}

void rfm_TableMetadata::Verify(rfm_FieldHandle const& handle, rfm_Type type) const {
  rfm_FieldMetadata const& field = GetFieldMD(handle);
  bool found = field.Type() != rfm_TypeNone && field.Present() != 0;
  if (handle.ByIndex()) {
    if (!found) {
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate("***ERROR: Can't find field by index: %d"), handle.Index()));
    }
    if (field.Type() != type) {
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate("***ERROR: Field type mismatch by index: %d"),
                                            handle.Index()));
    }
    return;
  }
  if (!found) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("***ERROR: Can't find field: \"%s\""), handle.Name()));
  }
  if (field.Type() != type) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("***ERROR: Field type mismatch: \"%s\""), handle.Name()));
  }
}

int rfm_TableMetadata::CopyAllowed(rfm_TableMetadata const& other) const {
  int mine = 0;
  int theirs = 0;
  bool unmatched = false;
  bool referencing = false;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(m_Fields); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& field = it.CurrentValue();
    if (field.Present() == 0) continue;
    ++mine;
    referencing = referencing || field.Type() == rfm_TypeHandle || field.Type() == rfm_TypeString;
    rfm_FieldMetadata const& match = other.GetFieldMD(rfm_FieldHandle(field.Name(), -1));
    if (match.Type() == rfm_TypeNone || match.Present() == 0) {
      unmatched = true;
    } else if (match.Type() != field.Type()) {
      return 0;
    }
  }
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(other.m_Fields); !it.IsDone(); it.Next()) {
    if (it.CurrentValue().Present() != 0) ++theirs;
  }
  if (mine != theirs) return 3;
  if (unmatched) return 0;
  return referencing ? 2 : 1;
}

void rfm_TableMetadata::Dump(rfm_IOBuffer& buffer) const {
  int stringSize = buffer.StringManager()->ExternalStringSize();
  int present = 0;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(m_Fields); !it.IsDone(); it.Next()) {
    if (it.CurrentValue().Present() != 0) ++present;
  }
  buffer.WriteInt(HeadSize(stringSize) + present * FieldSize(stringSize));
  buffer.WriteString(m_Name);
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(m_Fields); !it.IsDone(); it.Next()) {
    if (it.CurrentValue().Present() != 0) it.CurrentValue().Dump(buffer);
  }
}
