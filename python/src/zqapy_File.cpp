#include "zqapy_File.h"

#include "rfm_Space.h"
#include "rfm_TypeName.h"
#include "rom_ClassCatalogue.h"
#include "zqapy_Strings.h"

#include <pybind11/stl.h>

#include <ctime>
#include <sys/stat.h>

namespace py = pybind11;

namespace {


char const kUrlScheme[] = "zbxrdb://";

bool Exists(std::string const& name) {
  struct stat status;
  return ::stat(name.c_str(), &status) == 0;
}

char const* KindName(rfm_FileKind kind) {
  switch (kind) {
    case rfm_FileKindCompressed:
      return "compressed";
    case rfm_FileKindRemote:
      return "remote";
    default:
      return "plain";
  }
}

struct Opened {
  rfm_File m_File;
  rfm_Database m_Database;
};

Opened OpenDatabase(std::string const& name, std::string const& mode, bool compressed, std::string const& magic,
                    std::string const& description) {
  bool const remote = name.rfind(kUrlScheme, 0) == 0;
  bool const create = mode == "w" || mode == "x" || (mode == "a" && !Exists(name));
  if (mode != "r" && mode != "r+" && mode != "a" && mode != "w" && mode != "x")
    throw py::value_error("mode '" + mode + "': 'r', 'r+', 'a', 'w' or 'x'");
  if (remote && mode != "r") throw py::value_error(name + ": a file named by a URL is read only");
  if (mode == "x" && Exists(name)) throw zqapy_Error(name, "the file exists already");
  if (compressed && !create) throw py::value_error("compressed=True is for a file being created, not mode '" + mode + "'");
  Opened opened;
  if (create) {
    opened.m_File = compressed ? rfm_File::CreateCompressed(name.c_str())
                               : rfm_File::Open(name.c_str(), utl_FileAccessCreate, false);
    opened.m_Database = rfm_Database::Create(opened.m_File, magic.c_str(), description.c_str(),
                                             static_cast<long>(std::time(nullptr)));
  } else {
    opened.m_File = rfm_File::Open(name.c_str(), mode == "r" ? utl_FileAccessRead : utl_FileAccessUpdate, false);
    // An empty magic: a file of any application opens.
    opened.m_Database = rfm_Database::Open(opened.m_File, cow_String());
  }
  return opened;
}

}  // namespace

zqapy_File::zqapy_File(std::string const& name, std::string const& mode, bool compressed, std::string const& magic,
                       std::string const& description) {
  zqapy_Locked lock;
  Opened const opened = zqapy_Guard(name, [&] { return OpenDatabase(name, mode, compressed, magic, description); });
  m_Kind = KindName(opened.m_File.Kind());
  m_Session = std::make_shared<zqapy_Session>(opened.m_Database, name);
}

py::str zqapy_File::Description() const {
  zqapy_Locked lock;
  return m_Session->Guard([&] { return zqapy_ToPython(m_Session->Database().Description()); });
}

bool zqapy_File::ReadOnly() const {
  zqapy_Locked lock;
  return m_Session->Guard([&] { return m_Session->Database().ReadOnly(); });
}

int zqapy_File::FlushCount() const {
  zqapy_Locked lock;
  return m_Session->Guard([&] { return m_Session->Database().GetFlushCount(); });
}

bool zqapy_File::IsOpen() const {
  zqapy_Locked lock;
  return m_Session->IsOpen();
}

py::list zqapy_File::Objects() const {
  zqapy_Locked lock;
  py::list objects;
  m_Session->Guard([&] {
    rfm_Database const& database = m_Session->Database();
    cow_List<rfm_Handle> const handles = database.ObjectHandles();
    for (int i = 0; i < handles.Length(); ++i) {
      rfm_Handle const handle = handles[i];
      rfm_Type const type = database.HandleType(handle);
      long long const size = database.Space(handle, -1).Length();
      cow_String name;
      if (type == rfm_TypeTable) name = database.Table(handle, -1, -1).TableMetadata().TableName();
      objects.append(py::make_tuple(handle.Value(), rfm_ObjectKindName(type), size, zqapy_ToPython(name)));
    }
  });
  return objects;
}

py::list zqapy_File::Tables() const {
  py::list tables;
  for (py::handle object : Objects()) {
    auto const described = py::cast<py::tuple>(object);
    if (py::cast<std::string>(described[1]) != rfm_ObjectKindName(rfm_TypeTable)) continue;
    std::shared_ptr<zqapy_Table> const table = Table(py::cast<int>(described[0]));
    tables.append(py::make_tuple(described[0], described[3], table->Fields(), table->Length()));
  }
  return tables;
}

py::list zqapy_File::Classes() const {
  zqapy_Locked lock;
  py::list classes;
  m_Session->Guard([&] {
    rom_ClassCatalogue const catalogue(m_Session->Database());
    for (rom_ClassCatalogue::Class const& entry : catalogue.Classes()) {
      classes.append(py::make_tuple(zqapy_ToPython(entry.m_Name), entry.m_ClassId, entry.m_Version,
                                    entry.m_BaseClassId, entry.m_Table.Value(), entry.m_Rows));
    }
  });
  return classes;
}

py::list zqapy_File::References(int handle) const {
  zqapy_Locked lock;
  py::list references;
  m_Session->Guard([&] {
    rfm_Table const table = m_Session->Database().Table(rfm_Handle(handle), -1, -1);
    for (rom_ClassCatalogue::Reference const& reference : rom_ClassCatalogue::References(table.TableMetadata())) {
      references.append(py::make_tuple(zqapy_ToPython(reference.m_Member), zqapy_ToPython(reference.m_OidField),
                                       zqapy_ToPython(reference.m_ClassIdField)));
    }
  });
  return references;
}

bool zqapy_File::Snap() {
  zqapy_Locked lock;
  return m_Session->Snap();
}

void zqapy_File::Flush() {
  zqapy_Locked lock;
  m_Session->Flush();
}

void zqapy_File::Close() {
  zqapy_Locked lock;
  m_Session->Close();
}
