#ifndef rom_MapStore_h
#define rom_MapStore_h

#include "cow_String.h"
#include "rfm_FieldHandle.h"
#include "rfm_Handle.h"
#include "rfm_Table.h"
#include "rfm_Type.h"

#include <type_traits>

class rom_Transporter;

// What every map's table must be, checked when it is opened, so that a
// damaged file ends in an error naming it rather than in reads of the wrong
// shape; and how keys and values go into and out of its rows.
namespace rom_MapStore {
// A new table of layout tableName, flushed at once so that it has a handle.
rfm_Table NewTable(rom_Transporter& transporter, char const* tableName, int quantum);
// The table at handle; raises when it is not a table.
rfm_Table OpenTable(rom_Transporter& transporter, rfm_Handle const& handle, int quantum);
// The field name of type in table, addressed by its index from here on;
// raises when the table has no such field.
rfm_FieldHandle Field(rom_Transporter const& transporter, rfm_Table const& table, char const* name, rfm_Type type);
// A map of objects refers to them by the object id and the class id in its
// first two columns, as every collection of objects does; raises when the
// table's are not so.
void CheckReferenceColumns(rom_Transporter const& transporter, rfm_Table const& table);
// The key field of keyType of a map of objects, whose reference columns are
// checked too.
rfm_FieldHandle ObjectKeyField(rom_Transporter const& transporter, rfm_Table const& table, rfm_Type keyType);
}  // namespace rom_MapStore

// How a key or value of type T is stored: ints as ints, an unsigned int as
// the int of the same bits, float, double and cow_String in their own types.
template <class T>
struct rom_MapField {
  static_assert(std::is_same_v<T, int> || std::is_same_v<T, unsigned int> || std::is_same_v<T, float> ||
                    std::is_same_v<T, double> || std::is_same_v<T, cow_String>,
                "a map holds int, unsigned int, float, double or cow_String");

  static constexpr rfm_Type kType = std::is_same_v<T, float>        ? rfm_TypeFloat
                                    : std::is_same_v<T, double>     ? rfm_TypeDouble
                                    : std::is_same_v<T, cow_String> ? rfm_TypeString
                                                                    : rfm_TypeInt;

  static T Read(rfm_Row const& row, rfm_FieldHandle const& field) {
    if constexpr (std::is_same_v<T, float>) {
      return row.ReadFieldFloat(field);
    } else if constexpr (std::is_same_v<T, double>) {
      return row.ReadFieldDouble(field);
    } else if constexpr (std::is_same_v<T, cow_String>) {
      return row.ReadFieldString(field);
    } else {
      return static_cast<T>(row.ReadFieldInt(field));
    }
  }

  static void Write(rfm_Row const& row, rfm_FieldHandle const& field, T const& value) {
    if constexpr (std::is_same_v<T, float>) {
      row.WriteFieldFloat(field, value);
    } else if constexpr (std::is_same_v<T, double>) {
      row.WriteFieldDouble(field, value);
    } else if constexpr (std::is_same_v<T, cow_String>) {
      row.WriteFieldString(field, value);
    } else {
      row.WriteFieldInt(field, static_cast<int>(value));
    }
  }
};

#endif
