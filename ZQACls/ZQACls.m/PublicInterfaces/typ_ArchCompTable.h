#ifndef typ_ArchCompTable_h
#define typ_ArchCompTable_h

#include "ZQABasExport.h"
#include "cow_List.h"
#include "cow_String.h"

// The class names of one component: a class id is the component number in
// its upper 16 bits and the class's row in the lower 16. Row 0 is reserved.
class ZQA_EXPORT typ_ArchCompEntry {
public:
  typ_ArchCompEntry() = default;
  explicit typ_ArchCompEntry(cow_List<cow_String> const& names) : m_Names(names) {}

  cow_List<cow_String> const& Names() const { return m_Names; }

private:
  cow_List<cow_String> m_Names;
};

// Class ids to class names, process-wide, for messages: components enter
// their tables, and registrars enter each class they register. Safe to use
// from several threads.
class ZQA_EXPORT typ_ArchCompTable {
public:
  static void InsertEntry(unsigned int component, typ_ArchCompEntry const& entry);
  static void InsertName(unsigned int classId, cow_String const& name);
  // The class's name, or its id as "0x%08X" when no one named it.
  static cow_String GetName(unsigned int classId);
};

#endif
