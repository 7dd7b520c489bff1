#include "zdb_CollectionTarget.h"

#include "rfm_TypeName.h"
#include "rom_HeaderLayout.h"

#include "rfm_Array.h"
#include "rfm_Space.h"
#include "zdb_Database.h"
#include "zdb_TableFinder.h"
#include "zdb_Text.h"

#include <exception>

namespace {

constexpr char kNoObject[] = "names no object";
// A map's kind: its key's type, kKeyToValue, its value's type or kObject.
constexpr char kKeyToValue[] = " to ";
constexpr char kObject[] = "object";
constexpr char kEntry[] = "entry";
constexpr char kEntries[] = "entries";

// "names an int array", "names a table".
std::string Names(rfm_Type type) { return "names " + zdb_WithArticle(rfm_ObjectKindName(type)); }

// A list holds its array's every element, one a row as the object layer
// writes it; an array of more fields a row still holds them all, flat.
template <class Array>
void FindArray(Array const& array, rfm_Type type, zdb_CollectionTarget& target) {
  target.m_FieldsPerRow = array.FieldCount();
  target.m_Length = static_cast<long long>(array.Length()) * array.FieldCount();
  target.m_Kind = rfm_TypeName(type);
}

void FindListArray(rfm_Database const& database, rfm_Type type, zdb_CollectionTarget& target) {
  rfm_Handle handle(target.m_Handle);
  switch (type) {
    case rfm_TypeInt:
      return FindArray(database.ArrayInt(handle, -1, 0), type, target);
    case rfm_TypeFloat:
      return FindArray(database.ArrayFloat(handle, -1, 0), type, target);
    case rfm_TypeDouble:
      return FindArray(database.ArrayDouble(handle, -1, 0), type, target);
    default:
      return FindArray(database.ArrayString(handle, -1, 0), type, target);
  }
}

// The table that target's handle names, which is one; null, with target's
// problem set, when it cannot be opened.
rfm_Table OpenTable(zdb_TableFinder const& finder, zdb_CollectionTarget& target) {
  std::string why;
  rfm_Table table = finder.Find(target.m_Handle, why);
  if (table.IsNull()) target.m_Problem = why;
  return table;
}

void FindListTable(zdb_TableFinder const& finder, zdb_CollectionTarget& target) {
  rfm_Table table = OpenTable(finder, target);
  if (table.IsNull()) return;
  std::string layout = table.TableMetadata().TableName().CStr();
  if (layout == kRomListTableName) {
    target.m_Kind = zdb_CollectionTarget::kObjects;
    target.m_ObjectRows = true;
  } else if (layout == kRomStringArrayTableName) {
    target.m_Kind = rfm_TypeName(rfm_TypeString);
  } else {
    target.m_Problem = "names table " + zdb_QuotedText(layout) + ", not a list";
    return;
  }
  target.m_Table = layout;
  target.m_Length = table.Length();
}

void FindMapTable(zdb_TableFinder const& finder, zdb_CollectionTarget& target) {
  rfm_Table table = OpenTable(finder, target);
  if (table.IsNull()) return;
  std::string layout = table.TableMetadata().TableName().CStr();
  for (rom_MapLayout const& map : kRomMapLayouts) {
    if (layout != map.m_Name) continue;
    bool objects = map.m_Value == rfm_TypeNone;
    target.m_Map = true;
    target.m_Table = layout;
    target.m_ObjectRows = objects;
    target.m_Kind =
        std::string(rfm_TypeName(map.m_Key)) + kKeyToValue + (objects ? kObject : rfm_TypeName(map.m_Value));
    target.m_Length = table.Length();
    return;
  }
  target.m_Problem = "names table " + zdb_QuotedText(layout) + ", not a map";
}

// The target of handle, its store read by find(finder, target, type) once
// the handle is known to name an object of that type. Whatever cannot be
// read becomes the target's problem.
template <class Find>
zdb_CollectionTarget Target(zdb_TableFinder const& finder, int handle, Find find) {
  zdb_CollectionTarget target;
  target.m_Handle = handle;
  if (!finder.IsObject(handle)) {
    target.m_Problem = kNoObject;
    return target;
  }
  rfm_Type type = rfm_TypeNone;
  try {
    type = finder.Database().HandleType(rfm_Handle(handle));
  } catch (std::exception const& e) {
    target.m_Problem = std::string("names an object that cannot be read: ") + e.what();
    return target;
  }
  try {
    find(finder, target, type);
  } catch (std::exception const& e) {
    target.m_Problem = Names(type) + " that cannot be read: " + e.what();
  }
  return target;
}

}  // namespace

std::string zdb_CollectionTarget::Summary() const {
  if (!Found()) return m_Problem;
  std::string count = std::to_string(m_Length) + " ";
  if (m_Map) return count + (m_Length == 1 ? kEntry : kEntries) + " " + m_Kind;
  std::string kind = m_Kind;
  // The nouns count what they name; the element types stand as they are.
  bool noun = m_Kind == kObjects || m_Kind == kBytes;
  if (noun && m_Length == 1) kind.pop_back();
  return count + kind;
}

zdb_CollectionTarget zdb_CollectionTarget::OfList(zdb_TableFinder const& finder, int handle) {
  return Target(finder, handle, [](zdb_TableFinder const& finder, zdb_CollectionTarget& target, rfm_Type type) {
    switch (type) {
      case rfm_TypeTable:
        return FindListTable(finder, target);
      case rfm_TypeInt:
      case rfm_TypeFloat:
      case rfm_TypeDouble:
      case rfm_TypeString:
        return FindListArray(finder.Database(), type, target);
      default:
        target.m_Problem = Names(type) + ", not a list";
    }
  });
}

zdb_CollectionTarget zdb_CollectionTarget::OfMap(zdb_TableFinder const& finder, int handle) {
  return Target(finder, handle, [](zdb_TableFinder const& finder, zdb_CollectionTarget& target, rfm_Type type) {
    if (type == rfm_TypeTable) return FindMapTable(finder, target);
    target.m_Problem = Names(type) + ", not a map";
  });
}

zdb_CollectionTarget zdb_CollectionTarget::OfBlob(zdb_TableFinder const& finder, int handle) {
  zdb_CollectionTarget target;
  target.m_Handle = handle;
  if (!finder.IsObject(handle)) {
    target.m_Problem = kNoObject;
    return target;
  }
  try {
    target.m_Length = finder.Database().Space(rfm_Handle(handle), -1).Length();
    target.m_Kind = kBytes;
  } catch (std::exception const& e) {
    target.m_Problem = std::string("names a space that cannot be read: ") + e.what();
  }
  return target;
}
