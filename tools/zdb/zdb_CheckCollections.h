#ifndef zdb_CheckCollections_h
#define zdb_CheckCollections_h

class zdb_CheckReport;
class zdb_ObjectFile;

// The collections of the object layer's part of zdb check: each row of the
// class tables of ##InternalList, ##InternalBlob, ##InternalMap and
// ##InternalDblCol that the catalogue names. A list's Target#Handle must
// name a list's store (see zdb_CollectionTarget), an array of one field a
// row when it is an array, and its Target#Columns, when it holds data, be 1
// or more; a blob's handle must name an object; a map's handle, and each of
// a double collection's two, a table of a map's layout. A row without a
// handle holds an absent collection and is fine. The rows of each ##List,
// ##Map and ##MapInt2Obj table that a collection leads to are checked once,
// as a class table's references are (see zdb_CheckReferences). Lines name
// the table, the row and the column, and are capped per table as the
// references' are.
void zdb_CheckCollections(zdb_ObjectFile const& file, zdb_CheckReport& report);

#endif
