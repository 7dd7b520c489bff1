#include "zdb_CollectionTarget.h"

#include "rom_HeaderLayout.h"

#include "rfm_Array.h"
#include "rfm_Space.h"
#include "zdb_Database.h"
#include "zdb_TableFinder.h"
#include "zdb_Text.h"

#include <cstring>
#include <exception>

namespace {

constexpr char kNoObject[] = "names no object";

// A list holds its array's every element, one a row as the object layer
// writes it; an array of more fields a row still holds them all, flat.
template <class Array>
long long Elements(Array const& array) {
  return static_cast<long long>(array.Length()) * array.FieldCount();
}

long long ArrayElements(rfm_Database const& database, rfm_Handle handle, rfm_Type type) {
  switch (type) {
    case rfm_TypeInt:
      return Elements(database.ArrayInt(handle, -1, 0));
    case rfm_TypeFloat:
      return Elements(database.ArrayFloat(handle, -1, 0));
    case rfm_TypeDouble:
      return Elements(database.ArrayDouble(handle, -1, 0));
    default:
      return Elements(database.ArrayString(handle, -1, 0));
  }
}

void FindListTable(zdb_TableFinder const& finder, zdb_CollectionTarget& target) {
  std::string why;
  rfm_Table table = finder.Find(target.m_Handle, why);
  if (table.IsNull()) {
    target.m_Problem = why;
    return;
  }
  std::string layout = table.TableMetadata().TableName().CStr();
  if (layout == kRomListTableName) {
    target.m_Kind = zdb_CollectionTarget::kObjects;
    target.m_ObjectList = true;
  } else if (layout == kRomStringArrayTableName) {
    target.m_Kind = zdb_TypeName(rfm_TypeString);
  } else {
    target.m_Problem = "names table " + zdb_QuotedText(layout) + ", not a list";
    return;
  }
  target.m_Length = table.Length();
}

}  // namespace

std::string zdb_CollectionTarget::Summary() const {
  if (!Found()) return m_Problem;
  std::string kind = m_Kind;
  // The nouns count what they name; the element types stand as they are.
  bool noun = std::strcmp(m_Kind, kObjects) == 0 || std::strcmp(m_Kind, kBytes) == 0;
  if (noun && m_Length == 1) kind.pop_back();
  return std::to_string(m_Length) + " " + kind;
}

zdb_CollectionTarget zdb_CollectionTarget::OfList(zdb_TableFinder const& finder, int handle) {
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
    switch (type) {
      case rfm_TypeTable:
        FindListTable(finder, target);
        break;
      case rfm_TypeInt:
      case rfm_TypeFloat:
      case rfm_TypeDouble:
      case rfm_TypeString:
        target.m_Length = ArrayElements(finder.Database(), rfm_Handle(handle), type);
        target.m_Kind = zdb_TypeName(type);
        break;
      default:
        target.m_Problem = "names " + zdb_WithArticle(zdb_ObjectKind(type)) + ", not a list";
    }
  } catch (std::exception const& e) {
    target.m_Problem = "names " + zdb_WithArticle(zdb_ObjectKind(type)) + " that cannot be read: " + e.what();
  }
  return target;
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
