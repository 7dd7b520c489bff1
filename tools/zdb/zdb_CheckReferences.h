#ifndef zdb_CheckReferences_h
#define zdb_CheckReferences_h

#include <string>

class rfm_Table;
class zdb_CheckReport;
class zdb_ObjectFile;

// The references of the object layer's part of zdb check. In every class
// table that the catalogue names, and in no other table (but for the
// ##List, ##Map and ##MapInt2Obj tables that zdb_CheckCollections leads
// here), each row's references to objects (see zdb_TableColumns.h): a
// class id must be a class of the catalogue or an internal class, or
// kRomNoClass with a negative oid (the null reference), and in a
// collection's row any class id with a negative oid (see
// rom_HeaderLayout.h); an oid must lie within the rows of its class's
// table, and a derived class's kRomBaseClassOidName within its base
// class's. A reference without data in either field is null and fine. Each
// problem is a line naming the table, the row and the column; a table's
// lines are capped as the report caps a repeating subject, so that a
// wrecked table stays readable. A class whose table, or base class, the
// catalogue's own rules find missing is not looked into again.
void zdb_CheckReferences(zdb_ObjectFile const& file, zdb_CheckReport& report);

// The references of one table, its lines beginning with subject.
void zdb_CheckTableReferences(zdb_ObjectFile const& file, rfm_Table const& table, std::string const& subject,
                              zdb_CheckReport& report);

// How a check's line names a table: table "Shape" at handle 6.
std::string zdb_TableSubject(std::string const& name, int handle);

#endif
