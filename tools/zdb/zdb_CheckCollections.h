#ifndef zdb_CheckCollections_h
#define zdb_CheckCollections_h

class zdb_CheckReport;
class zdb_ObjectFile;

// The collections of the object layer's part of zdb check: each row of the
// class tables of ##InternalList and ##InternalBlob that the catalogue
// names. A list's Target#Handle must name a list's store (see
// zdb_CollectionTarget) and its Target#Columns, when it holds data, be 1 or
// more; a blob's handle must name an object. A row without a handle holds
// an absent collection and is fine. The rows of each ##List table that a
// list leads to are checked once, as a class table's references are (see
// zdb_CheckReferences). Lines name the table, the row and the column, and
// are capped per table as the references' are.
void zdb_CheckCollections(zdb_ObjectFile const& file, zdb_CheckReport& report);

#endif
