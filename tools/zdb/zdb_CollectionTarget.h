#ifndef zdb_CollectionTarget_h
#define zdb_CollectionTarget_h

#include <string>

class zdb_TableFinder;

// What the Target#Handle of a row of ##InternalList, ##InternalBlob or
// ##InternalMap (or either handle of ##InternalDblCol) names (see
// rom_HeaderLayout.h). A list's store is an array of int, float, double or
// string elements, a table of the ##List layout (one object a row) or, in
// older files, of the ##StringArray layout; a blob's is a space, and since a
// blob's bytes are its owner's, any object reads as one; a map's is a table
// of one of the map layouts (kRomMapLayouts). A handle read from a file may
// name anything else: m_Problem then says what it names instead. Finding a
// target never raises.
struct zdb_CollectionTarget {
  static constexpr char kObjects[] = "objects";
  static constexpr char kBytes[] = "bytes";

  int m_Handle = 0;
  // Empty when the handle names a store of its kind; else what it names,
  // "names no object", "names a stream, not a list".
  std::string m_Problem;
  // A list's elements, a blob's bytes, a map's entries: the rows of its
  // table, a removed key's and each of a repeated key's among them.
  long long m_Length = 0;
  // An element type's name, kObjects or kBytes; a map's key and value,
  // "string to object", "int to double".
  std::string m_Kind;
  bool m_Map = false;
  // The layout of a table store, whose rows refer to objects when
  // m_ObjectRows (a ##List, ##Map or ##MapInt2Obj table).
  std::string m_Table;
  bool m_ObjectRows = false;
  // An array store's fields a row; the object layer reads a list only from
  // an array of one.
  int m_FieldsPerRow = 1;

  bool Found() const { return m_Problem.empty(); }
  // What a dump shows beside the handle: "8 int", "1 object", "1200
  // bytes", "3 entries string to object", or the problem.
  std::string Summary() const;

  static zdb_CollectionTarget OfList(zdb_TableFinder const& finder, int handle);
  static zdb_CollectionTarget OfBlob(zdb_TableFinder const& finder, int handle);
  static zdb_CollectionTarget OfMap(zdb_TableFinder const& finder, int handle);
};

#endif
