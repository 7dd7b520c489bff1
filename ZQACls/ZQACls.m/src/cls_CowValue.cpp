#include "cls_CowValue.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_ClassMetadata.h"
#include "mem_Alloc.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace {

char const kSourcePath[] = "ZQACls/ZQACls.m/src/cls_CowValue";

// A C++ type's name as written in the source, for messages.
cow_String TypeName(std::type_info const& type) {
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  return cow_String(status == 0 && name ? name.get() : type.name());
}

}  // namespace

cls_CowValue::cls_CowValue(void* object, cls_ClassMetadata const& metadata)
    : m_Referent(object), m_Metadata(&metadata) {
  try {
    m_Count = static_cast<std::int32_t*>(mem_OperatorNewTinyThrow(sizeof(std::int32_t)));
  } catch (...) {
    metadata.Delete(object);
    throw;
  }
  *m_Count = 1;
}

cls_CowValue::cls_CowValue(cls_CowValue const& other) noexcept
    : m_Count(other.m_Count), m_Referent(other.m_Referent), m_Kind(other.m_Kind), m_Metadata(other.m_Metadata) {
  if (m_Count) ++*m_Count;
}

cls_CowValue& cls_CowValue::operator=(cls_CowValue const& other) noexcept {
  // The source's share is taken first: ending the old referent may end the
  // object that holds other.
  cls_CowValue kept(other);
  Reset();
  m_Count = kept.m_Count;
  m_Referent = kept.m_Referent;
  m_Kind = kept.m_Kind;
  m_Metadata = kept.m_Metadata;
  if (m_Count) ++*m_Count;
  return *this;
}

void cls_CowValue::Reset() noexcept {
  std::int32_t* count = m_Count;
  void* referent = m_Referent;
  Kind const* kind = m_Kind;
  cls_ClassMetadata const* metadata = m_Metadata;
  // Emptied before the referent ends, whose destructor may reach this value.
  m_Count = nullptr;
  m_Referent = nullptr;
  m_Kind = nullptr;
  m_Metadata = nullptr;
  if (count == nullptr || --*count > 0) return;
  if (referent != nullptr) {
    if (kind != nullptr)
      kind->m_Delete(referent);
    else
      metadata->Delete(referent);
  }
  mem_Free(count);
}

bool cls_CowValue::BuiltBy(unsigned int classId) const { return m_Metadata->ClassId() == classId; }

void cls_CowValue::RaiseNotHeld(std::type_info const& asked) const {
  cow_String const held = m_Kind != nullptr ? TypeName(*m_Kind->m_Type) : m_Metadata->ClassName();
  nex_ThrowMessage(
      kSourcePath, __LINE__,
      atr_SubstituteFormat(atr_translate("cls_CowValue::As - The value holds %s, not %s."), held, TypeName(asked)));
}
