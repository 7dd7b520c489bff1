#include "zdb_TableFinder.h"

#include "rfm_TypeName.h"
#include "zdb_Database.h"
#include "zdb_Text.h"

#include <exception>

zdb_TableFinder::zdb_TableFinder(rfm_Database const& database) : m_Database(database) {
  cow_List<rfm_Handle> handles = database.ObjectHandles();
  for (int i = 0; i < handles.Length(); ++i) m_Objects.insert(handles[i].Value());
}

rfm_Table zdb_TableFinder::Find(int handle, std::string& why) const {
  if (!IsObject(handle)) {
    why = "names no object";
    return rfm_Table();
  }
  try {
    rfm_Type type = m_Database.HandleType(rfm_Handle(handle));
    if (type != rfm_TypeTable) {
      why = "names " + zdb_WithArticle(rfm_ObjectKindName(type)) + ", not a table";
      return rfm_Table();
    }
    return m_Database.Table(rfm_Handle(handle), -1, -1);
  } catch (std::exception const& e) {
    why = std::string("names a table that cannot be opened: ") + e.what();
    return rfm_Table();
  }
}
