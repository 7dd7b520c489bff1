#include "cls_ClassRegistrar.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "typ_ArchCompTable.h"

namespace {
char const kSourcePath[] = "ZQACls/ZQACls.m/src/cls_ClassRegistrar";
}

cls_ClassRegistrar::cls_ClassRegistrar() = default;

cls_ClassRegistrar::~cls_ClassRegistrar() = default;

cls_ClassMetadata& cls_ClassRegistrar::CreateClassMD(cow_String const& name, unsigned int classId, int version,
                                                     cls_ClassMetadata::Constructor ctor, unsigned int baseClassId) {
  return AddClassMD(new cls_ClassMetadata(name, classId, version, ctor, baseClassId));
}

cls_ClassMetadata& cls_ClassRegistrar::AddClassMD(cls_ClassMetadata* metadata) {
  std::unique_ptr<cls_ClassMetadata> owned(metadata);
  auto const version = owned->GetVersion();
  Versions const* versions = Find(owned->ClassId());
  if (versions != nullptr && versions->count(version) != 0)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("cls_ClassRegistrar::AddClassMD - Class %s (%08X) version %d "
                                                        "is already registered."),
                                          owned->ClassName(), owned->ClassId(), version));
  typ_ArchCompTable::InsertName(owned->ClassId(), owned->ClassName());
  cls_ClassMetadata& added = *owned;
  // A class is entered with its first version: no class is without one.
  Versions first;
  first.emplace(version, std::move(owned));
  auto const [entry, isNew] = m_Classes.try_emplace(added.ClassId(), std::move(first));
  if (!isNew) entry->second.emplace(version, std::move(first.begin()->second));
  return added;
}

void cls_ClassRegistrar::DeleteClass(cow_String const& name, unsigned int classId) {
  auto const found = m_Classes.find(classId);
  if (found == m_Classes.end()) return;
  cow_String const& registered = found->second.rbegin()->second->ClassName();
  if (registered != name)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("cls_ClassRegistrar::DeleteClass - Class ID %08X is "
                                                        "registered as %s, not as %s."),
                                          classId, registered, name));
  m_Classes.erase(found);
}

cls_ClassRegistrar::Versions const* cls_ClassRegistrar::Find(unsigned int classId) const {
  auto const found = m_Classes.find(classId);
  return found == m_Classes.end() ? nullptr : &found->second;
}

bool cls_ClassRegistrar::ClassIsPresent(unsigned int const& classId) const { return Find(classId) != nullptr; }

cls_ClassMetadata const& cls_ClassRegistrar::ConstGet(unsigned int const& classId) const {
  Versions const* versions = Find(classId);
  if (versions == nullptr)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("cls_ClassRegistrar::ConstGet - Class ID %08X is not "
                                                        "registered."),
                                          classId));
  return *versions->rbegin()->second;
}

cls_ClassMetadata const& cls_ClassRegistrar::GetClassMetadata(unsigned int classId, int version) const {
  Versions const* versions = Find(classId);
  auto const found = versions != nullptr ? versions->find(version) : Versions::const_iterator();
  if (versions == nullptr || found == versions->end())
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("cls_ClassRegistrar::GetClassMetadata - Class ID %08X "
                                                        "version %d is not registered."),
                                          classId, version));
  return *found->second;
}

unsigned int cls_ClassRegistrar::GetClassID(cow_String const& name) const {
  for (auto const& [classId, versions] : m_Classes)
    if (versions.rbegin()->second->ClassName() == name) return classId;
  return cls_kNoClass;
}

int cls_ClassRegistrar::GetLastClassVersionNumber(unsigned int const& classId) const {
  Versions const* versions = Find(classId);
  return versions != nullptr ? versions->rbegin()->first : -1;
}

int cls_ClassRegistrar::GetPreviousClassVersionNumber(unsigned int const& classId, int version) const {
  Versions const* versions = Find(classId);
  if (versions == nullptr) return -1;
  auto const atOrAbove = versions->lower_bound(version);
  return atOrAbove == versions->begin() ? -1 : std::prev(atOrAbove)->first;
}

int cls_ClassRegistrar::GetFirstClassVersionNumberGREQ(unsigned int const& classId, int version) const {
  Versions const* versions = Find(classId);
  if (versions == nullptr) return -1;
  auto const atOrAbove = versions->lower_bound(version);
  return atOrAbove == versions->end() ? -1 : atOrAbove->first;
}
