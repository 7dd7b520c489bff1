#ifndef zdb_CollectionTarget_h
#define zdb_CollectionTarget_h

#include <string>

class zdb_TableFinder;

// What the Target#Handle of a row of ##InternalList or ##InternalBlob names
// (see rom_HeaderLayout.h). A list's store is an array of int, float,
// double or string elements, a table of the ##List layout (one object a
// row) or, in older files, of the ##StringArray layout; a blob's is a space,
// and since a blob's bytes are its owner's, any object reads as one. A
// handle read from a file may name anything else: m_Problem then says what
// it names instead. Finding a target never raises.
struct zdb_CollectionTarget {
  static constexpr char kObjects[] = "objects";
  static constexpr char kBytes[] = "bytes";

  int m_Handle = 0;
  // Empty when the handle names a store of its kind; else what it names,
  // "names no object", "names a stream, not a list".
  std::string m_Problem;
  long long m_Length = 0;     // a list's elements, a blob's bytes
  char const* m_Kind = "";    // an element type's name, kObjects or kBytes
  bool m_ObjectList = false;  // a ##List table, whose rows refer to objects

  bool Found() const { return m_Problem.empty(); }
  // What a dump shows beside the handle: "8 int", "1 object", "1200
  // bytes", or the problem.
  std::string Summary() const;

  static zdb_CollectionTarget OfList(zdb_TableFinder const& finder, int handle);
  static zdb_CollectionTarget OfBlob(zdb_TableFinder const& finder, int handle);
};

#endif
