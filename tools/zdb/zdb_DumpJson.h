#ifndef zdb_DumpJson_h
#define zdb_DumpJson_h

#include "zdb_DumpSink.h"
#include "zdb_JsonWriter.h"

// zdb dump as one JSON document:
//   {"file": ..., "objects": [
//     {"handle": 4, "kind": "table", "name": "Nodes", "rowCount": 2,
//      "fields": [{"name": "id", "type": "int"}, ...],
//      "rows": [{"row": 0, "values": {"id": 1, "x": 0.5, "label": null}}, ...]},
//     {"handle": 6, "kind": "array", "elementType": "int", "fieldsPerRow": 8, "rowCount": 1,
//      "rows": [{"row": 0, "values": [1, 2, 3, 4, 5, 6, 7, 8]}]},
//     {"handle": 5, "kind": "stream", "items": [{"item": 0, "id": 1, "type": "string", "value": "demo"}]},
//     {"handle": 2, "kind": "space", "length": 0}]}
// An absent field is null. A handle is its number. A float is written as the
// double of the same value, so that it reads back exactly as a double. A
// reference to an object, a field of type "reference", is the string of its
// label, "Shape[3]", as the text shows it; a null reference is null, as the
// object layer reads a pair without data, so that a script tests one thing.
// A list's or a blob's handle, a field of type "list" or "blob", is an
// object {"handle": 57, "length": 8, "kind": "int"} (kind "int", "float",
// "double", "string", "objects" or "bytes"), or {"handle": 99, "problem":
// "names no object"} when it names no store of its kind: a script reads
// the numbers without parsing the text's form.
// An object that could not be read in full has an "error" member.
class zdb_DumpJson : public zdb_DumpSink {
public:
  explicit zdb_DumpJson(std::FILE* out) : m_Json(out) {}

  void Begin(std::string const& file) override;
  void Table(rfm_Handle handle, std::string const& name, int rows, Fields const& fields) override;
  void Array(rfm_Handle handle, rfm_Type element, int fieldsPerRow, int rows) override;
  void Stream(rfm_Handle handle) override;
  void Space(rfm_Handle handle, utl_FileOffset length) override;
  void Row(int number, std::vector<zdb_Value> const& values) override;
  void Item(int number, int id, int tag, zdb_Value const& value) override;
  void Error(std::string const& message) override;
  void Unreadable(rfm_Handle handle, std::string const& kind, std::string const& message) override;
  void EndObject() override;
  void End() override;

private:
  void BeginObject(rfm_Handle handle, char const* kind);
  // Opens the list of rows or items before the first of them.
  void BeginList(char const* name);
  void Value(zdb_Value const& value);
  void Target(zdb_CollectionTarget const& target);

  zdb_JsonWriter m_Json;
  Fields m_Fields;  // of the current table; empty for an array
  bool m_InList = false;
};

#endif
