#include "rfm_DBMetadata.h"
#include "rfm_Database.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_Table.h"
#include "rfm_TableRepr.h"

rfm_TableRepr* rfm_DatabaseRepr::Table(rfm_Handle const& handle, int quantum, int cacheRows) {
  return new rfm_TableRepr(*this, handle, quantum, cacheRows);
}

rfm_TableRepr* rfm_DatabaseRepr::Table(rfm_TableMetadata const& definition, int quantum, int cacheRows) {
  return new rfm_TableRepr(*this, Bind(definition), quantum, cacheRows);
}

rfm_TableRepr* rfm_DatabaseRepr::Table(cow_String const& name, int quantum, int cacheRows) {
  return new rfm_TableRepr(*this, BindTableMetadata(GetTableMetadataHandle(name)), quantum, cacheRows);
}

rfm_Table rfm_Database::Table(rfm_Handle handle, int quantum, int cacheRows) const {
  return rfm_Table(Repr().Table(handle, quantum, cacheRows));
}

rfm_Table rfm_Database::Table(rfm_TableMetadata const& definition, int quantum, int cacheRows) const {
  return rfm_Table(Repr().Table(definition, quantum, cacheRows));
}

rfm_Table rfm_Database::Table(cow_String const& name, int quantum, int cacheRows) const {
  return rfm_Table(Repr().Table(name, quantum, cacheRows));
}
