#include "typ_ArchCompTable.h"

#include "atr_SubstituteFormat.h"

#include <map>
#include <mutex>

namespace {
// Names entered by components come first; a registrar's name fills a row
// no component named.
struct Names {
  std::mutex mutex;
  std::map<unsigned int, typ_ArchCompEntry> components;
  std::map<unsigned int, cow_String> classes;
};

Names& TheNames() {
  static Names* names = new Names;  // never destroyed: messages may be made during shutdown
  return *names;
}

constexpr unsigned int kRowBits = 16;
constexpr unsigned int kRowMask = (1u << kRowBits) - 1;
}  // namespace

void typ_ArchCompTable::InsertEntry(unsigned int component, typ_ArchCompEntry const& entry) {
  Names& names = TheNames();
  std::lock_guard<std::mutex> lock(names.mutex);
  names.components[component] = entry;
}

void typ_ArchCompTable::InsertName(unsigned int classId, cow_String const& name) {
  Names& names = TheNames();
  std::lock_guard<std::mutex> lock(names.mutex);
  names.classes[classId] = name;
}

cow_String typ_ArchCompTable::GetName(unsigned int classId) {
  Names& names = TheNames();
  {
    std::lock_guard<std::mutex> lock(names.mutex);
    auto const component = names.components.find(classId >> kRowBits);
    int const row = static_cast<int>(classId & kRowMask);
    if (component != names.components.end() && row > 0 && row < component->second.Names().Length())
      return component->second.Names()[row];
    auto const named = names.classes.find(classId);
    if (named != names.classes.end()) return named->second;
  }
  return cow_String(atr_SubstituteFormat("0x%08X", classId).CStr());
}
