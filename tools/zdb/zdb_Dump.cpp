// zdb dump: the rows of tables, the rows of arrays and the items of tagged
// streams, as text or as one JSON document.

#include "rfm_Array.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TypeName.h"
#include "zdb_Arguments.h"
#include "zdb_Command.h"
#include "zdb_Database.h"
#include "zdb_DumpJson.h"
#include "zdb_DumpText.h"
#include "zdb_Failure.h"
#include "zdb_ObjectFile.h"
#include "zdb_TableColumns.h"

#include <climits>
#include <cstdio>
#include <memory>

namespace {

// The rows (or items) asked for: from m_First up to, not including, m_End.
struct RowRange {
  long long m_First = 0;
  long long m_End = INT_MAX;

  bool Contains(long long row) const { return row >= m_First && row < m_End; }
};

// "A:B", "A:", ":B", or "A" for the one row A.
RowRange ParseRows(std::string const& text) {
  RowRange range;
  std::size_t colon = text.find(':');
  std::string first = text.substr(0, colon);
  if (!first.empty()) range.m_First = zdb_ParseNumber(first, "first row", 0, INT_MAX);
  if (colon == std::string::npos) {
    range.m_End = range.m_First + 1;
  } else if (colon + 1 < text.size()) {
    range.m_End = zdb_ParseNumber(text.substr(colon + 1), "end row", 0, INT_MAX);
  }
  if (range.m_End < range.m_First) throw zdb_UsageError("--rows " + text + " ends before it begins");
  return range;
}

zdb_Value Integer(long long value, zdb_Value::Kind kind = zdb_Value::kInteger) {
  zdb_Value result;
  result.m_Kind = kind;
  result.m_Integer = value;
  return result;
}

zdb_Value ValueOf(int value) { return Integer(value); }

zdb_Value ValueOf(float value) {
  zdb_Value result;
  result.m_Kind = zdb_Value::kFloat;
  result.m_Float = value;
  return result;
}

zdb_Value ValueOf(double value) {
  zdb_Value result;
  result.m_Kind = zdb_Value::kDouble;
  result.m_Double = value;
  return result;
}

zdb_Value ValueOf(cow_String const& value) {
  zdb_Value result;
  result.m_Kind = zdb_Value::kString;
  result.m_String.assign(value.CStr(), static_cast<std::size_t>(value.Length()));
  return result;
}

// The file as the object layer's, whose tables' references a dump shows as
// one value each; null for a file whose object header cannot be read, which
// is then dumped field by field, as any other.
std::unique_ptr<zdb_ObjectFile> ReadObjectFile(rfm_Database const& database) {
  try {
    auto file = std::make_unique<zdb_ObjectFile>(database);
    if (file->Present()) return file;
  } catch (std::exception const&) {
  }
  return nullptr;
}

// Sends the objects of one database to a sink, each read through the library.
class Dumper {
public:
  Dumper(zdb_Database const& database, zdb_DumpSink& sink, RowRange rows)
      : m_Database(database),
        m_Db(database.Database()),
        m_Objects(ReadObjectFile(database.Database())),
        m_Sink(sink),
        m_Rows(rows) {}

  // Dumps the object; a failure is told to the sink and answered as its message.
  std::string Dump(rfm_Handle handle);
  // The rows and items dumped so far.
  long long Shown() const { return m_Shown; }

private:
  void DumpObject(rfm_Handle handle, rfm_Type type);
  void DumpTable(rfm_Handle handle);
  template <class T, rfm_Type Type>
  void DumpArray(rfm_Handle handle, rfm_Array<T, Type> const& array);
  void DumpStream(rfm_Handle handle);
  zdb_Value Field(rfm_Row const& row, int index, rfm_Type type) const;
  zdb_Value Column(rfm_Row const& row, zdb_Column const& column) const;

  zdb_Database const& m_Database;
  rfm_Database const& m_Db;
  std::unique_ptr<zdb_ObjectFile> m_Objects;
  zdb_DumpSink& m_Sink;
  RowRange m_Rows;
  bool m_Headed = false;  // the sink has the current object's heading
  long long m_Shown = 0;
};

std::string Dumper::Dump(rfm_Handle handle) {
  m_Headed = false;
  rfm_Type type = rfm_TypeSpace;
  try {
    type = m_Db.HandleType(handle);
    DumpObject(handle, type);
    m_Sink.EndObject();
    return std::string();
  } catch (std::exception const& e) {
    if (m_Headed) {
      m_Sink.Error(e.what());
      m_Sink.EndObject();
    } else {
      m_Sink.Unreadable(handle, rfm_ObjectKindName(type), e.what());
    }
    return e.what();
  }
}

void Dumper::DumpObject(rfm_Handle handle, rfm_Type type) {
  switch (type) {
    case rfm_TypeTable:
      return DumpTable(handle);
    case rfm_TypeStream:
      return DumpStream(handle);
    case rfm_TypeInt:
      return DumpArray(handle, m_Db.ArrayInt(handle, -1, 0));
    case rfm_TypeFloat:
      return DumpArray(handle, m_Db.ArrayFloat(handle, -1, 0));
    case rfm_TypeDouble:
      return DumpArray(handle, m_Db.ArrayDouble(handle, -1, 0));
    case rfm_TypeString:
      return DumpArray(handle, m_Db.ArrayString(handle, -1, 0));
    case rfm_TypeNone:
      // An array of a damaged element type: opening it raises the library's message.
      return DumpArray(handle, m_Db.ArrayInt(handle, -1, 0));
    default:
      m_Sink.Space(handle, m_Database.Describe(handle).m_Length);
      m_Headed = true;
  }
}

zdb_Value Dumper::Field(rfm_Row const& row, int index, rfm_Type type) const {
  rfm_FieldHandle handle(index);
  if (!row.DataIsPresent(handle)) return zdb_Value();
  switch (type) {
    case rfm_TypeInt:
      return ValueOf(row.ReadFieldInt(handle));
    case rfm_TypeHandle:
      return Integer(row.ReadFieldHandle(handle).Value(), zdb_Value::kHandle);
    case rfm_TypeFloat:
      return ValueOf(row.ReadFieldFloat(handle));
    case rfm_TypeDouble:
      return ValueOf(row.ReadFieldDouble(handle));
    default:
      return ValueOf(row.ReadFieldString(handle));
  }
}

zdb_Value Dumper::Column(rfm_Row const& row, zdb_Column const& column) const {
  if (column.m_Kind == zdb_Column::kField) return Field(row, column.m_Index, column.m_Type);
  zdb_Value value;
  if (!zdb_IsReference(column)) {
    rfm_FieldHandle field(column.m_Index);
    // A row without a handle holds no collection: an absent list reads as empty.
    if (!row.DataIsPresent(field)) return value;
    int handle = row.ReadFieldHandle(field).Value();
    value.m_Kind = zdb_Value::kCollection;
    value.m_Target = zdb_TargetOf(m_Objects->Finder(), column, handle);
    return value;
  }
  zdb_StoredReference reference = zdb_ReadReference(row, column);
  if (reference.IsNull()) {
    value.m_Kind = zdb_Value::kNullReference;
  } else {
    value.m_Kind = zdb_Value::kReference;
    value.m_String = m_Objects->Label(*reference.m_ClassId, *reference.m_Oid);
  }
  return value;
}

void Dumper::DumpTable(rfm_Handle handle) {
  rfm_Table table = m_Db.Table(handle, -1, -1);
  // Only a file of the object layer has references and collections:
  // m_Objects is set whenever a column is one.
  std::vector<zdb_Column> columns = m_Objects ? m_Objects->Columns(table) : zdb_FieldColumns(table);
  zdb_DumpSink::Fields names;
  for (zdb_Column const& column : columns) names.push_back({column.m_Name, zdb_ColumnTypeName(column)});
  m_Sink.Table(handle, table.TableMetadata().TableName().CStr(), table.Length(), names);
  m_Headed = true;
  std::vector<zdb_Value> values(columns.size());
  for (int number = static_cast<int>(m_Rows.m_First); number < table.Length() && m_Rows.Contains(number); ++number) {
    rfm_Row row = table.ReadRow(number);
    for (std::size_t i = 0; i < columns.size(); ++i) values[i] = Column(row, columns[i]);
    m_Sink.Row(number, values);
    ++m_Shown;
  }
}

template <class T, rfm_Type Type>
void Dumper::DumpArray(rfm_Handle handle, rfm_Array<T, Type> const& array) {
  int fields = array.FieldCount();
  m_Sink.Array(handle, Type, fields, array.Length());
  m_Headed = true;
  // A row is read only when the array holds it, so a damaged field count
  // never sizes a buffer beyond the file's own bytes.
  std::vector<zdb_Value> values;
  std::vector<T> row;
  for (int number = static_cast<int>(m_Rows.m_First); number < array.Length() && m_Rows.Contains(number); ++number) {
    row.resize(static_cast<std::size_t>(fields));
    values.resize(static_cast<std::size_t>(fields));
    array.Seek(number);
    if (array.Read(row.data(), 1) != fields) {
      throw std::runtime_error("row " + std::to_string(number) + " cannot be read in full");
    }
    for (int i = 0; i < fields; ++i) values[static_cast<std::size_t>(i)] = ValueOf(row[static_cast<std::size_t>(i)]);
    m_Sink.Row(number, values);
    ++m_Shown;
  }
}

void Dumper::DumpStream(rfm_Handle handle) {
  rfm_TaggedStream stream = m_Db.TaggedStream(handle, 0);
  m_Sink.Stream(handle);
  m_Headed = true;
  for (int number = 0; number < m_Rows.m_End && stream.Next(); ++number) {
    if (!m_Rows.Contains(number)) continue;
    int tag = stream.GetType();
    zdb_Value value;
    switch (tag) {
      case rfm_TypeInt:
        value = ValueOf(stream.GetInt());
        break;
      case rfm_TypeHandle:
        value = Integer(stream.GetHandle().Value(), zdb_Value::kHandle);
        break;
      case rfm_TypeFloat:
        value = ValueOf(stream.GetFloat());
        break;
      case rfm_TypeDouble:
        value = ValueOf(stream.GetDouble());
        break;
      default:
        value = ValueOf(stream.GetString());
    }
    m_Sink.Item(number, stream.GetID(), tag, value);
    ++m_Shown;
  }
}

// The objects to dump: the one at handle unless it is null, the tables of one
// layout, or every table, array and stream.
std::vector<rfm_Handle> Selection(zdb_Database const& database, zdb_Arguments const& arguments, rfm_Handle handle) {
  if (!handle.IsNull()) {
    if (!database.IsObject(handle)) {
      throw zdb_Failure(database.Name() + ": handle " + std::to_string(handle.Value()) + " names no object");
    }
    return {handle};
  }
  std::string table = arguments.Value("table", "");
  if (arguments.Has("table") && !database.Database().HasTable(table.c_str())) {
    throw zdb_Failure(database.Name() + ": no table layout is named \"" + table + "\"");
  }
  std::vector<rfm_Handle> selected;
  for (rfm_Handle handle : database.Handles()) {
    rfm_Type type = database.Database().HandleType(handle);
    if (type == rfm_TypeSpace) continue;
    if (arguments.Has("table")) {
      if (type != rfm_TypeTable) continue;
      if (table != database.Database().Table(handle, -1, -1).TableMetadata().TableName().CStr()) continue;
    }
    selected.push_back(handle);
  }
  // A layout that no table uses leaves nothing to show: asked for by name,
  // that is a failure, not an empty dump.
  if (arguments.Has("table") && selected.empty()) {
    throw zdb_Failure(database.Name() + ": no table uses the layout \"" + table + "\"");
  }
  return selected;
}

int Run(std::vector<std::string> const& words) {
  zdb_Arguments arguments(words, {{"table", true}, {"handle", true}, {"rows", true}, {"json", false}}, 1);
  if (arguments.Has("table") && arguments.Has("handle")) throw zdb_UsageError("give --table or --handle, not both");
  RowRange rows = arguments.Has("rows") ? ParseRows(arguments.Value("rows", "")) : RowRange();
  rfm_Handle handle;
  if (arguments.Has("handle")) {
    handle = rfm_Handle(static_cast<int>(zdb_ParseNumber(arguments.Value("handle", ""), "handle", 1, INT_MAX)));
  }
  zdb_Database database(arguments.Positional(0));
  std::vector<rfm_Handle> selected =
      zdb_OnFile(database.Name(), [&] { return Selection(database, arguments, handle); });
  std::unique_ptr<zdb_DumpSink> sink;
  if (arguments.Has("json")) {
    sink.reset(new zdb_DumpJson(stdout));
  } else {
    sink.reset(new zdb_DumpText(stdout));
  }
  Dumper dumper(database, *sink, rows);
  int status = kZdbSuccess;
  sink->Begin(database.Name());
  for (rfm_Handle handle : selected) {
    std::string failure = dumper.Dump(handle);
    if (failure.empty()) continue;
    std::fprintf(stderr, "zdb dump: %s: handle %d: %s\n", database.Name().c_str(), handle.Value(), failure.c_str());
    status = kZdbFailed;
  }
  sink->End();
  // Rows asked for that no object has are told, as a missing table is.
  if (status == kZdbSuccess && arguments.Has("rows") && dumper.Shown() == 0 && !selected.empty()) {
    std::fprintf(stderr, "zdb dump: %s: no row or item lies in --rows %s\n", database.Name().c_str(),
                 arguments.Value("rows", "").c_str());
    status = kZdbFailed;
  }
  return status;
}

}  // namespace

zdb_Command const zdb_DumpCommand = {
    "dump",
    "the rows of tables and arrays and the items of tagged streams",
    "usage: zdb dump FILE [--table NAME | --handle H] [--rows A:B] [--json]\n"
    "\n"
    "Prints every table, array and tagged stream of the database, or only\n"
    "the tables of the layout NAME, or only the object at handle H (decimal,\n"
    "or hexadecimal after 0x; a plain space shows its length only).\n"
    "\n"
    "  --rows A:B  rows A up to, not including, B (of tables and arrays; items\n"
    "              of streams); A: and :B leave one end open, A alone is row A\n"
    "  --json      one JSON document instead of text\n"
    "\n"
    "Text shows a table's row as name=value, an absent field as 'absent',\n"
    "strings in double quotes with \\\" \\\\ \\b \\f \\n \\r \\t and \\xHH for other\n"
    "control bytes and for bytes that are not UTF-8, and numbers in the\n"
    "shortest form that reads back as the same value.\n"
    "\n"
    "In a file of the object layer, a reference to an object, which a class's\n"
    "table stores as the int fields N#OID and N#ClassID and a collection's as\n"
    "OID and ClassID, shows as one field, N (or OID), whose value is the class\n"
    "and the oid, Shape[3]: the class by its name in the catalogue, an internal\n"
    "class by its own name, any other by its id, 0x00010001[3]. A reference\n"
    "with a negative oid, or with a field that holds no data, is null. A\n"
    "derived class's ##BaseClassOID shows so too, as a row of its base class.\n"
    "The Target#Handle of a row of ##InternalList shows the handle with the\n"
    "list's length and element kind, 57 (8 int), 58 (0 double), 59 (3 objects)\n"
    "for a table of the ##List layout, and of ##InternalBlob with the blob's\n"
    "bytes, 61 (1200 bytes). That of ##InternalMap, and both handles of\n"
    "##InternalDblCol, show the map's entries (its table's rows, those of a\n"
    "removed or a repeated key too) and its key and value, 63 (3 entries\n"
    "string to object), 64 (0 entries int to double). A handle that names no\n"
    "such store says what it names instead, 62 (names no object).\n"
    "\n"
    "JSON: {\"file\": ..., \"objects\": [...]}, an object per table, array or\n"
    "stream with its \"handle\" and \"kind\"; rows as {\"row\": n, \"values\": ...}.\n"
    "An absent field is null. A reference is the string the text shows, its\n"
    "field of type \"reference\"; a null reference is null. A list's, blob's or\n"
    "map's handle, a field of type \"list\", \"blob\" or \"map\", is {\"handle\": 57,\n"
    "\"length\": 8, \"kind\": \"int\"} (kind int, float, double, string, objects or\n"
    "bytes, or a map's key and value, \"string to object\"), or {\"handle\": 62,\n"
    "\"problem\": \"names no object\"}. Doubles read back exactly; a float is\n"
    "written as the double of its value; NaN and the infinities are the\n"
    "strings \"NaN\", \"Infinity\" and \"-Infinity\". Strings are UTF-8: a byte\n"
    "that is not part of valid UTF-8 becomes the character of the same number\n"
    "(\\u0080 to \\u00FF). An object that could not be read in full has an\n"
    "\"error\" member, and the exit status is then 1.\n"
    "\n"
    "What was asked for and cannot be shown fails with exit status 1 and the\n"
    "reason on standard error: no table of the layout NAME, no row or item in\n"
    "--rows A:B.\n",
    Run,
};
