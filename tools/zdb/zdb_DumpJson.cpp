#include "zdb_DumpJson.h"

#include "rfm_TypeName.h"
#include "zdb_Database.h"

void zdb_DumpJson::Begin(std::string const& file) {
  m_Json.BeginObject();
  m_Json.Key("file");
  m_Json.String(file);
  m_Json.Key("objects");
  m_Json.BeginArray();
}

void zdb_DumpJson::BeginObject(rfm_Handle handle, char const* kind) {
  m_Json.Break();
  m_Json.BeginObject();
  m_Json.Key("handle");
  m_Json.Integer(handle.Value());
  m_Json.Key("kind");
  m_Json.String(kind);
  m_InList = false;
}

void zdb_DumpJson::BeginList(char const* name) {
  if (m_InList) return;
  m_Json.Key(name);
  m_Json.BeginArray();
  m_InList = true;
}

void zdb_DumpJson::Table(rfm_Handle handle, std::string const& name, int rows, Fields const& fields) {
  m_Fields = fields;
  BeginObject(handle, "table");
  m_Json.Key("name");
  m_Json.String(name);
  m_Json.Key("rowCount");
  m_Json.Integer(rows);
  m_Json.Key("fields");
  m_Json.BeginArray();
  for (zdb_DumpField const& field : fields) {
    m_Json.BeginObject();
    m_Json.Key("name");
    m_Json.String(field.m_Name);
    m_Json.Key("type");
    m_Json.String(field.m_Type);
    m_Json.EndObject();
  }
  m_Json.EndArray();
  BeginList("rows");
}

void zdb_DumpJson::Array(rfm_Handle handle, rfm_Type element, int fieldsPerRow, int rows) {
  m_Fields.clear();
  BeginObject(handle, "array");
  m_Json.Key("elementType");
  m_Json.String(rfm_TypeName(element));
  m_Json.Key("fieldsPerRow");
  m_Json.Integer(fieldsPerRow);
  m_Json.Key("rowCount");
  m_Json.Integer(rows);
  BeginList("rows");
}

void zdb_DumpJson::Stream(rfm_Handle handle) {
  BeginObject(handle, "stream");
  BeginList("items");
}

void zdb_DumpJson::Space(rfm_Handle handle, utl_FileOffset length) {
  BeginObject(handle, "space");
  m_Json.Key("length");
  m_Json.Integer(length);
}

void zdb_DumpJson::Value(zdb_Value const& value) {
  switch (value.m_Kind) {
    case zdb_Value::kInteger:
    case zdb_Value::kHandle:
      m_Json.Integer(value.m_Integer);
      return;
    case zdb_Value::kFloat:
      m_Json.Double(value.m_Float);
      return;
    case zdb_Value::kDouble:
      m_Json.Double(value.m_Double);
      return;
    case zdb_Value::kString:
    case zdb_Value::kReference:
      m_Json.String(value.m_String);
      return;
    case zdb_Value::kAbsent:
    case zdb_Value::kNullReference:
      m_Json.Null();
      return;
    case zdb_Value::kCollection:
      Target(value.m_Target);
      return;
  }
}

void zdb_DumpJson::Target(zdb_CollectionTarget const& target) {
  m_Json.BeginObject();
  m_Json.Key("handle");
  m_Json.Integer(target.m_Handle);
  if (target.Found()) {
    m_Json.Key("length");
    m_Json.Integer(target.m_Length);
    m_Json.Key("kind");
    m_Json.String(target.m_Kind);
  } else {
    m_Json.Key("problem");
    m_Json.String(target.m_Problem);
  }
  m_Json.EndObject();
}

void zdb_DumpJson::Row(int number, std::vector<zdb_Value> const& values) {
  m_Json.Break();
  m_Json.BeginObject();
  m_Json.Key("row");
  m_Json.Integer(number);
  m_Json.Key("values");
  if (m_Fields.empty()) {
    m_Json.BeginArray();
    for (zdb_Value const& value : values) Value(value);
    m_Json.EndArray();
  } else {
    m_Json.BeginObject();
    for (std::size_t i = 0; i < values.size(); ++i) {
      m_Json.Key(m_Fields[i].m_Name);
      Value(values[i]);
    }
    m_Json.EndObject();
  }
  m_Json.EndObject();
}

void zdb_DumpJson::Item(int number, int id, int tag, zdb_Value const& value) {
  m_Json.Break();
  m_Json.BeginObject();
  m_Json.Key("item");
  m_Json.Integer(number);
  m_Json.Key("id");
  m_Json.Integer(id);
  m_Json.Key("type");
  m_Json.String(zdb_TagName(tag));
  m_Json.Key("value");
  Value(value);
  m_Json.EndObject();
}

void zdb_DumpJson::Error(std::string const& message) {
  if (m_InList) {
    m_Json.EndArray();
    m_InList = false;
  }
  m_Json.Key("error");
  m_Json.String(message);
}

void zdb_DumpJson::EndObject() {
  if (m_InList) m_Json.EndArray();
  m_InList = false;
  m_Json.EndObject();
}

void zdb_DumpJson::End() {
  m_Json.EndArray();
  m_Json.EndObject();
  m_Json.EndDocument();
}

void zdb_DumpJson::Unreadable(rfm_Handle handle, std::string const& kind, std::string const& message) {
  BeginObject(handle, kind.c_str());
  Error(message);
  m_Json.EndObject();
}
