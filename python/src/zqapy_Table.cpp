#include "zqapy_Table.h"

#include "omi_BtreeIterator.h"
#include "rfm_Column.h"
#include "rfm_TypeName.h"
#include "zqapy_Strings.h"
#include "zqapy_Types.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace py = pybind11;

namespace {

// Rows per bulk call when strings or handles pass through buffers of the
// library's own types; numbers go straight into their arrays in one call.
constexpr long kBufferedRows = 65536;

py::dtype DtypeOf(rfm_Type type) {
  switch (type) {
    case rfm_TypeInt:
    case rfm_TypeHandle:
      return py::dtype::of<std::int32_t>();
    case rfm_TypeFloat:
      return py::dtype::of<float>();
    case rfm_TypeDouble:
      return py::dtype::of<double>();
    default:
      return py::dtype("O");
  }
}

py::array ColumnArray(rfm_Type type, long rows) {
  return type == rfm_TypeString ? zqapy_ObjectArray({rows}) : py::array(DtypeOf(type), rows);
}

// One field of a read: its arrays, and the buffers of the library's types
// that strings and handles pass through.
struct ReadColumn {
  rfm_FieldHandle m_Field;
  rfm_Type m_Type;
  py::array m_Values;
  // Empty when the read asks for no mask (an empty py::array is still an
  // array, of no elements).
  std::optional<py::array> m_Mask;
  std::vector<rfm_Handle> m_Handles;
  std::vector<cow_String> m_Strings;

  // The column for rows first.. of this call, count at most the buffers'.
  rfm_Column Column(long first, double fill) {
    rfm_Column column = Make(first, fill);
    if (m_Mask) column.Presence(static_cast<unsigned char*>(m_Mask->mutable_data()) + first);
    return column;
  }

  // After a call: what went through buffers reaches its array.
  void Deliver(long first, long count) {
    if (m_Type == rfm_TypeHandle) {
      auto* values = static_cast<std::int32_t*>(m_Values.mutable_data()) + first;
      for (long i = 0; i < count; ++i) values[i] = m_Handles[static_cast<std::size_t>(i)].Value();
    } else if (m_Type == rfm_TypeString) {
      zqapy_StoreStrings(m_Values, first, m_Strings.data(), count);
    }
  }

private:
  rfm_Column Make(long first, double fill) {
    void* values = m_Values.mutable_data();
    switch (m_Type) {
      case rfm_TypeInt:
        return rfm_Column::Ints(m_Field, static_cast<int*>(values) + first, static_cast<int>(fill));
      case rfm_TypeFloat:
        return rfm_Column::Floats(m_Field, static_cast<float*>(values) + first, static_cast<float>(fill));
      case rfm_TypeDouble:
        return rfm_Column::Doubles(m_Field, static_cast<double*>(values) + first, fill);
      case rfm_TypeHandle:
        return rfm_Column::Handles(m_Field, m_Handles.data());
      default:
        return rfm_Column::Strings(m_Field, m_Strings.data());
    }
  }
};

// A field's value as a mask: True where the field holds no data. The
// library fills presence (1 for data); one pass turns it round.
void TurnPresenceIntoMask(py::array& mask, long count) {
  auto* bytes = static_cast<unsigned char*>(mask.mutable_data());
  for (long i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(bytes[i] == 0);
}

// One column of an append, with what it keeps alive: the arrays it points
// into and the buffers of the library's types.
struct AppendColumn {
  py::array m_Values;
  py::array m_Presence;
  std::vector<rfm_Handle> m_Handles;
  std::vector<cow_String> m_Strings;
};

template <class T>
py::array Exact(py::handle values, rfm_FieldMetadata const& field) {
  auto const flags = py::array::c_style;
  if (!py::isinstance<py::array_t<T, flags>>(values) || py::cast<py::array>(values).ndim() != 1)
    throw py::type_error("field " + zqapy_Quoted(field.Name()) + " takes a one-dimensional contiguous " +
                         std::string(py::str(DtypeOf(field.Type()))) + " array");
  return py::cast<py::array>(values);
}

}  // namespace

zqapy_Table::zqapy_Table(std::shared_ptr<zqapy_Session> const& session, rfm_Table const& table)
    : m_Session(session), m_Table(table) {}

zqapy_Table::~zqapy_Table() {
  zqapy_Locked lock;
  m_Table = rfm_Table();
}

std::shared_ptr<zqapy_Table> zqapy_Table::Open(std::shared_ptr<zqapy_Session> const& session, int handle) {
  zqapy_Locked lock;
  return session->Guard([&] {
    session->ObjectType(handle, {rfm_TypeTable}, "table");
    rfm_Table const table = session->Database().Table(rfm_Handle(handle), -1, -1);
    return session->Track(std::shared_ptr<zqapy_Table>(new zqapy_Table(session, table)));
  });
}

std::shared_ptr<zqapy_Table> zqapy_Table::Create(std::shared_ptr<zqapy_Session> const& session,
                                                 std::string const& name,
                                                 std::vector<std::pair<std::string, std::string>> const& fields,
                                                 int version) {
  zqapy_Locked lock;
  rfm_TableMetadata layout(name.c_str(), version);
  for (auto const& field : fields) layout.InsertField(rfm_FieldMetadata(field.first.c_str(), zqapy_TypeOf(field.second),
                                                                        layout.FieldCount()));
  return session->Guard([&] {
    rfm_Table const table = session->Database().Table(layout, -1, -1);
    return session->Track(std::shared_ptr<zqapy_Table>(new zqapy_Table(session, table)));
  });
}

rfm_Table const& zqapy_Table::Table() const {
  if (m_Table.IsNull()) throw zqapy_Error(m_Session->Name(), "the table's file is closed");
  return m_Table;
}

rfm_FieldMetadata const& zqapy_Table::Field(std::string const& name) const {
  rfm_MapName2FieldMetadata const& fields = Table().GetFieldMap();
  cow_String const key = name.c_str();
  if (!fields.IsMember(key) || !fields.ConstGet(key).Present())
    throw py::key_error("table " + zqapy_Quoted(Table().TableMetadata().TableName()) + " has no field " +
                        zqapy_Quoted(key));
  return fields.ConstGet(key);
}

py::str zqapy_Table::Name() const {
  zqapy_Locked lock;
  return zqapy_ToPython(Table().TableMetadata().TableName());
}

int zqapy_Table::Handle() const {
  zqapy_Locked lock;
  return Table().Handle().Value();
}

py::list zqapy_Table::Fields() const {
  zqapy_Locked lock;
  py::list fields;
  for (omi_BtreeIterator<cow_String, rfm_FieldMetadata> it(Table().GetFieldMap()); !it.IsDone(); it.Next()) {
    rfm_FieldMetadata const& field = it.CurrentValue();
    if (field.Present()) fields.append(py::make_tuple(zqapy_ToPython(field.Name()), rfm_TypeName(field.Type())));
  }
  return fields;
}

int zqapy_Table::Length() const {
  zqapy_Locked lock;
  return m_Session->Guard([&] { return Table().Length(); });
}

py::tuple zqapy_Table::Read(std::vector<std::string> const& names, long start, long stop, bool masked, double fill) {
  // First: the library's values made below go before it does.
  zqapy_Locked lock;
  long const length = m_Session->Guard([&] { return Table().Length(); });
  start = std::clamp(start, 0L, length);
  long const rows = std::clamp(stop, start, length) - start;
  std::vector<ReadColumn> columns;
  bool numbersOnly = true;
  bool buffered = false;
  for (std::string const& name : names) {
    rfm_FieldMetadata const& field = Field(name);
    rfm_Type const type = field.Type();
    columns.push_back({rfm_FieldHandle(field.Name(), field.Index()), type, ColumnArray(type, rows),
                       masked ? std::optional<py::array>(py::array(py::dtype::of<bool>(), rows)) : std::nullopt, {},
                       {}});
    numbersOnly = numbersOnly && type != rfm_TypeString;
    buffered = buffered || type == rfm_TypeString || type == rfm_TypeHandle;
  }
  long const step = buffered ? std::min(rows, kBufferedRows) : rows;
  for (ReadColumn& column : columns) {
    if (column.m_Type == rfm_TypeHandle) column.m_Handles.resize(static_cast<std::size_t>(step));
    if (column.m_Type == rfm_TypeString) column.m_Strings.resize(static_cast<std::size_t>(step));
  }
  auto transfer = [&] {
    m_Session->Guard([&] {
      std::vector<rfm_Column> calls;
      for (long first = 0; first < rows; first += step) {
        long const count = std::min(step, rows - first);
        calls.clear();
        for (ReadColumn& column : columns) calls.push_back(column.Column(first, fill));
        int const read = Table().ReadColumns(static_cast<int>(start + first), static_cast<int>(count), calls.data(),
                                             static_cast<int>(calls.size()));
        if (read != count)
          throw zqapy_Error(m_Session->Name(), "table '" + std::string(Table().TableMetadata().TableName().CStr()) +
                                                   "' gave " + std::to_string(read) + " rows of " +
                                                   std::to_string(count) + " at row " + std::to_string(start + first));
        for (ReadColumn& column : columns) column.Deliver(first, count);
      }
    });
  };
  if (numbersOnly) {
    zqapy_WithoutPython(transfer);
  } else {
    transfer();
  }
  py::dict values;
  py::dict masks;
  for (ReadColumn& column : columns) {
    py::str const name = zqapy_ToPython(column.m_Field.Name());
    values[name] = column.m_Values;
    if (masked) {
      TurnPresenceIntoMask(*column.m_Mask, rows);
      masks[name] = *column.m_Mask;
    }
  }
  return py::make_tuple(values, masked ? py::object(masks) : py::object(py::none()));
}

void zqapy_Table::Append(py::list const& columns) {
  // First: the library's values made below go before it does.
  zqapy_Locked lock;
  std::vector<AppendColumn> kept;
  std::vector<rfm_Column> calls;
  std::optional<py::ssize_t> rows;
  bool numbersOnly = true;
  kept.reserve(columns.size());
  for (py::handle item : columns) {
    auto const column = py::cast<py::tuple>(item);
    std::string const name = py::cast<std::string>(column[0]);
    rfm_FieldMetadata const& field = Field(name);
    rfm_FieldHandle const handle(field.Name(), field.Index());
    AppendColumn& taken = kept.emplace_back();
    switch (field.Type()) {
      case rfm_TypeInt:
        taken.m_Values = Exact<std::int32_t>(column[1], field);
        calls.push_back(rfm_Column::Ints(handle, static_cast<int const*>(taken.m_Values.data())));
        break;
      case rfm_TypeFloat:
        taken.m_Values = Exact<float>(column[1], field);
        calls.push_back(rfm_Column::Floats(handle, static_cast<float const*>(taken.m_Values.data())));
        break;
      case rfm_TypeDouble:
        taken.m_Values = Exact<double>(column[1], field);
        calls.push_back(rfm_Column::Doubles(handle, static_cast<double const*>(taken.m_Values.data())));
        break;
      case rfm_TypeHandle: {
        taken.m_Values = Exact<std::int32_t>(column[1], field);
        auto const* values = static_cast<std::int32_t const*>(taken.m_Values.data());
        for (py::ssize_t i = 0; i < taken.m_Values.size(); ++i) taken.m_Handles.emplace_back(values[i]);
        calls.push_back(rfm_Column::Handles(handle, static_cast<rfm_Handle const*>(taken.m_Handles.data())));
        break;
      }
      default:
        taken.m_Strings = zqapy_TakeStrings(py::cast<py::sequence>(column[1]));
        calls.push_back(rfm_Column::Strings(handle, static_cast<cow_String const*>(taken.m_Strings.data())));
        numbersOnly = false;
        break;
    }
    py::ssize_t const count =
        field.Type() == rfm_TypeString ? static_cast<py::ssize_t>(taken.m_Strings.size()) : taken.m_Values.size();
    if (!column[2].is_none()) {
      taken.m_Presence = Exact<std::uint8_t>(column[2], field);
      if (taken.m_Presence.size() != count)
        throw py::value_error("field " + zqapy_Quoted(field.Name()) + ": " + std::to_string(taken.m_Presence.size()) +
                              " presence flags for " + std::to_string(count) + " values");
      calls.back().Presence(static_cast<unsigned char const*>(taken.m_Presence.data()));
    }
    if (rows && *rows != count)
      throw py::value_error("field " + zqapy_Quoted(field.Name()) + " has " + std::to_string(count) +
                            " values, the fields before it " + std::to_string(*rows));
    rows = count;
  }
  if (!rows || *rows == 0) return;
  if (*rows > std::numeric_limits<int>::max()) throw py::value_error("too many rows for one append");
  auto transfer = [&] {
    m_Session->Guard(
        [&] { Table().AppendColumns(static_cast<int>(*rows), calls.data(), static_cast<int>(calls.size())); });
  };
  if (numbersOnly) {
    zqapy_WithoutPython(transfer);
  } else {
    transfer();
  }
}

void zqapy_Table::Snap() { Table().Snap(); }

void zqapy_Table::Flush() { Table().Flush(); }

void zqapy_Table::Close() { m_Table = rfm_Table(); }
