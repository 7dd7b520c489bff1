#include "zdb_Database.h"

#include "rfm_ObjectMagic.h"
#include "rfm_Space.h"
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

bool zdb_Database::Compressed() const { return m_File.Kind() == rfm_FileKindCompressed; }

std::vector<rfm_Handle> zdb_Database::Handles() const {
  cow_List<rfm_Handle> heads = m_Database.ObjectHandles();
  std::vector<rfm_Handle> handles;
  for (int i = 0; i < heads.Length(); ++i) handles.push_back(heads[i]);
  return handles;
}

bool zdb_Database::IsObject(rfm_Handle handle) const {
  std::vector<rfm_Handle> handles = Handles();
  return std::find(handles.begin(), handles.end(), handle) != handles.end();
}

zdb_Object zdb_Database::Describe(rfm_Handle handle) const {
  rfm_Space space = m_Database.Space(handle, -1);
  return zdb_Object{handle, m_Database.HandleType(handle), space.Length(), space.Allocation(),
                    m_Database.ExtentCount(handle)};
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
