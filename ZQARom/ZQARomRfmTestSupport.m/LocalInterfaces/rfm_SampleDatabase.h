#ifndef rfm_SampleDatabase_h
#define rfm_SampleDatabase_h

#include "rfm_Database.h"

#include <vector>

class rfm_TaggedStream;

// A small database that holds one of every kind of object the record store
// keeps, for the tests and fuzz targets that damage files and read them
// back. Its root table (handle 4, the first object made) names every other
// object; a table of nodes links to the arrays and the stream, and two
// arrays written in turns spread over hundreds of extents, so the linkages
// fill more than one group.
//
// The content is fixed: writing it twice gives the same logical bytes.
class rfm_SampleDatabase {
public:
  // An object of the sample: its handle and what rfm_Database::HandleType
  // answers for it.
  struct Object {
    rfm_Handle m_Handle;
    rfm_Type m_Type;
  };

  // Writes the sample into file, which must be new, and flushes it; the
  // database closes when the last handle on file's database goes. Answers
  // the objects in the order they were made.
  static std::vector<Object> Write(rfm_File const& file);

  // Writes the sample's items into stream: one of each kind that can be
  // read back, naming handle where an item holds a handle.
  static void WriteItems(rfm_TaggedStream const& stream, rfm_Handle handle);
};

#endif
