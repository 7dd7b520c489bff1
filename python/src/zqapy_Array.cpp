#include "zqapy_Array.h"

#include "rfm_TypeName.h"
#include "zqapy_Strings.h"
#include "zqapy_Types.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

namespace py = pybind11;

namespace {

// The element type of an array handle. The library's int is NumPy's int32.
template <class Array>
struct ElementOf;
template <class T, rfm_Type ElementType>
struct ElementOf<rfm_Array<T, ElementType>> {
  using Type = T;
};
static_assert(sizeof(int) == sizeof(std::int32_t), "NumPy's int32 arrays hold the library's ints");

}  // namespace

zqapy_Array::zqapy_Array(std::shared_ptr<zqapy_Session> const& session, Any const& array)
    : m_Session(session), m_Array(array) {}

zqapy_Array::~zqapy_Array() {
  zqapy_Locked lock;
  m_Array.reset();
}

zqapy_Array::Any const& zqapy_Array::Current() const {
  if (!m_Array) throw zqapy_Error(m_Session->Name(), "the array's file is closed");
  return *m_Array;
}

template <class Action>
auto zqapy_Array::Visit(Action&& action) const {
  return std::visit(action, Current());
}

std::shared_ptr<zqapy_Array> zqapy_Array::Open(std::shared_ptr<zqapy_Session> const& session, int handle) {
  zqapy_Locked lock;
  return session->Guard([&] {
    rfm_Database const& database = session->Database();
    rfm_Handle const at(handle);
    std::optional<Any> array;
    switch (session->ObjectType(handle, {rfm_TypeInt, rfm_TypeFloat, rfm_TypeDouble, rfm_TypeString}, "array")) {
      case rfm_TypeInt:
        array = database.ArrayInt(at, -1, 0);
        break;
      case rfm_TypeFloat:
        array = database.ArrayFloat(at, -1, 0);
        break;
      case rfm_TypeDouble:
        array = database.ArrayDouble(at, -1, 0);
        break;
      default:
        array = database.ArrayString(at, -1, 0);
        break;
    }
    return session->Track(std::shared_ptr<zqapy_Array>(new zqapy_Array(session, *array)));
  });
}

std::shared_ptr<zqapy_Array> zqapy_Array::Create(std::shared_ptr<zqapy_Session> const& session,
                                                 std::string const& type, int fields) {
  if (fields < 1) throw py::value_error("an array needs at least one element per row, not " + std::to_string(fields));
  rfm_Type const elements = zqapy_TypeOf(type);
  zqapy_Locked lock;
  return session->Guard([&] {
    rfm_Database const& database = session->Database();
    std::optional<Any> array;
    switch (elements) {
      case rfm_TypeInt:
        array = database.ArrayInt(fields, -1, 0);
        break;
      case rfm_TypeFloat:
        array = database.ArrayFloat(fields, -1, 0);
        break;
      case rfm_TypeDouble:
        array = database.ArrayDouble(fields, -1, 0);
        break;
      case rfm_TypeString:
        array = database.ArrayString(fields, -1, 0);
        break;
      default:
        throw py::value_error("arrays hold int, float, double or string elements, not " + type);
    }
    return session->Track(std::shared_ptr<zqapy_Array>(new zqapy_Array(session, *array)));
  });
}

int zqapy_Array::Handle() const {
  zqapy_Locked lock;
  return Visit([](auto const& array) { return array.Handle().Value(); });
}

std::string zqapy_Array::Type() const {
  zqapy_Locked lock;
  return Visit([](auto const& array) { return std::string(rfm_TypeName(array.Type())); });
}

int zqapy_Array::Fields() const {
  zqapy_Locked lock;
  return Visit([](auto const& array) { return array.FieldCount(); });
}

int zqapy_Array::Length() const {
  zqapy_Locked lock;
  return m_Session->Guard([&] { return Visit([](auto const& array) { return array.Length(); }); });
}

py::array zqapy_Array::Read(long start, long stop) {
  zqapy_Locked lock;
  return m_Session->Guard([&] {
    return Visit([&](auto const& open) -> py::array {
      using T = typename ElementOf<std::decay_t<decltype(open)>>::Type;
      long const length = open.Length();
      long const fields = open.FieldCount();
      start = std::clamp(start, 0L, length);
      long const rows = std::clamp(stop, start, length) - start;
      long read = 0;
      auto readRows = [&](T* target) {
        open.Seek(static_cast<int>(start));
        read = rows == 0 ? 0 : open.Read(target, static_cast<int>(rows));
      };
      py::array values;
      if constexpr (std::is_same_v<T, cow_String>) {
        values = zqapy_ObjectArray({rows, fields});
        std::vector<cow_String> buffer(static_cast<std::size_t>(rows * fields));
        readRows(buffer.data());
        zqapy_StoreStrings(values, 0, buffer.data(), read);
      } else {
        py::array_t<T> numbers({rows, fields});
        T* target = numbers.mutable_data();
        zqapy_WithoutPython([&] { readRows(target); });
        values = numbers;
      }
      if (read != rows * fields)
        throw zqapy_Error(m_Session->Name(), "array " + std::to_string(open.Handle().Value()) + " gave " +
                                                 std::to_string(read) + " elements of " +
                                                 std::to_string(rows * fields));
      return values;
    });
  });
}

void zqapy_Array::Append(py::object const& values) {
  zqapy_Locked lock;
  m_Session->Guard([&] {
    Visit([&](auto const& open) {
      using T = typename ElementOf<std::decay_t<decltype(open)>>::Type;
      long const fields = open.FieldCount();
      auto writeRows = [&](T const* source, long rows) {
        open.Seek(open.Length());
        if (rows > 0) open.Write(source, static_cast<int>(rows));
      };
      if constexpr (std::is_same_v<T, cow_String>) {
        std::vector<cow_String> texts = zqapy_TakeStrings(py::cast<py::sequence>(values));
        if (texts.size() % static_cast<std::size_t>(fields) != 0)
          throw py::value_error(std::to_string(texts.size()) + " strings do not make rows of " +
                                std::to_string(fields));
        writeRows(texts.data(), static_cast<long>(texts.size()) / fields);
      } else {
        using Exact = py::array_t<T, py::array::c_style>;
        if (!py::isinstance<Exact>(values) || py::cast<py::array>(values).ndim() != 2 ||
            py::cast<py::array>(values).shape(1) != fields)
          throw py::type_error("this array takes a contiguous two-dimensional " +
                               std::string(py::str(py::dtype::of<T>())) + " array of " + std::to_string(fields) +
                               " columns");
        auto const numbers = py::cast<Exact>(values);
        long const rows = numbers.shape(0);
        if (rows > std::numeric_limits<int>::max()) throw py::value_error("too many rows for one append");
        T const* source = numbers.data();
        zqapy_WithoutPython([&] { writeRows(source, rows); });
      }
    });
  });
}

void zqapy_Array::Snap() {
  Visit([](auto const& array) { array.Snap(); });
}

void zqapy_Array::Flush() {
  Visit([](auto const& array) { array.Flush(); });
}

void zqapy_Array::Close() { m_Array.reset(); }
