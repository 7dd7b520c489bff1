#include "rom_UtlDatabaseRfm.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_PTrieIter.h"
#include "rom_CatalogFieldHandle.h"
#include "rom_HeaderLayout.h"
#include "rom_TransporterMetadata.h"

#include <ctime>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_UtlDatabaseRfm";

char const kUnknownClass[] = "rom_UtlDatabaseRfm::Table - The class catalogue of %s has no class %08X.";
char const kNoClassId[] = "rom_UtlDatabaseRfm - Row %d of the class catalogue of %s names no class. The database is "
                          "corrupt.";

// The catalogue's fields that a new catalogue row takes over as they are;
// the class table's handle is the new table's.
rom_CatalogField const kCopiedCatalogFields[] = {kRomCatalogClassName, kRomCatalogBaseClassId,
                                                 kRomCatalogClassVersion};
}  // namespace

rom_UtlDatabaseRfm::rom_UtlDatabaseRfm(rfm_File const& file, int index)
    : rom_UtlDatabase(index), m_Database(rfm_Database::Open(file, cow_String())), m_Header(m_Database) {
  rom_TransporterMetadata::Instance().Bind(m_Database);
  ReadCatalog();
}

rom_UtlDatabaseRfm::rom_UtlDatabaseRfm(rfm_File const& file, cow_String const& magic,
                                       rom_UtlDatabaseRfm const& model, int index)
    : rom_UtlDatabase(index),
      m_Database(
          rfm_Database::Create(file, magic, model.Database().Description(), static_cast<long>(std::time(nullptr)))),
      m_Header(m_Database, model.m_Header) {
  rom_TransporterMetadata::Instance().Bind(m_Database);
  TransferMetadata(model);
}

void rom_UtlDatabaseRfm::ReadCatalog() {
  rfm_Table const& catalog = m_Header.Catalog();
  rfm_FieldHandle const classId = rom_CatalogFieldHandle(kRomCatalogClassId);
  rfm_FieldHandle const classTable = rom_CatalogFieldHandle(kRomCatalogClassTable);
  rfm_FieldHandle const baseClassId = rom_CatalogFieldHandle(kRomCatalogBaseClassId);
  for (int number = 0; catalog.RowExists(number); ++number) {
    rfm_Row const row = catalog.ReadRow(number);
    if (!row.DataIsPresent(classId) || !row.DataIsPresent(classTable))
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(kNoClassId), number, m_Database.FileName()));
    auto const cid = static_cast<unsigned int>(row.ReadFieldInt(classId));
    // The first row of a class id is the class's, as the transporter takes it.
    if (m_Classes.IsMember(cid)) continue;
    ClassEntry entry;
    entry.m_Table = m_Database.Table(row.ReadFieldHandle(classTable), -1, -1);
    if (row.DataIsPresent(baseClassId)) entry.m_BaseClassId = static_cast<unsigned int>(row.ReadFieldInt(baseClassId));
    m_Classes.Insert(cid, entry);
  }
}

void rom_UtlDatabaseRfm::TransferMetadata(rom_UtlDatabaseRfm const& model) {
  rfm_Table const& from = model.m_Header.Catalog();
  rfm_Table const& to = m_Header.Catalog();
  rfm_FieldHandle const classId = rom_CatalogFieldHandle(kRomCatalogClassId);
  for (int number = 0; from.RowExists(number); ++number) {
    rfm_Row const row = from.ReadRow(number);
    auto const cid = static_cast<unsigned int>(row.ReadFieldInt(classId));
    // Rows that the model's view passed over stay out: each class once.
    if (m_Classes.IsMember(cid) || !model.m_Classes.IsMember(cid)) continue;
    ClassEntry entry = model.Entry(cid);
    entry.m_Table = m_Database.Table(entry.m_Table.TableMetadata(), -1, -1);
    rfm_Row const copy = to.NewRow();
    copy.WriteFieldInt(classId, static_cast<int>(cid));
    copy.WriteFieldHandle(rom_CatalogFieldHandle(kRomCatalogClassTable), entry.m_Table.Handle());
    for (rom_CatalogField field : kCopiedCatalogFields) {
      rfm_FieldHandle const handle = rom_CatalogFieldHandle(field);
      if (row.DataIsPresent(handle)) copy.CopyField(row, handle);
    }
    m_Classes.Insert(cid, entry);
  }
}

rom_UtlDatabaseRfm::ClassEntry const& rom_UtlDatabaseRfm::Entry(unsigned int cid) const {
  auto const* leaf = m_Classes.ConstGetPtr(cid);
  if (leaf == nullptr)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kUnknownClass), m_Database.FileName(), cid));
  return leaf->Value();
}

unsigned int rom_UtlDatabaseRfm::BaseClassID(unsigned int cid) const { return Entry(cid).m_BaseClassId; }

rfm_Table rom_UtlDatabaseRfm::Table(unsigned int cid) const { return Entry(cid).m_Table; }

rfm_Table rom_UtlDatabaseRfm::Table(rfm_Handle handle) const { return m_Database.Table(handle, -1, -1); }

void rom_UtlDatabaseRfm::Flush() const {
  if (m_Database.ReadOnly()) return;
  for (cls_PTrieIter<unsigned int, ClassEntry, 1> it(m_Classes); !it.IsDone(); it.Next())
    it.CurrentValue().m_Table.Flush();
  m_Header.Catalog().Flush();
  m_Database.Flush();
}
