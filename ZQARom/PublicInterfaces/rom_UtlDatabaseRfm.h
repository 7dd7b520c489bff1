#ifndef rom_UtlDatabaseRfm_h
#define rom_UtlDatabaseRfm_h

#include "ZQABasExport.h"
#include "cls_AttributeType.h"
#include "cls_PTrie.h"
#include "rfm_File.h"
#include "rom_UtlDatabase.h"
#include "rom_ZDBHeaderParser.h"

// The copy's view of a database opened without a transporter, which needs
// no class metadata of the program: the object header at the root leads to
// the class catalogue (##Catalog), whose rows give each class id its table
// and its base class. It can also make a new database holding the header
// and the empty class tables of another, ready to be copied into.
//
// Its index is chosen by its maker, kDefaultIndex unless told otherwise:
// kDefaultIndex differs from a transporter's view (rom_UtlDatabaseRom),
// and a copy that takes from several plain files gives each its own.
//
// Invariant: m_Classes holds, for each class id of the catalogue (the first
// row of a class id that two rows hold), its open table and base class.
class ZQA_EXPORT rom_UtlDatabaseRfm : public rom_UtlDatabase {
public:
  static constexpr int kDefaultIndex = 0;

  // The database in file, of any application's magic. Only the classes of
  // its catalogue have tables: a copy into it takes objects of those alone.
  explicit rom_UtlDatabaseRfm(rfm_File const& file, int index = kDefaultIndex);
  // A new database in file, which must be new and writable, with magic and
  // model's description: model's header, and for each class of model's
  // catalogue, in its order, a catalogue row and an empty table of the same
  // layout.
  rom_UtlDatabaseRfm(rfm_File const& file, cow_String const& magic, rom_UtlDatabaseRfm const& model,
                     int index = kDefaultIndex);

  rfm_Database const& Database() const override { return m_Database; }
  unsigned int BaseClassID(unsigned int cid) const override;
  rfm_Table Table(unsigned int cid) const override;
  rfm_Table Table(rfm_Handle handle) const override;

  // Flushes the class tables, the catalogue and the database.
  void Flush() const;

private:
  struct ClassEntry {
    rfm_Table m_Table;
    unsigned int m_BaseClassId = cls_kNoClass;
  };

  ClassEntry const& Entry(unsigned int cid) const;
  void ReadCatalog();
  void TransferMetadata(rom_UtlDatabaseRfm const& model);

  rfm_Database m_Database;
  rom_ZDBHeaderParser m_Header;
  cls_PTrie<unsigned int, ClassEntry, 1> m_Classes;
};

#endif
