#include "zdb_Database.h"

#include "rfm_Block0.h"
#include "rfm_DatabaseReprFile.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_ObjectMagic.h"
#include "zdb_Failure.h"

#include <algorithm>

zdb_Database::zdb_Database(std::string const& name) : m_Name(name) {
  try {
    m_File = rfm_File::Open(name.c_str(), utl_FileAccessRead, false);
    // An empty magic: any application's database is welcome.
    m_Database = rfm_Database::Open(m_File, cow_String());
  } catch (std::exception const& e) {
    throw zdb_Failure(name + ": " + e.what());
  }
}

rfm_DatabaseReprFile& zdb_Database::Repr() const { return dynamic_cast<rfm_DatabaseReprFile&>(m_Database.Repr()); }

bool zdb_Database::Compressed() const { return dynamic_cast<rfm_FileReprEncoded*>(m_File.Repr()) != nullptr; }

std::vector<rfm_Handle> zdb_Database::Handles() const { return Repr().ObjectHandles(); }

bool zdb_Database::IsObject(rfm_Handle handle) const {
  std::vector<rfm_Handle> handles = Handles();
  return std::find(handles.begin(), handles.end(), handle) != handles.end();
}

zdb_Object zdb_Database::Describe(rfm_Handle handle) const {
  zdb_Object object{handle, m_Database.HandleType(handle), 0, 0, 0};
  rfm_DatabaseReprFile const& repr = Repr();
  int steps = 0;
  for (rfm_Handle link = handle; !link.IsNull() && steps <= repr.ChainLimit(); ++steps) {
    rfm_Linkage const& extent = repr.Linkage(link);
    if (extent.m_Location == 0) break;
    object.m_Length += extent.m_Length;
    object.m_Allocation += extent.m_Allocation;
    // Below block 0's end a location is a placeholder: the slot is taken, no bytes yet.
    if (extent.m_Location >= kRfmBlock0Size) ++object.m_Extents;
    link = extent.m_Next;
  }
  return object;
}

char const* zdb_TypeName(int type) {
  switch (type) {
    case rfm_TypeInt:
      return "int";
    case rfm_TypeHandle:
      return "handle";
    case rfm_TypeFloat:
      return "float";
    case rfm_TypeDouble:
      return "double";
    case rfm_TypeString:
      return "string";
    default:
      return "unknown";
  }
}

std::string zdb_ObjectKind(rfm_Type type) {
  switch (type) {
    case rfm_TypeTable:
      return "table";
    case rfm_TypeStream:
      return "stream";
    case rfm_TypeSpace:
      return "space";
    default:
      return std::string(zdb_TypeName(type)) + " array";
  }
}

char const* zdb_WellKnownRole(rfm_Handle handle) {
  switch (handle.Value()) {
    case kRfmStringPoolHandle:
      return "string pool";
    case kRfmReservedHandle:
      return "reserved";
    case kRfmMetadataHandle:
      return "table catalogue";
    default:
      return "";
  }
}
