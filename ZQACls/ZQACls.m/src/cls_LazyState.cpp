#include "cls_LazyState.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_AttributeType.h"
#include "typ_ArchCompTable.h"

namespace {
char const kSourcePath[] = "ZQACls/ZQACls.m/src/cls_LazyState";

char const kClosedBeforeLoad[] =
    "cls_Lazy::Get - The database was closed before the object of class %s was loaded: a lazily held object must "
    "be loaded while its database is open.";
char const kClosedBeforeUid[] =
    "cls_Lazy::Uid - The database was closed before the identity of the object of class %s was asked for: ask for "
    "it, or load the object, while its database is open.";
}  // namespace

cls_LazyState::cls_LazyState() : m_ClassId(cls_kNoClass), m_Stored(false), m_Loaded(true) {}

cls_LazyState::cls_LazyState(std::unique_ptr<cls_AgentProxy> proxy, unsigned int classId)
    : m_Proxy(std::move(proxy)), m_ClassId(classId), m_Stored(true), m_Loaded(false) {
  m_Proxy->RegisterPC(this);
}

cls_LazyState::~cls_LazyState() = default;

bool cls_LazyState::IsLoaded() const { return m_Loaded || (m_Proxy != nullptr && m_Proxy->IsLoaded()); }

cls_CowValue cls_LazyState::Load() const {
  if (m_Proxy == nullptr) RaiseClosed(kClosedBeforeLoad);
  return m_Proxy->Load();
}

void cls_LazyState::MarkLoaded() {
  m_Loaded = true;
  // Known now without cost (loading gave the row its identity), and kept:
  // the identity outlives the database with the object.
  if (m_Proxy != nullptr && m_Uid.IsNull()) m_Uid = m_Proxy->GetUid();
}

cls_Uid const& cls_LazyState::Uid() const {
  // Made from a value in memory: the object's own member names it.
  if (!m_Stored || !m_Uid.IsNull()) return m_Uid;
  if (m_Proxy == nullptr) RaiseClosed(kClosedBeforeUid);
  m_Uid = m_Proxy->GetUid();
  return m_Uid;
}

void cls_LazyState::Disconnect() {
  // The identity of an object never asked for is not pinned now: closing a
  // database holding many unloaded members would make an entry for each.
  m_Proxy.reset();
  UnLink();
}

void cls_LazyState::RaiseClosed(char const* message) const {
  nex_ThrowMessage(kSourcePath, __LINE__,
                   atr_SubstituteFormat(atr_translate(message), typ_ArchCompTable::GetName(m_ClassId)));
}
