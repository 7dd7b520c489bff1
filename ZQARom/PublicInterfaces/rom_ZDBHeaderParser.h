#ifndef rom_ZDBHeaderParser_h
#define rom_ZDBHeaderParser_h

#include "ZQABasExport.h"
#include "rfm_Table.h"

class cls_ClassRegistrar;
class rfm_Database;
class rfm_TaggedStream;

// The object layer's header at a database's root: which release wrote the
// file, and where its catalogue of class tables is. Reads the three forms
// of header files have had; writes the tagged-stream form (the others on
// request, for tests of old files). It also tells whether a file's classes
// are older or newer than a program's.
class ZQA_EXPORT rom_ZDBHeaderParser {
public:
  enum HeaderType { HeaderTypeTaggedStream = 1, HeaderTypeTable = 2, HeaderTypeVersionSpace = 3 };
  // Bits of GetUpToDateStatus.
  static constexpr unsigned int kHoldsOlderClasses = 1;
  static constexpr unsigned int kHoldsNewerClasses = 2;

  // Reads the header of an existing database.
  explicit rom_ZDBHeaderParser(rfm_Database& db);
  // Writes a new header of that form into a new database: this release's
  // numbers, and releaseType, or when it is negative this release's type.
  rom_ZDBHeaderParser(rfm_Database& db, HeaderType type, int releaseType);
  // Writes into db a header copied from other's, with an empty catalogue.
  // The copy's header version is other's header type: files made this way
  // have always carried it, and readers expect it.
  rom_ZDBHeaderParser(rfm_Database& db, rom_ZDBHeaderParser const& other);

  void WriteHeader(rfm_Database& db);
  void WriteTSHeader(rfm_TaggedStream const& ts) const;
  // Records releaseType (a negative one keeps the present one) in the
  // header of a writable database of the tagged-stream form.
  void RewriteHeader(rfm_Database& db, int releaseType);
  // Whether the file holds classes older (kHoldsOlderClasses) or newer
  // (kHoldsNewerClasses) than registrar's; maxVersion, if given, gets the
  // highest stored version of a class registrar knows.
  unsigned int GetUpToDateStatus(cls_ClassRegistrar const& registrar, int* maxVersion);

  HeaderType GetHeaderType() const { return m_HeaderType; }
  int Version() const { return m_Version; }
  int MajorVersion() const { return m_MajorVersion; }
  int MinorVersion() const { return m_MinorVersion; }
  int UpdateVersion() const { return m_UpdateVersion; }
  int ReleaseType() const { return m_ReleaseType; }
  rfm_Table const& Catalog() const { return m_Catalog; }

private:
  void ReadTaggedStream(rfm_Database& db, rfm_Handle root);

  HeaderType m_HeaderType;
  int m_Version;
  int m_MajorVersion;
  int m_MinorVersion;
  int m_UpdateVersion;
  int m_ReleaseType;
  rfm_Table m_Catalog;
};

#endif
