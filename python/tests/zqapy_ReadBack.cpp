// Reads a database file through the C++ API, row by row, and prints all it
// holds, for a test to hold against what another program (the Python
// package) wrote into it:
//
//   description HEX
//   table HANDLE NAME ROWS         then a "field NAME TYPE" line per field in
//                                  name order and a "row V..." line per row
//   array HANDLE TYPE FIELDS ROWS  then a "row V..." line per row
//   stream HANDLE                  then an "item TAG TYPE V" line per item
//
// A value V is "-" for a field holding no data, a decimal int or handle, a
// float or double in C's exact hexadecimal form (%a), or a string as "x"
// followed by the hexadecimal of its bytes, so that every value is one
// word whatever its characters.

#include "ZQARomCore.h"
#include "omi_BtreeIterator.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_File.h"
#include "rfm_Row.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TypeName.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::string Text(cow_String const& text) {
  std::string word = "x";
  char digits[3];
  for (int i = 0; i < text.Length(); ++i) {
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(text.CStr()[i]));
    word += digits;
  }
  return word;
}

void PrintTable(rfm_Table const& table) {
  rfm_TableMetadata const& layout = table.TableMetadata();
  std::vector<rfm_FieldMetadata> fields;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(table.GetFieldMap()); !it.IsDone(); it.Next())
    if (it.CurrentValue().Present()) fields.push_back(it.CurrentValue());
  std::printf("table %d %s %d\n", table.Handle().Value(), Text(layout.TableName()).c_str(), table.Length());
  for (rfm_FieldMetadata const& field : fields)
    std::printf("field %s %s\n", Text(field.Name()).c_str(), rfm_TypeName(field.Type()));
  for (int r = 0; r < table.Length(); ++r) {
    rfm_Row const row = table.ReadRow(r);
    std::printf("row");
    for (rfm_FieldMetadata const& field : fields) {
      rfm_FieldHandle const handle(field.Name(), field.Index());
      if (!row.DataIsPresent(handle)) {
        std::printf(" -");
        continue;
      }
      switch (field.Type()) {
        case rfm_TypeInt:
          std::printf(" %d", row.ReadFieldInt(handle));
          break;
        case rfm_TypeHandle:
          std::printf(" %d", row.ReadFieldHandle(handle).Value());
          break;
        case rfm_TypeFloat:
          std::printf(" %a", static_cast<double>(row.ReadFieldFloat(handle)));
          break;
        case rfm_TypeDouble:
          std::printf(" %a", row.ReadFieldDouble(handle));
          break;
        default:
          std::printf(" %s", Text(row.ReadFieldString(handle)).c_str());
          break;
      }
    }
    std::printf("\n");
  }
}

void PrintValue(int value) { std::printf(" %d", value); }
void PrintValue(float value) { std::printf(" %a", static_cast<double>(value)); }
void PrintValue(double value) { std::printf(" %a", value); }
void PrintValue(cow_String const& value) { std::printf(" %s", Text(value).c_str()); }

template <class T, rfm_Type ElementType>
void PrintArray(rfm_Array<T, ElementType> const& array) {
  int const fields = array.FieldCount();
  int const rows = array.Length();
  std::printf("array %d %s %d %d\n", array.Handle().Value(), rfm_TypeName(ElementType), fields, rows);
  std::vector<T> row(static_cast<std::size_t>(fields));
  array.Seek(0);
  for (int r = 0; r < rows; ++r) {
    if (array.Read(row.data(), 1) != fields) throw std::runtime_error("an array row read short");
    std::printf("row");
    for (T const& value : row) PrintValue(value);
    std::printf("\n");
  }
}

void PrintStream(rfm_TaggedStream const& stream) {
  std::printf("stream %d\n", stream.Handle().Value());
  stream.Rewind();
  while (stream.Next()) {
    int const type = stream.GetType();
    std::printf("item %d %s", stream.GetID(), rfm_TypeName(type));
    switch (type) {
      case rfm_TypeInt:
        PrintValue(stream.GetInt());
        break;
      case rfm_TypeHandle:
        PrintValue(stream.GetHandle().Value());
        break;
      case rfm_TypeFloat:
        PrintValue(stream.GetFloat());
        break;
      case rfm_TypeDouble:
        PrintValue(stream.GetDouble());
        break;
      default:
        PrintValue(stream.GetString());
        break;
    }
    std::printf("\n");
  }
}

void PrintDatabase(char const* name) {
  rfm_Database const database = rfm_Database::Open(rfm_File::Open(name, utl_FileAccessRead, false), cow_String());
  std::printf("description %s\n", Text(database.Description()).c_str());
  cow_List<rfm_Handle> const handles = database.ObjectHandles();
  for (int i = 0; i < handles.Length(); ++i) {
    rfm_Handle const handle = handles[i];
    switch (database.HandleType(handle)) {
      case rfm_TypeTable:
        PrintTable(database.Table(handle, -1, -1));
        break;
      case rfm_TypeStream:
        PrintStream(database.TaggedStream(handle, 0));
        break;
      case rfm_TypeInt:
        PrintArray(database.ArrayInt(handle, -1, 0));
        break;
      case rfm_TypeFloat:
        PrintArray(database.ArrayFloat(handle, -1, 0));
        break;
      case rfm_TypeDouble:
        PrintArray(database.ArrayDouble(handle, -1, 0));
        break;
      case rfm_TypeString:
        PrintArray(database.ArrayString(handle, -1, 0));
        break;
      default:
        break;  // the string pool, the catalogue and plain spaces
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: zqapy_ReadBack FILE\n");
    return 2;
  }
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = EXIT_SUCCESS;
  try {
    PrintDatabase(argv[1]);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s: %s\n", argv[1], e.what());
    status = EXIT_FAILURE;
  }
  ZQARomCore_finalize(modules);
  return status;
}
