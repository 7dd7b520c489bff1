#include "rfm_DBMetadata.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_BtreeIterator.h"
#include "rfm_StringManager.h"

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_DBMetadata";

[[noreturn]] void RaiseCorrupt(int line) {
  nex_ThrowMessage(kSourcePath, line, atr_translate("***ERROR: Metadata is corrupt in ZORBEX database file."));
}

[[noreturn]] void RaiseNoHandle(int line) {
  nex_ThrowMessage(kSourcePath, line, atr_translate("***ERROR: Can't find metadata with handle."));
}

}  // namespace

rfm_DBMetadata::rfm_DBMetadata(rfm_SpaceRepr* space) : m_Space(space), m_Buffer(space, kBufferSize) {}

rfm_DBMetadata::~rfm_DBMetadata() {
  for (omi_BtreeIterator<utl_FileOffset, rfm_TableMetadata*> it(m_Handle2Table); !it.IsDone(); it.Next()) {
    delete it.CurrentValue();
  }
}

void rfm_DBMetadata::Load() {
  utl_FileOffset length = m_Buffer.Length();
  while (m_Loaded < length) {
    m_Buffer.Seek(m_Loaded);
    int recordLength = m_Buffer.ReadInt();
    cow_String name = m_Buffer.ReadString();
    // A record is at least its length word and its name.
    if (recordLength < 4 + m_Buffer.StringManager()->ExternalStringSize()) RaiseCorrupt(__LINE__);
    if (!m_Name2Handle.IsMember(name)) {
      m_Name2Handle.Insert(name, m_Loaded);
    } else if (m_Name2Handle.ConstGet(name) != m_Loaded) {
      RaiseCorrupt(__LINE__);
    }
    m_Loaded += recordLength;
  }
}

void rfm_DBMetadata::Flush() { m_Buffer.Flush(); }

utl_FileOffset rfm_DBMetadata::Length() const { return m_Buffer.Length(); }

int rfm_DBMetadata::VersionOf(cow_String const& name, int fallback) const {
  return m_ClassVersions.IsMember(name) ? m_ClassVersions.ConstGet(name) : fallback;
}

void rfm_DBMetadata::Bind() {
  for (omi_BtreeIterator<cow_String, utl_FileOffset> it(m_Name2Handle); !it.IsDone(); it.Next()) {
    BindRecord(it.CurrentKey(), it.CurrentValue());
  }
}

rfm_TableMetadata* rfm_DBMetadata::BindRecord(cow_String const& name, utl_FileOffset handle) {
  if (m_Handle2Table.IsMember(handle)) return m_Handle2Table.ConstGet(handle);
  m_Buffer.Seek(handle);
  std::unique_ptr<rfm_TableMetadata> table(new rfm_TableMetadata(m_Buffer, VersionOf(name, 0)));
  m_Handle2Table.Insert(handle, table.get());
  return table.release();
}

rfm_TableMetadata* rfm_DBMetadata::BindHandle(utl_FileOffset handle) {
  if (m_Handle2Table.IsMember(handle)) return m_Handle2Table.ConstGet(handle);
  for (omi_BtreeIterator<cow_String, utl_FileOffset> it(m_Name2Handle); !it.IsDone(); it.Next()) {
    if (it.CurrentValue() == handle) return BindRecord(it.CurrentKey(), handle);
  }
  RaiseNoHandle(__LINE__);
}

rfm_TableMetadata* rfm_DBMetadata::Bind(rfm_TableMetadata const& definition) {
  cow_String const& name = definition.TableName();
  int version = VersionOf(name, definition.GetVersionNumber());
  if (m_Name2Handle.IsMember(name)) {
    utl_FileOffset handle = m_Name2Handle.ConstGet(name);
    if (m_Handle2Table.IsMember(handle)) return m_Handle2Table.ConstGet(handle);
    m_Buffer.Seek(handle);
    std::unique_ptr<rfm_TableMetadata> table(new rfm_TableMetadata(m_Buffer, definition.FieldMap(), version));
    m_Handle2Table.Insert(handle, table.get());
    return table.release();
  }
  utl_FileOffset handle = m_Buffer.Length();
  m_Buffer.Seek(handle);
  definition.Dump(m_Buffer);
  m_Name2Handle.Insert(name, handle);
  m_Loaded = m_Buffer.Location();
  std::unique_ptr<rfm_TableMetadata> table(new rfm_TableMetadata(definition, version));
  m_Handle2Table.Insert(handle, table.get());
  return table.release();
}

bool rfm_DBMetadata::HasTable(cow_String const& name) const { return m_Name2Handle.IsMember(name); }

cow_List<cow_String> rfm_DBMetadata::GetTableMetadataNames() const {
  cow_List<cow_String> names;
  for (omi_BtreeIterator<cow_String, utl_FileOffset> it(m_Name2Handle); !it.IsDone(); it.Next()) {
    names.Append(it.CurrentKey());
  }
  return names;
}

rfm_TableMetadata const* rfm_DBMetadata::FindTableMetadata(cow_String const& name) const {
  if (!m_Name2Handle.IsMember(name)) return nullptr;
  utl_FileOffset handle = m_Name2Handle.ConstGet(name);
  return m_Handle2Table.IsMember(handle) ? m_Handle2Table.ConstGet(handle) : nullptr;
}

rfm_TableMetadata const* rfm_DBMetadata::FindTableMetadata(utl_FileOffset const& handle) const {
  if (!m_Handle2Table.IsMember(handle)) RaiseNoHandle(__LINE__);
  return m_Handle2Table.ConstGet(handle);
}

utl_FileOffset rfm_DBMetadata::FindTableMetadataHandle(cow_String const& name) const {
  if (!m_Name2Handle.IsMember(name)) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(
                         atr_translate("***ERROR: Can't find table metadata, \"%s\" in ZORBEX database file."), name));
  }
  return m_Name2Handle.ConstGet(name);
}

void rfm_DBMetadata::InsertInMapClassName2ClassVersion(cow_String const& className, int version) {
  m_ClassVersions.Insert(className, version);
}
