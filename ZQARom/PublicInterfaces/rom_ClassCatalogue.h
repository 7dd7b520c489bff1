#ifndef rom_ClassCatalogue_h
#define rom_ClassCatalogue_h

#include "ZQABasExport.h"
#include "cow_String.h"
#include "rfm_Database.h"
#include "rfm_Handle.h"
#include "rfm_TableMetadata.h"

#include <vector>

// The object layer's classes as a database file holds them, read without
// the program's class metadata: what a browser of files lists. A file
// without the object header holds none. Each class appears once, as the
// first catalogue row of its id gives it (as a transporter takes it).
//
// It opens each class's table by its handle, which fixes the numbering of
// the table's fields to the file's own: on the database of a transporter,
// read it after the transporter has opened the classes it reads.
class ZQA_EXPORT rom_ClassCatalogue {
public:
  struct Class {
    unsigned int m_ClassId = 0;
    cow_String m_Name;
    // Old files' catalogues may record no version: then -1.
    int m_Version = -1;
    // kNoBaseClass for a root class.
    unsigned int m_BaseClassId = 0;
    rfm_Handle m_Table;
    int m_Rows = 0;
  };
  // The columns of one reference member of a class's table: the row and
  // the class id of the object it names.
  struct Reference {
    cow_String m_Member;
    cow_String m_OidField;
    cow_String m_ClassIdField;
  };
  static unsigned int const kNoBaseClass;
  // The class id of a stored null reference; any negative object id is
  // null too.
  static unsigned int const kNullClass;

  // Raises, naming the file, when the header or a catalogue row is damaged.
  explicit rom_ClassCatalogue(rfm_Database const& database);

  bool HasObjectLayer() const { return m_HasObjectLayer; }
  std::vector<Class> const& Classes() const { return m_Classes; }
  // The class of id classId, or null.
  Class const* Find(unsigned int classId) const;

  // The reference members of a class's table, in the order of its fields'
  // names: each is a pair of int fields, the member's name with the object
  // id's suffix and with the class id's.
  static std::vector<Reference> References(rfm_TableMetadata const& table);

private:
  bool m_HasObjectLayer = false;
  std::vector<Class> m_Classes;
};

#endif
