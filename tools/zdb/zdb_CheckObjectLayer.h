#ifndef zdb_CheckObjectLayer_h
#define zdb_CheckObjectLayer_h

#include <string>

class zdb_CheckReport;

// The object layer's part of zdb check, for a file whose record store the
// structural check found sound: the header at the root (see
// zdb_ObjectHeader), the class catalogue (see zdb_ClassCatalogue), and the
// rules between the classes it lists: one row per class id; a class table
// named after its class; the field kRomBaseClassOidName, an int, exactly in
// the tables of derived classes; every base class in the catalogue, and no
// chain of base classes that comes back to where it began; then the
// references in the class tables (see zdb_CheckReferences), and the lists
// and blobs (see zdb_CheckCollections). It reads through
// the library, as the object layer does, and adds a line to report for each
// problem. Answers what it found for the check's summary, "object header
// (tagged stream), 3 classes", or "" for a file without an object header.
std::string zdb_CheckObjectLayer(std::string const& name, zdb_CheckReport& report);

#endif
