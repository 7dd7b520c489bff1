#include "rfm_Database.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_Table.h"
#include "rfm_TableRepr.h"

rfm_Table rfm_Database::Table(rfm_Handle handle, int quantum, int cacheRows) const {
  return rfm_Table(new rfm_TableRepr(*this, handle, quantum, cacheRows));
}

rfm_Table rfm_Database::Table(rfm_TableMetadata const& definition, int quantum, int cacheRows) const {
  return rfm_Table(new rfm_TableRepr(*this, Repr().Bind(definition), quantum, cacheRows));
}

rfm_Table rfm_Database::Table(cow_String const& name, int quantum, int cacheRows) const {
  rfm_TableMetadata* bound = Repr().BindTableMetadata(Repr().GetTableMetadataHandle(name));
  return rfm_Table(new rfm_TableRepr(*this, bound, quantum, cacheRows));
}
