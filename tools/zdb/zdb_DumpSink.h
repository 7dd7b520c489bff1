#ifndef zdb_DumpSink_h
#define zdb_DumpSink_h

#include "rfm_Handle.h"
#include "rfm_Type.h"
#include "utl_FileOffset.h"
#include "zdb_CollectionTarget.h"

#include <string>
#include <vector>

// One value that zdb dump shows: a field of a row, an element of an array,
// the value of a stream's item, a reference to an object that a row of the
// object layer holds in two fields (its label, "Shape[3]", in m_String), or
// the handle of a list's or a blob's store with what it names (m_Target).
struct zdb_Value {
  enum Kind { kAbsent, kInteger, kHandle, kFloat, kDouble, kString, kReference, kNullReference, kCollection };
  Kind m_Kind = kAbsent;
  long long m_Integer = 0;
  float m_Float = 0;
  double m_Double = 0;
  std::string m_String;
  zdb_CollectionTarget m_Target;
};

// A column of a table as a dump heads it: its name, and its type as zdb
// writes it ("int", ..., "reference", "list", "blob").
struct zdb_DumpField {
  std::string m_Name;
  std::string m_Type;
};

// Where zdb dump sends what it reads, in this order: Begin; for each object
// either Unreadable, or one of Table, Array, Stream or Space, then its rows
// or items, an Error if reading it failed, and EndObject; End last. The text and JSON forms are
// the two sinks.
class zdb_DumpSink {
public:
  using Fields = std::vector<zdb_DumpField>;

  virtual ~zdb_DumpSink() = default;

  virtual void Begin(std::string const& file) = 0;
  // fields in position order (a reference's two as one); each Row then has
  // one value per field.
  virtual void Table(rfm_Handle handle, std::string const& name, int rows, Fields const& fields) = 0;
  virtual void Array(rfm_Handle handle, rfm_Type element, int fieldsPerRow, int rows) = 0;
  virtual void Stream(rfm_Handle handle) = 0;
  virtual void Space(rfm_Handle handle, utl_FileOffset length) = 0;
  virtual void Row(int number, std::vector<zdb_Value> const& values) = 0;
  // tag is the item's tag type, as rfm_TaggedStream::GetType answers it.
  virtual void Item(int number, int id, int tag, zdb_Value const& value) = 0;
  // Reading the current object failed after its heading.
  virtual void Error(std::string const& message) = 0;
  // An object that could not be read at all, in place of its heading.
  virtual void Unreadable(rfm_Handle handle, std::string const& kind, std::string const& message) = 0;
  virtual void EndObject() = 0;
  virtual void End() = 0;
};

// The name of an item's tag type: the field type names, and "fixed string".
char const* zdb_TagName(int tag);

#endif
