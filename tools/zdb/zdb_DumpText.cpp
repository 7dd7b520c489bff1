#include "zdb_DumpText.h"

#include "rfm_TypeName.h"
#include "zdb_Database.h"
#include "zdb_Text.h"

namespace {

constexpr char kNullText[] = "null";

std::string ValueText(zdb_Value const& value) {
  switch (value.m_Kind) {
    case zdb_Value::kInteger:
    case zdb_Value::kHandle:
      return std::to_string(value.m_Integer);
    case zdb_Value::kFloat:
      return zdb_FloatText(value.m_Float);
    case zdb_Value::kDouble:
      return zdb_DoubleText(value.m_Double);
    case zdb_Value::kString:
      return zdb_QuotedText(value.m_String);
    case zdb_Value::kReference:
      return value.m_String;
    case zdb_Value::kNullReference:
      return kNullText;
    case zdb_Value::kCollection:
      return std::to_string(value.m_Target.m_Handle) + " (" + value.m_Target.Summary() + ")";
    case zdb_Value::kAbsent:
      break;
  }
  return "absent";
}

char const* Plural(int count) { return count == 1 ? "" : "s"; }

}  // namespace

void zdb_DumpText::Table(rfm_Handle handle, std::string const& name, int rows, Fields const& fields) {
  m_Fields = fields;
  std::fprintf(m_Out, "table %s at handle %d: %d row%s\n", zdb_QuotedText(name).c_str(), handle.Value(), rows,
               Plural(rows));
}

void zdb_DumpText::Array(rfm_Handle handle, rfm_Type element, int fieldsPerRow, int rows) {
  m_Fields.clear();
  std::fprintf(m_Out, "%s array at handle %d: %d row%s of %d\n", rfm_TypeName(element), handle.Value(), rows,
               Plural(rows), fieldsPerRow);
}

void zdb_DumpText::Stream(rfm_Handle handle) { std::fprintf(m_Out, "stream at handle %d\n", handle.Value()); }

void zdb_DumpText::Space(rfm_Handle handle, utl_FileOffset length) {
  std::fprintf(m_Out, "space at handle %d: %lld byte%s, not dumped\n", handle.Value(), static_cast<long long>(length),
               length == 1 ? "" : "s");
}

void zdb_DumpText::Row(int number, std::vector<zdb_Value> const& values) {
  std::string line = "  row " + std::to_string(number) + ":";
  for (std::size_t i = 0; i < values.size(); ++i) {
    line += ' ';
    if (!m_Fields.empty()) line += m_Fields[i].m_Name + "=";
    line += ValueText(values[i]);
  }
  std::fprintf(m_Out, "%s\n", line.c_str());
}

void zdb_DumpText::Item(int number, int id, int tag, zdb_Value const& value) {
  std::fprintf(m_Out, "  item %d: id %d %s %s\n", number, id, zdb_TagName(tag), ValueText(value).c_str());
}

void zdb_DumpText::Error(std::string const& message) { std::fprintf(m_Out, "  error: %s\n", message.c_str()); }

void zdb_DumpText::Unreadable(rfm_Handle handle, std::string const& kind, std::string const& message) {
  std::fprintf(m_Out, "%s at handle %d: cannot be read: %s\n", kind.c_str(), handle.Value(), message.c_str());
}
