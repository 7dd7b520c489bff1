// The compiled part of the Python package zqaromcore: the library's files,
// tables, arrays and tagged streams, whose Python face the package's
// __init__.py gives them.

#include "ZQARomCore.h"
#include "rom_ClassCatalogue.h"
#include "zqapy_File.h"
#include "zqapy_Strings.h"

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

namespace py = pybind11;

namespace {

// The library's start count, balanced at the interpreter's exit.
int g_Modules = 0;

// The magic of files created from Python when the caller names none.
char const kDefaultMagic[] = "ZQPY";

void EndLibrary() {
  // Files still open close (a writer's changes reach its file) before the
  // library ends; objects Python keeps after this raise when used.
  zqapy_Session::CloseAll();
  zqapy_Locked lock;
  ZQARomCore_finalize(g_Modules);
}

}  // namespace

PYBIND11_MODULE(_zqaromcore, module) {
  module.doc() = "The compiled core of zqaromcore; use the package, not this module.";
  {
    zqapy_Locked lock;
    ZQARomCore_initialize(g_Modules);
  }
  py::module_::import("atexit").attr("register")(py::cpp_function(&EndLibrary));

  static py::exception<zqapy_Error> error(module, "Error");
  py::register_exception_translator([](std::exception_ptr raised) {
    try {
      if (raised) std::rethrow_exception(raised);
    } catch (zqapy_Error const& e) {
      // A message may name a file or quote a name read from one, whose
      // bytes need not be UTF-8.
      py::object instance = py::reinterpret_borrow<py::object>(error.ptr())(zqapy_ToPython(std::string(e.what())));
      instance.attr("filename") = zqapy_ToPython(e.FileName());
      PyErr_SetObject(error.ptr(), instance.ptr());
    }
  });

  module.attr("DEFAULT_MAGIC") = kDefaultMagic;
  module.attr("NO_BASE_CLASS") = rom_ClassCatalogue::kNoBaseClass;
  module.attr("NULL_CLASS") = rom_ClassCatalogue::kNullClass;

  py::class_<zqapy_File>(module, "File")
      .def(py::init<std::string const&, std::string const&, bool, std::string const&, std::string const&>(),
           py::arg("name"), py::arg("mode"), py::arg("compressed"), py::arg("magic"), py::arg("description"))
      .def_property_readonly("name", [](zqapy_File const& file) { return zqapy_ToPython(file.Name()); })
      .def_property_readonly("kind", &zqapy_File::Kind)
      .def_property_readonly("description", &zqapy_File::Description)
      .def_property_readonly("read_only", &zqapy_File::ReadOnly)
      .def_property_readonly("flush_count", &zqapy_File::FlushCount)
      .def_property_readonly("is_open", &zqapy_File::IsOpen)
      .def("objects", &zqapy_File::Objects)
      .def("tables", &zqapy_File::Tables)
      .def("classes", &zqapy_File::Classes)
      .def("references", &zqapy_File::References)
      .def("table", &zqapy_File::Table)
      .def("create_table", &zqapy_File::CreateTable)
      .def("array", &zqapy_File::Array)
      .def("create_array", &zqapy_File::CreateArray)
      .def("stream", &zqapy_File::Stream)
      .def("create_stream", &zqapy_File::CreateStream)
      .def("snap", &zqapy_File::Snap)
      .def("flush", &zqapy_File::Flush)
      .def("close", &zqapy_File::Close);

  py::class_<zqapy_Table, std::shared_ptr<zqapy_Table>>(module, "Table")
      .def_property_readonly("name", &zqapy_Table::Name)
      .def_property_readonly("handle", &zqapy_Table::Handle)
      .def("fields", &zqapy_Table::Fields)
      .def("length", &zqapy_Table::Length)
      .def("read", &zqapy_Table::Read)
      .def("append", &zqapy_Table::Append);

  py::class_<zqapy_Array, std::shared_ptr<zqapy_Array>>(module, "Array")
      .def_property_readonly("handle", &zqapy_Array::Handle)
      .def_property_readonly("type", &zqapy_Array::Type)
      .def_property_readonly("fields", &zqapy_Array::Fields)
      .def("length", &zqapy_Array::Length)
      .def("read", &zqapy_Array::Read)
      .def("append", &zqapy_Array::Append);

  py::class_<zqapy_Stream, std::shared_ptr<zqapy_Stream>>(module, "Stream")
      .def_property_readonly("handle", &zqapy_Stream::Handle)
      .def("items", &zqapy_Stream::Items)
      .def("append", &zqapy_Stream::Append);
}
