#include "zqapy_Strings.h"

#include <limits>

namespace py = pybind11;

namespace {

char const kErrors[] = "surrogateescape";

py::str Decoded(char const* text, py::ssize_t length) {
  PyObject* decoded = PyUnicode_DecodeUTF8(text, length, kErrors);
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

}  // namespace

py::str zqapy_ToPython(cow_String const& text) { return Decoded(text.CStr(), text.Length()); }

py::str zqapy_ToPython(std::string const& text) {
  return Decoded(text.data(), static_cast<py::ssize_t>(text.size()));
}

std::string zqapy_Quoted(cow_String const& text) { return py::cast<std::string>(py::repr(zqapy_ToPython(text))); }

cow_String zqapy_FromPython(py::handle text) {
  if (!PyUnicode_Check(text.ptr())) throw py::type_error("a string field or element takes str, not " +
                                                         std::string(py::str(py::type::of(text).attr("__name__"))));
  PyObject* encoded = PyUnicode_AsEncodedString(text.ptr(), "utf-8", kErrors);
  if (encoded == nullptr) throw py::error_already_set();
  py::bytes bytes = py::reinterpret_steal<py::bytes>(encoded);
  char* chars = nullptr;
  Py_ssize_t length = 0;
  PyBytes_AsStringAndSize(bytes.ptr(), &chars, &length);
  if (length > std::numeric_limits<int>::max()) throw py::value_error("a string of 2 GiB or more cannot be stored");
  return cow_String(atr_StringBase(chars, static_cast<int>(length)));
}

py::array zqapy_ObjectArray(std::vector<py::ssize_t> const& shape) {
  py::array values(py::dtype("O"), shape);
  auto* slots = static_cast<PyObject**>(values.mutable_data());
  for (py::ssize_t i = 0; i < values.size(); ++i) {
    Py_XDECREF(slots[i]);
    slots[i] = Py_NewRef(Py_None);
  }
  return values;
}

void zqapy_StoreStrings(py::array& values, py::ssize_t first, cow_String const* texts, py::ssize_t count) {
  // An object array holds a reference per element: each one stored
  // replaces (and releases) the None the array was made with.
  auto* slots = static_cast<PyObject**>(values.mutable_data()) + first;
  for (py::ssize_t i = 0; i < count; ++i) {
    PyObject* text = zqapy_ToPython(texts[i]).release().ptr();
    Py_XDECREF(slots[i]);
    slots[i] = text;
  }
}

std::vector<cow_String> zqapy_TakeStrings(py::sequence const& texts) {
  std::vector<cow_String> taken;
  taken.reserve(texts.size());
  for (py::handle text : texts) taken.push_back(text.is_none() ? cow_String() : zqapy_FromPython(text));
  return taken;
}
