#ifndef rfm_DatabaseWalk_h
#define rfm_DatabaseWalk_h

#include "rfm_Database.h"
#include "rfm_FieldMetadata.h"

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

class rfm_Row;
class rfm_Table;
class rfm_TaggedStream;

// Reads everything a database holds, as a program that shows a whole file
// would, and writes down what it read as text: the description, the
// catalogue, the statistics, every object reachable from the two root
// tables (every row and field of a table, every row of an array, every item
// of a tagged stream, the bytes of a plain space, every string through the
// pool) and the object location report at offsets across the first 64 KB.
// Objects are found the way the design finds them: the roots, then every
// handle met in a row or an item. An object is opened as the kind that a
// row naming it declares (a row with an int field Kind and a handle field
// Object, as a root table of the sample holds) and the roots as tables, as
// a program that knows its schema would; any other as
// rfm_Database::HandleType says. Damage surfaces as the library's
// exceptions, which the walk lets through.
//
// Walked as stored, the objects are instead every one that the linkage
// groups list, each read as what its own first words make it, and handles
// in rows and items are not followed: what a program that knows no schema
// reads of a file, as zdb does.
//
// Invariant: each object is read once, so a damaged file whose handles
// loop ends the walk like any other.
class rfm_DatabaseWalk {
public:
  // Opens the file at name for reading, reads the last byte it claims to
  // hold, as a program that copies or checks a whole file gets there (that
  // byte is not written down: it may lie past the database), and walks the
  // database in it.
  static std::string Walk(cow_String const& name);
  // The same, walking the objects as stored.
  static std::string WalkStored(cow_String const& name);
  // The items of the tagged stream at handle, one line each.
  static std::string WalkTaggedStream(rfm_Database const& database, rfm_Handle handle);
  // How a walk writes a string: its length, then the text in quotes with
  // any byte outside printable ASCII in hex.
  static std::string Quoted(cow_String const& text);

private:
  explicit rfm_DatabaseWalk(rfm_Database const& database) : m_Database(database) {}

  void Line(std::string const& text) { m_Text.append(text).append("\n"); }
  // The description, creation time, catalogue and statistics of file's database.
  void Head(rfm_File const& file);
  void Catalogue();
  void Statistics(char const* title, cow_List<cow_String> const& lines);
  void Objects();
  void Object(rfm_Handle handle);
  void Table(rfm_Handle handle);
  // Each row's line as Table writes it, read through the bulk path.
  static std::vector<std::string> BulkLines(rfm_Table const& table, std::vector<rfm_FieldMetadata> const& fields);
  template <class T, rfm_Type ElementType>
  void Array(rfm_Array<T, ElementType> const& array);
  void Stream(rfm_TaggedStream const& stream);
  void Space(rfm_Handle handle);
  void LocationReport();
  // Notes the kind that row declares for the object it names, if it does.
  void Declare(rfm_Row const& row);
  // Remembers handle to be walked, unless it was met before.
  void Meet(rfm_Handle handle);

  rfm_Database m_Database;
  bool m_FollowHandles = true;
  std::string m_Text;
  std::set<int> m_Met;
  std::map<int, int> m_Declared;  // handle to the rfm_Type declared for it
  std::deque<rfm_Handle> m_Pending;
};

#endif
