#include "rfm_DatabaseRepr.h"

#include "atr_translate.h"
#include "rfm_ArrayRepr.h"
#include "rfm_DBMetadata.h"
#include "rfm_ObjectMagic.h"
#include "rfm_SpaceRepr.h"

#include <cstdint>
#include <memory>

rfm_DatabaseRepr::~rfm_DatabaseRepr() = default;

cow_String rfm_DatabaseRepr::GetObjectLocationReport(utl_FileOffset const&) const {
  return atr_translate("Object location report not supported for this rfm database type.");
}

rfm_TableMetadata const* rfm_DatabaseRepr::GetTableMetadata(cow_String const& name) const {
  return m_Metadata->FindTableMetadata(name);
}

rfm_TableMetadata const* rfm_DatabaseRepr::GetTableMetadata(utl_FileOffset const& handle) const {
  return m_Metadata->FindTableMetadata(handle);
}

utl_FileOffset rfm_DatabaseRepr::GetTableMetadataHandle(cow_String const& name) const {
  return m_Metadata->FindTableMetadataHandle(name);
}

cow_List<cow_String> rfm_DatabaseRepr::GetTableMetadataNames() const { return m_Metadata->GetTableMetadataNames(); }

bool rfm_DatabaseRepr::HasTable(cow_String const& name) const { return m_Metadata->HasTable(name); }

void rfm_DatabaseRepr::Bind() { m_Metadata->Bind(); }

rfm_TableMetadata* rfm_DatabaseRepr::BindTableMetadata(utl_FileOffset handle) { return m_Metadata->BindHandle(handle); }

rfm_TableMetadata* rfm_DatabaseRepr::Bind(rfm_TableMetadata const& definition) { return m_Metadata->Bind(definition); }

cow_Map<cow_String, int> const& rfm_DatabaseRepr::GetMapClassName2ClassVersion() const {
  return m_Metadata->GetMapClassName2ClassVersion();
}

void rfm_DatabaseRepr::InsertInMapClassName2ClassVersion(cow_String const& className, int version) {
  m_Metadata->InsertInMapClassName2ClassVersion(className, version);
}

rfm_Type rfm_DatabaseRepr::HandleType(rfm_Handle const& handle) {
  std::unique_ptr<rfm_SpaceRepr> space(Space(handle, -1));
  // An object's kind: its magic, a word, and an array's element type.
  constexpr int kWords = kRfmObjectKindSize / 4;
  int words[kWords] = {};
  if (space->ReadIntArray(words, kWords) < kWords) return rfm_TypeSpace;
  switch (static_cast<std::uint32_t>(words[0])) {
    case kRfmTableMagic:
      return rfm_TypeTable;
    case kRfmTaggedStreamMagic:
      return rfm_TypeStream;
    case kRfmArrayMagic:
      // A damaged element type answers none: a value outside the enumeration cannot be one.
      return rfm_ArrayRepr::IsElementType(words[2]) ? static_cast<rfm_Type>(words[2]) : rfm_TypeNone;
    default:
      return rfm_TypeSpace;
  }
}
