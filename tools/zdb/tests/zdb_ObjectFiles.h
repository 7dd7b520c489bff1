#ifndef zdb_ObjectFiles_h
#define zdb_ObjectFiles_h

#include "rfm_Table.h"
#include "rfm_TaggedStream.h"
#include "rfm_TestDatabase.h"

#include <string>
#include <vector>

// Files of the object layer made by hand through the record store for the
// tests of zdb: the header at the root in one of its forms, the class
// catalogue, and class tables with their catalogue rows. Each part is made
// by a call of its own, so that a test can make it wrongly.

enum class zdb_HeaderForm {
  TaggedStream,  // the root a tagged stream; its items written by the test
  Table,         // the root the catalogue itself
  VersionSpace,  // the root a space of the version space's word and the header version
  UnknownWord,   // the root a space whose first word begins no header
};

// The release a tests' header claims to be written by.
constexpr int kTestMajorVersion = 2024;
constexpr int kTestMinorVersion = 1;
constexpr int kTestUpdateVersion = 3;
constexpr int kTestReleaseType = 0;

// A catalogue row's class version that the row does not hold.
constexpr int kNoVersion = -1;

class zdb_ObjectFileWriter {
public:
  // Creates the database and its root object first, so that the root lands
  // at handle 4, then the catalogue table (with a Class Version field
  // unless withVersion is false, as in files of old formats).
  zdb_ObjectFileWriter(cow_String const& name, zdb_HeaderForm form, bool withVersion = true,
                       rfm_TestFileKind kind = rfm_TestFileKind::Plain);

  rfm_Database const& Database() const { return m_Database; }
  // The root stream of the TaggedStream form.
  rfm_TaggedStream const& Root() const { return m_Root; }
  rfm_Table const& Catalogue() const { return m_Catalogue; }

  // Writes every item of a tagged-stream header, as the object layer
  // writes it for the tests' release.
  void WriteFullHeader() const;
  // A table of name with rows rows, with the base class's row field first
  // when baseRow. Answers its handle.
  int AddTable(char const* name, bool baseRow, int rows) const;
  void AddCatalogueRow(unsigned classId, int table, char const* name, unsigned baseClass, int version) const;
  // A class as the object layer stores it: its table, named after it, with
  // the base class's row field exactly when it derives, and its row.
  int AddClass(unsigned classId, char const* name, unsigned baseClass, int version, int rows) const;
  // A class with references, its table laid out as the object layer lays
  // it out: the base class's row field when it derives, then the oid and
  // class id fields of each reference in references. Its rows are the
  // test's to write (see WriteReference).
  rfm_Table AddReferenceClass(unsigned classId, char const* name, unsigned baseClass,
                              std::vector<std::string> const& references) const;

private:
  rfm_Database m_Database;
  rfm_TaggedStream m_Root;
  rfm_Table m_Catalogue;
  bool m_WithVersion;
};

// Writes the reference name of row as the object layer stores it: oid in
// name#OID, classId in name#ClassID.
void WriteReference(rfm_Row const& row, std::string const& name, int oid, unsigned classId);

#endif
