#ifndef zdb_DumpText_h
#define zdb_DumpText_h

#include "zdb_DumpSink.h"

#include <cstdio>

// zdb dump for a person: a heading line per object, then one line per row
// or item, fields as name=value, absent fields as "absent", strings quoted
// (see zdb_QuotedText), numbers in their shortest exact form, a reference
// as its label and a null reference as "null", a collection's handle with
// what it names, "57 (8 int)".
class zdb_DumpText : public zdb_DumpSink {
public:
  explicit zdb_DumpText(std::FILE* out) : m_Out(out) {}

  void Begin(std::string const&) override {}
  void Table(rfm_Handle handle, std::string const& name, int rows, Fields const& fields) override;
  void Array(rfm_Handle handle, rfm_Type element, int fieldsPerRow, int rows) override;
  void Stream(rfm_Handle handle) override;
  void Space(rfm_Handle handle, utl_FileOffset length) override;
  void Row(int number, std::vector<zdb_Value> const& values) override;
  void Item(int number, int id, int tag, zdb_Value const& value) override;
  void Error(std::string const& message) override;
  void Unreadable(rfm_Handle handle, std::string const& kind, std::string const& message) override;
  void EndObject() override {}
  void End() override {}

private:
  std::FILE* m_Out;
  Fields m_Fields;  // of the current table; empty for an array
};

#endif
