#include "zdb_TestFiles.h"

#include "rfm_Array.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestBytes.h"

#include <cfloat>
#include <cmath>
#include <limits>
#include <stdexcept>

zdb_Sample MakeSample(cow_String const& name, rfm_TestFileKind kind) {
  double const inf = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  zdb_Sample sample;
  sample.m_Name = name.CStr();
  rfm_File file = kind == rfm_TestFileKind::Compressed ? rfm_File::CreateCompressed(name)
                                                       : rfm_File::Open(name, utl_FileAccessCreate, false);
  rfm_Database database = rfm_Database::Create(file, "TEST", "zdb sample", zdb_Sample::kCreationTime);

  rfm_Array<int, rfm_TypeInt> ints = database.ArrayInt(2, -1, 0);
  int const intRows[] = {1, 2, -3, 2147483647, -2147483647 - 1, 0};
  ints.Write(intRows, 3);
  ints.Flush();
  sample.m_Ints = ints.Handle().Value();

  rfm_Array<double, rfm_TypeDouble> doubles = database.ArrayDouble(3, -1, 0);
  double const doubleRows[] = {0.1, -0.0, 1e-300, inf, -inf, nan, 5e-324, DBL_MAX, 1.2345678901234568e20};
  doubles.Write(doubleRows, 3);
  doubles.Flush();
  sample.m_Doubles = doubles.Handle().Value();

  rfm_Array<cow_String, rfm_TypeString> strings = database.ArrayString(2, -1, 0);
  cow_String const stringRows[] = {"a", "b", "", "\x80"};
  strings.Write(stringRows, 2);
  strings.Flush();
  sample.m_Strings = strings.Handle().Value();

  rfm_TaggedStream stream = database.TaggedStream(0);
  stream.WriteInt(1, 42);
  stream.WriteHandle(2, ints.Handle());
  stream.WriteFloat(3, 0.25f);
  stream.WriteDouble(4, 1.0 / 3.0);
  stream.WriteString(5, "run-7");
  stream.Flush();
  sample.m_Stream = stream.Handle().Value();

  rfm_TableMetadata layout("Parts", 1);
  rfm_FieldHandle id(layout.DefineIntField("id"));
  rfm_FieldHandle mass(layout.DefineDoubleField("mass"));
  rfm_FieldHandle density(layout.DefineFloatField("density"));
  rfm_FieldHandle label(layout.DefineStringField("label"));
  rfm_FieldHandle owner(layout.DefineHandleField("owner"));
  rfm_Table parts = database.Table(layout, -1, -1);
  struct Part {
    double m_Mass;
    float m_Density;
    char const* m_Label;
    bool m_Owned;
  };
  Part const rows[] = {{2.5, 7.85f, "plain", true},
                       {-0.0, 0.1f, nullptr, false},
                       {nan, static_cast<float>(inf), zdb_Sample::kAwkwardLabel, true},
                       {1e300, -static_cast<float>(inf), "", false}};
  int number = 0;
  for (Part const& part : rows) {
    rfm_Row row = parts.NewRow();
    row.WriteFieldInt(id, ++number);
    row.WriteFieldDouble(mass, part.m_Mass);
    row.WriteFieldFloat(density, part.m_Density);
    if (part.m_Label) row.WriteFieldString(label, part.m_Label);
    if (part.m_Owned) row.WriteFieldHandle(owner, ints.Handle());
  }
  parts.Flush();
  sample.m_Parts = parts.Handle().Value();
  database.Flush();
  return sample;
}

std::size_t LinkageOffset(int handle) {
  if (handle < 1 || handle >= 512) throw std::logic_error("the tests' files have one group");
  return 1024 + 28 * static_cast<std::size_t>(handle);
}

std::size_t FileOffsetOf(std::string const& bytes, int handle, std::size_t offset) {
  for (int link = handle; link != 0; link = StoredInt(bytes, LinkageOffset(link) + kNextField)) {
    std::size_t base = LinkageOffset(link);
    auto length = static_cast<std::size_t>(StoredDouble(bytes, base + kLengthField));
    if (offset < length) return static_cast<std::size_t>(StoredDouble(bytes, base + kLocationField)) + offset;
    offset -= length;
  }
  throw std::logic_error("no such byte in the object");
}
