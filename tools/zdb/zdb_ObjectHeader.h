#ifndef zdb_ObjectHeader_h
#define zdb_ObjectHeader_h

#include "rfm_Database.h"
#include "rfm_Space.h"
#include "rfm_Table.h"
#include "rom_HeaderLayout.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

class zdb_TableFinder;

// The object layer's header at a database's root (see rom_HeaderLayout.h),
// read tolerantly: what it holds, and each way in which it departs from the
// layout the object layer writes, as lines for a check's report. Nothing it
// reads raises.
//
// Whether a file has such a header at all cannot be told from its root
// alone: an application of the record store may put a table or a tagged
// stream of its own at the root, and they begin with the same words as a
// header. A file is taken to have one when its table catalogue holds the
// layout kRomCatalogName: the object layer binds that layout in every form
// of header it writes, and names beginning with "##" are its own. Any other
// file has no object header, whatever its root holds.
//
// Invariant: m_Catalogue is null or the table that the header names as its
// catalogue; m_Items holds the int items the header has (for a version
// space, its version).
class zdb_ObjectHeader {
public:
  enum Form { kNoHeader, kUnknownForm, kTaggedStreamForm, kTableForm, kVersionSpaceForm };

  zdb_ObjectHeader(rfm_Database const& database, zdb_TableFinder const& finder);

  Form GetForm() const { return m_Form; }
  bool Present() const { return m_Form != kNoHeader; }
  // "tagged stream", "table", "version space", "unknown".
  static char const* FormName(Form form);
  // What a header item holds, as a person reads it: "header version", ...
  static char const* ItemName(int tag);

  // The value of an int item (kRomTagVersion to kRomTagReleaseType), when
  // the header has it.
  std::optional<int> Item(rom_HeaderTag tag) const { return m_Items[tag]; }
  // The handle the header names its catalogue by, when it names one.
  std::optional<int> CatalogueHandle() const { return m_CatalogueHandle; }
  // The catalogue table; null when the header names none that can be opened.
  rfm_Table const& Catalogue() const { return m_Catalogue; }
  // The header's problems, "object header (handle 4): ..." each.
  std::vector<std::string> const& Problems() const { return m_Problems; }

private:
  void ReadStream(rfm_Database const& database);
  void ReadVersionSpace(rfm_Space const& root);
  void FindCatalogue(zdb_TableFinder const& finder);
  void Problem(std::string const& text) { m_Problems.push_back(m_Subject + ": " + text); }

  Form m_Form = kNoHeader;
  int m_Root;
  std::string m_Subject;
  std::array<std::optional<int>, kRomTagReleaseType + 1> m_Items;
  std::optional<int> m_CatalogueHandle;
  rfm_Table m_Catalogue;
  std::vector<std::string> m_Problems;
};

#endif
