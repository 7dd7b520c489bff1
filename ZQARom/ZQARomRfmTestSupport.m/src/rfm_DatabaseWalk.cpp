#include "rfm_DatabaseWalk.h"

#include "omi_BtreeIterator.h"
#include "rfm_Array.h"
#include "rfm_Row.h"
#include "rfm_Space.h"
#include "rfm_Table.h"
#include "rfm_TaggedStream.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Rows of an array read in one call; a damaged file can claim wide rows, so
// the walk never asks for more than the array says it holds.
constexpr int kArrayRowsPerRead = 64;
constexpr int kSpaceBlock = 4096;
// Offsets at which the location report is asked: fixed, so that two walks
// of files of different lengths ask the same.
constexpr int kLocationProbes = 64;
constexpr int kLocationStep = 1009;

std::string Decimal(long long value) { return std::to_string(value); }

// Numbers as their bits, so that every value, NaN included, compares exactly.
std::string Bits(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  char text[16];
  std::snprintf(text, sizeof text, "f%08x", bits);
  return text;
}

std::string Bits(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  char text[24];
  std::snprintf(text, sizeof text, "d%016llx", static_cast<unsigned long long>(bits));
  return text;
}

std::string Value(int value) { return Decimal(value); }
std::string Value(float value) { return Bits(value); }
std::string Value(double value) { return Bits(value); }
std::string Value(cow_String const& value) { return rfm_DatabaseWalk::Quoted(value); }

}  // namespace

std::string rfm_DatabaseWalk::Walk(cow_String const& name) {
  rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
  if (file.Length() > 0) {
    char last;
    file.Seek(file.Length() - 1);
    file.Read(&last, 1);
  }
  rfm_DatabaseWalk walk(rfm_Database::Open(file, ""));
  walk.Head(file);
  walk.Objects();
  walk.LocationReport();
  return walk.m_Text;
}

std::string rfm_DatabaseWalk::WalkStored(cow_String const& name) {
  rfm_File file = rfm_File::Open(name, utl_FileAccessRead, false);
  rfm_DatabaseWalk walk(rfm_Database::Open(file, ""));
  walk.m_FollowHandles = false;
  walk.Head(file);
  cow_List<rfm_Handle> const handles = walk.m_Database.ObjectHandles();
  for (int index = 0; index < handles.Length(); ++index) {
    rfm_Handle const handle = handles[index];
    walk.Object(handle);
  }
  walk.LocationReport();
  return walk.m_Text;
}

void rfm_DatabaseWalk::Head(rfm_File const& file) {
  Line("description " + Quoted(m_Database.Description()));
  Line("created " + Decimal(rfm_Database::GetCreationTime(file)));
  Catalogue();
  Statistics("database", m_Database.GetDBStatistics());
}

std::string rfm_DatabaseWalk::WalkTaggedStream(rfm_Database const& database, rfm_Handle handle) {
  rfm_DatabaseWalk walk(database);
  walk.Stream(database.TaggedStream(handle, 0));
  return walk.m_Text;
}

void rfm_DatabaseWalk::Catalogue() {
  m_Database.Bind();
  cow_List<cow_String> names = m_Database.GetTableMetadataNames();
  for (int i = 0; i < names.Length(); ++i) {
    rfm_TableMetadata const* table = m_Database.GetTableMetadata(names[i]);
    std::string line = "catalogue " + Quoted(names[i]) + " at " + Decimal(m_Database.GetTableMetadataHandle(names[i]));
    if (table != nullptr) {
      for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(table->FieldMap()); !it.IsDone(); it.Next()) {
        rfm_FieldMetadata const& field = it.CurrentValue();
        line += " " + Quoted(field.Name()) + ":" + Decimal(field.Type()) + "#" + Decimal(field.Index());
      }
    }
    Line(line);
  }
}

void rfm_DatabaseWalk::Statistics(char const* title, cow_List<cow_String> const& lines) {
  for (int i = 0; i < lines.Length(); ++i) Line(std::string(title) + " " + Quoted(lines[i]));
}

void rfm_DatabaseWalk::Declare(rfm_Row const& row) {
  if (!m_FollowHandles) return;
  rfm_FieldHandle const kind("Kind", -1);
  rfm_FieldHandle const object("Object", -1);
  if (row.FieldIsPresent(kind) && row.FieldIsPresent(object) && row.DataIsPresent(kind) && row.DataIsPresent(object) &&
      row.FieldMetadataMap().ConstGet(cow_String("Kind")).Type() == rfm_TypeInt &&
      row.FieldMetadataMap().ConstGet(cow_String("Object")).Type() == rfm_TypeHandle) {
    m_Declared.emplace(row.ReadFieldHandle(object).Value(), row.ReadFieldInt(kind));
  }
}

void rfm_DatabaseWalk::Meet(rfm_Handle handle) {
  if (m_FollowHandles && m_Met.insert(handle.Value()).second) m_Pending.push_back(handle);
}

void rfm_DatabaseWalk::Objects() {
  // The roots are tables by design.
  for (rfm_Handle root : {m_Database.RootTableHandle(), m_Database.RootTableHandle2()}) {
    m_Declared.emplace(root.Value(), rfm_TypeTable);
    Meet(root);
  }
  while (!m_Pending.empty()) {
    rfm_Handle handle = m_Pending.front();
    m_Pending.pop_front();
    Object(handle);
  }
}

void rfm_DatabaseWalk::Object(rfm_Handle handle) {
  // A handle that names no object has no statistics; a null handle in a row
  // is a legitimate empty reference.
  cow_List<cow_String> statistics = m_Database.GetObjStatistics(handle);
  if (statistics.IsEmpty()) {
    Line("object " + Decimal(handle.Value()) + " none");
    return;
  }
  rfm_Type type = m_Database.HandleType(handle);
  Line("object " + Decimal(handle.Value()) + " type " + Decimal(type));
  Statistics("object", statistics);
  auto declared = m_Declared.find(handle.Value());
  switch (declared == m_Declared.end() ? static_cast<int>(type) : declared->second) {
    case rfm_TypeTable:
      Table(handle);
      break;
    case rfm_TypeStream:
      Stream(m_Database.TaggedStream(handle, 0));
      break;
    case rfm_TypeInt:
      Array(m_Database.ArrayInt(handle, -1, 0));
      break;
    case rfm_TypeFloat:
      Array(m_Database.ArrayFloat(handle, -1, 0));
      break;
    case rfm_TypeDouble:
      Array(m_Database.ArrayDouble(handle, -1, 0));
      break;
    case rfm_TypeString:
      Array(m_Database.ArrayString(handle, -1, 0));
      break;
    case rfm_TypeSpace:
      Space(handle);
      break;
    default:
      // A kind that no object has, declared by a damaged row: opening the
      // object as an array reports what it is not.
      Array(m_Database.ArrayInt(handle, -1, 0));
      break;
  }
}

void rfm_DatabaseWalk::Table(rfm_Handle handle) {
  rfm_Table table = m_Database.Table(handle, -1, -1);
  int const rows = table.Length();
  Line("table " + Quoted(table.TableMetadata().TableName()) + " rows " + Decimal(rows) + " size " +
       Decimal(table.RowSize()) + " length " + Decimal(table.SpaceLength()));
  std::vector<rfm_FieldMetadata> fields;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(table.GetFieldMap()); !it.IsDone(); it.Next()) {
    if (it.CurrentValue().Present() != 0) fields.push_back(it.CurrentValue());
  }
  std::vector<std::string> lines;
  for (int number = 0; number < rows; ++number) {
    rfm_Row row = table.ReadRow(number);
    std::string line = "row " + Decimal(number);
    Declare(row);
    for (rfm_FieldMetadata const& field : fields) {
      rfm_FieldHandle name(field.Name(), -1);
      line += " " + Quoted(field.Name()) + "=";
      if (!row.DataIsPresent(name)) {
        line += "-";
        continue;
      }
      switch (field.Type()) {
        case rfm_TypeInt:
          line += Value(row.ReadFieldInt(name));
          break;
        case rfm_TypeFloat:
          line += Value(row.ReadFieldFloat(name));
          break;
        case rfm_TypeDouble:
          line += Value(row.ReadFieldDouble(name));
          break;
        case rfm_TypeString:
          line += Value(row.ReadFieldString(name));
          break;
        case rfm_TypeHandle: {
          rfm_Handle linked = row.ReadFieldHandle(name);
          line += "@" + Decimal(linked.Value());
          if (!linked.IsNull()) Meet(linked);
          break;
        }
        default:
          line += "?";
          break;
      }
    }
    Line(line);
    lines.push_back(line);
  }
  // The bulk path reads the same bytes under the same rules: any difference
  // is a fault of the library, not damage.
  if (BulkLines(table, fields) != lines) {
    throw std::logic_error("rfm_DatabaseWalk: table " + Quoted(table.TableMetadata().TableName()) +
                           " reads otherwise in columns than in rows");
  }
}

std::vector<std::string> rfm_DatabaseWalk::BulkLines(rfm_Table const& table,
                                                     std::vector<rfm_FieldMetadata> const& fields) {
  int const rows = table.Length();
  std::size_t const count = static_cast<std::size_t>(rows);
  std::vector<std::string> lines(count);
  for (std::size_t i = 0; i < count; ++i) lines[i] = "row " + Decimal(static_cast<int>(i));
  std::vector<unsigned char> present(count);
  for (rfm_FieldMetadata const& field : fields) {
    rfm_FieldHandle name(field.Name(), -1);
    auto each = [&](auto const& values, auto text) {
      for (std::size_t i = 0; i < count; ++i) {
        lines[i] += " " + Quoted(field.Name()) + "=" + (present[i] != 0 ? text(values[i]) : std::string("-"));
      }
    };
    auto value = [](auto v) { return Value(v); };
    switch (field.Type()) {
      case rfm_TypeInt: {
        std::vector<int> values(count);
        table.ReadColumn(0, rows, rfm_Column::Ints(name, values.data()).Presence(present.data()));
        each(values, value);
        break;
      }
      case rfm_TypeFloat: {
        std::vector<float> values(count);
        table.ReadColumn(0, rows, rfm_Column::Floats(name, values.data()).Presence(present.data()));
        each(values, value);
        break;
      }
      case rfm_TypeDouble: {
        std::vector<double> values(count);
        table.ReadColumn(0, rows, rfm_Column::Doubles(name, values.data()).Presence(present.data()));
        each(values, value);
        break;
      }
      case rfm_TypeString: {
        std::vector<cow_String> values(count);
        table.ReadColumn(0, rows, rfm_Column::Strings(name, values.data()).Presence(present.data()));
        each(values, value);
        break;
      }
      case rfm_TypeHandle: {
        std::vector<rfm_Handle> values(count);
        table.ReadColumn(0, rows, rfm_Column::Handles(name, values.data()).Presence(present.data()));
        each(values, [](rfm_Handle handle) { return "@" + Decimal(handle.Value()); });
        break;
      }
      default:
        for (std::string& line : lines) line += " " + Quoted(field.Name()) + "=?";
        break;
    }
  }
  return lines;
}

template <class T, rfm_Type ElementType>
void rfm_DatabaseWalk::Array(rfm_Array<T, ElementType> const& array) {
  int const fields = array.FieldCount();
  int const rows = array.Length();
  Line("array " + Decimal(array.Type()) + " fields " + Decimal(fields) + " rows " + Decimal(rows));
  array.Seek(0);
  std::vector<T> values(static_cast<std::size_t>(std::min(rows, kArrayRowsPerRead)) * static_cast<std::size_t>(fields));
  for (int done = 0; done < rows;) {
    int const wanted = std::min(rows - done, kArrayRowsPerRead);
    int const got = array.Read(values.data(), wanted);
    std::string line = "elements " + Decimal(done);
    for (int i = 0; i < got; ++i) line += " " + Value(values[static_cast<std::size_t>(i)]);
    Line(line);
    if (got < wanted * fields) {
      Line("short read");
      break;
    }
    done += wanted;
  }
}

void rfm_DatabaseWalk::Stream(rfm_TaggedStream const& stream) {
  while (stream.Next()) {
    std::string line = "item " + Decimal(stream.GetType()) + " id " + Decimal(stream.GetID()) + " ";
    switch (stream.GetType()) {
      case 1:
        line += Value(stream.GetInt());
        break;
      case 2:
        line += "@" + Decimal(stream.GetHandle().Value());
        if (!stream.GetHandle().IsNull()) Meet(stream.GetHandle());
        break;
      case 3:
        line += Value(stream.GetFloat());
        break;
      case 4:
        line += Value(stream.GetDouble());
        break;
      default:
        line += Value(stream.GetString());
        break;
    }
    Line(line);
  }
}

void rfm_DatabaseWalk::Space(rfm_Handle handle) {
  rfm_Space space = m_Database.Space(handle, -1);
  utl_FileOffset const length = space.Length();
  // FNV-1a over the bytes: the text stays short whatever the space holds.
  std::uint64_t hash = 1469598103934665603ull;
  char block[kSpaceBlock];
  utl_FileOffset total = 0;
  space.Seek(0);
  for (int got; (got = space.Read(block, kSpaceBlock)) > 0; total += got) {
    for (int i = 0; i < got; ++i) hash = (hash ^ static_cast<unsigned char>(block[i])) * 1099511628211ull;
  }
  char text[96];
  std::snprintf(text, sizeof text, "space length %lld read %lld hash %016llx", static_cast<long long>(length),
                static_cast<long long>(total), static_cast<unsigned long long>(hash));
  Line(text);
}

void rfm_DatabaseWalk::LocationReport() {
  for (int probe = 0; probe < kLocationProbes; ++probe) {
    utl_FileOffset offset = utl_FileOffset(probe) * kLocationStep;
    Line("location " + Decimal(offset) + " " + Quoted(m_Database.GetObjectLocationReport(offset)));
  }
}

std::string rfm_DatabaseWalk::Quoted(cow_String const& text) {
  std::string out = "[" + Decimal(text.Length()) + "]\"";
  for (int i = 0; i < text.Length(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    if (byte >= 0x20 && byte < 0x7f && byte != '\\') {
      out += static_cast<char>(byte);
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
      out += escaped;
    }
  }
  return out + "\"";
}
