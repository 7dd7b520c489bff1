#include "rom_Transporter.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "cls_ExtQuant.h"
#include "rfm_ReaderSemaphoreProxy.h"
#include "rfm_Row.h"
#include "rom_CatalogFieldHandle.h"
#include "rom_HeaderLayout.h"
#include "rom_TransporterMetadata.h"
#include "rom_ZDBHeaderParser.h"
#include "typ_ArchCompTable.h"

#include <cstdio>
#include <exception>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_Transporter";

// Deeper than any real hierarchy: a chain of base classes this long has a
// circle.
constexpr int kMaxBaseClassDepth = 1024;

struct InternalClass {
  char const* name;
  unsigned int classId;
  cls_AttributeType target;
};

// The classes whose rows hold anonymous collections, each with the one
// attribute Target.
constexpr InternalClass kInternalClasses[] = {
    {kRomInternalListName, kRomInternalListClass, cls_AttrList},
    {kRomInternalMapName, kRomInternalMapClass, cls_AttrMap},
    {kRomInternalBlobName, kRomInternalBlobClass, cls_AttrBlob},
    {kRomInternalCowName, kRomInternalCowClass, cls_AttrInternalCow},
    {kRomInternalDblColName, kRomInternalDblColClass, cls_AttrDoubleCollection},
};
constexpr int kTargetFieldId = 1;
}  // namespace

rom_Transporter::rom_Transporter(cls_ClassRegistrar const& registrar, rfm_File const& file, cow_String const& magic,
                                 cow_String const& description, long creationTime, int releaseType)
    : m_Registrar(&registrar),
      m_Database(rfm_Database::Create(file, magic, description, creationTime)),
      m_FileName(file.FileName()) {
  InitNew(releaseType);
}

rom_Transporter::rom_Transporter(cls_ClassRegistrar const& registrar, rfm_File const& file, cow_String const& magic,
                                 int releaseType)
    : m_Registrar(&registrar), m_Database(rfm_Database::Open(file, magic)), m_FileName(file.FileName()) {
  InitExsisting(releaseType);
}

rom_Transporter::~rom_Transporter() {
  // A container that stays in the ring after Disconnect would be asked
  // again for ever: cls_PC's own Disconnect leaves it.
  while (m_PCRing.IsLinked()) m_PCRing.Next()->Disconnect();
  // Cached objects end while their class metadata and the database exist.
  m_CowBarn.Clear();
  m_ClassBags.Clear();
  m_ClassHandles.Clear();
  // A destructor cannot raise: a failure is told on standard error, unless
  // an exception already on its way tells the caller.
  try {
    m_Database.Flush();
  } catch (std::exception const& e) {
    if (std::uncaught_exceptions() == 0) std::fprintf(stderr, "%s\n", e.what());
  }
}

void rom_Transporter::InitializeInternalTables() {
  int const quantum = cls_ExtQuant::Instance().ExtentQuantumConstMedium();
  for (InternalClass const& internal : kInternalClasses)
    m_InternalRegistrar.CreateClassMD(internal.name, internal.classId, 1, nullptr, cls_kNoClass)
        .AddAttribute(cls_FieldHandle(kTargetFieldId, kRomTargetName), internal.target, cls_kNoClass, cls_CollNone)
        .AddTableExtentQuantum(quantum);
}

void rom_Transporter::TakeHeader(rom_ZDBHeaderParser const& header) {
  m_Catalog = header.Catalog();
  m_MajorVersion = header.MajorVersion();
  m_MinorVersion = header.MinorVersion();
  m_UpdateVersion = header.UpdateVersion();
  m_ReleaseType = header.ReleaseType();
}

void rom_Transporter::InitNew(int releaseType) {
  rom_TransporterMetadata::Instance().Bind(m_Database);
  InitializeInternalTables();
  rom_ZDBHeaderParser const header(m_Database, rom_ZDBHeaderParser::HeaderTypeTaggedStream, releaseType);
  TakeHeader(header);
  m_Database.Flush();
}

void rom_Transporter::InitExsisting(int releaseType) {
  rom_TransporterMetadata::Instance().Bind(m_Database);
  InitializeInternalTables();
  rom_ZDBHeaderParser header(m_Database);
  if (releaseType >= 0) header.RewriteHeader(m_Database, releaseType);
  TakeHeader(header);
  ReadNewCatalogRows();
}

// Reads the catalogue's rows not read yet: at opening, every row; after a
// Snap, the rows of the classes a writer added since. Counted, not taken
// from the table's position, which any reader of the catalogue moves.
void rom_Transporter::ReadNewCatalogRows() {
  rfm_FieldHandle const classId = rom_CatalogFieldHandle(kRomCatalogClassId);
  rfm_FieldHandle const classTable = rom_CatalogFieldHandle(kRomCatalogClassTable);
  rfm_FieldHandle const className = rom_CatalogFieldHandle(kRomCatalogClassName);
  rfm_FieldHandle const classVersion = rom_CatalogFieldHandle(kRomCatalogClassVersion);
  for (; m_Catalog.RowExists(m_CatalogRowsRead); ++m_CatalogRowsRead) {
    rfm_Row const row = m_Catalog.ReadRow(m_CatalogRowsRead);
    m_ClassHandles.Insert(static_cast<unsigned int>(row.ReadFieldInt(classId)), row.ReadFieldHandle(classTable));
    if (rom_CatalogRowHasVersion(row, classVersion))
      m_Database.InsertInMapClassName2ClassVersion(row.ReadFieldString(className), row.ReadFieldInt(classVersion));
  }
}

void rom_Transporter::FillMapClassName2ClassVersion(int defaultVersion) {
  rfm_FieldHandle const classId = rom_CatalogFieldHandle(kRomCatalogClassId);
  rfm_FieldHandle const classTable = rom_CatalogFieldHandle(kRomCatalogClassTable);
  rfm_FieldHandle const className = rom_CatalogFieldHandle(kRomCatalogClassName);
  rfm_FieldHandle const baseClassId = rom_CatalogFieldHandle(kRomCatalogBaseClassId);
  rfm_FieldHandle const classVersion = rom_CatalogFieldHandle(kRomCatalogClassVersion);
  // Files of the format before class versions give their enumerations
  // version 1 and every other class the caller's default.
  static char const kEnumerationClass[] = "omu_PrimEnum";
  for (int i = 0; m_Catalog.RowExists(i); ++i) {
    rfm_Row const row = m_Catalog.ReadRow(i);
    int const id = row.ReadFieldInt(classId);
    m_ClassHandles.Insert(static_cast<unsigned int>(id), row.ReadFieldHandle(classTable));
    cow_String const name = row.ReadFieldString(className);
    if (rom_CatalogRowHasVersion(row, classVersion)) {
      m_Database.InsertInMapClassName2ClassVersion(name, row.ReadFieldInt(classVersion));
      continue;
    }
    m_Database.InsertInMapClassName2ClassVersion(name, name == kEnumerationClass ? 1 : defaultVersion);
    m_MapClassID2ParentID.Insert(id, row.ReadFieldInt(baseClassId));
  }
}

void rom_Transporter::RegisterPC(cls_PC* container) { container->Link(&m_PCRing); }

rom_PtrBarn* rom_Transporter::SetPtrBarn(rom_PtrBarn* barn) {
  rom_PtrBarn* const previous = m_PtrBarn;
  m_PtrBarn = barn;
  return previous;
}

rom_WriteRecord* rom_Transporter::SetWriteRecord(rom_WriteRecord* record) {
  rom_WriteRecord* const previous = m_WriteRecord;
  m_WriteRecord = record;
  return previous;
}

void rom_Transporter::FlushPCs() {
  for (cls_PC* container = m_PCRing.Next(); container != &m_PCRing; container = container->Next()) container->Flush();
}

void rom_Transporter::ForEachClassTable(int (rfm_Table::*action)() const) const {
  for (cls_PTrieIter<unsigned int, cow_CountedHld<rom_ClassBag>, 1> it(m_ClassBags); !it.IsDone(); it.Next())
    if (it.CurrentValue().GetRef().HasTable()) (it.CurrentValue().GetRef().Table().*action)();
}

void rom_Transporter::Flush() {
  if (m_Database.ReadOnly()) return;
  rfm_ReaderSemaphoreProxy const readers(m_Database);
  FlushPCs();
  ForEachClassTable(&rfm_Table::Flush);
  m_Catalog.Flush();
  m_Database.Flush();
}

void rom_Transporter::FlushDatabase() {
  if (m_Database.ReadOnly()) return;
  rfm_ReaderSemaphoreProxy const readers(m_Database);
  m_Catalog.Flush();
  m_Database.Flush();
}

int rom_Transporter::Snap() {
  if (!m_Database.Snap()) return 0;
  ForEachClassTable(&rfm_Table::Snap);
  m_Catalog.Snap();
  if (m_Database.ReadOnly()) ReadNewCatalogRows();
  return 1;
}

cls_ClassMetadata const& rom_Transporter::GetClassMD(unsigned int cid) const {
  if (m_InternalRegistrar.ClassIsPresent(cid)) return m_InternalRegistrar.ConstGet(cid);
  return m_Registrar->ConstGet(cid);
}

cls_ClassMetadata const& rom_Transporter::GetClassMD(unsigned int cid, int version) const {
  if (m_InternalRegistrar.ClassIsPresent(cid)) return m_InternalRegistrar.ConstGet(cid);
  return m_Registrar->GetClassMetadata(cid, version);
}

unsigned int rom_Transporter::BaseClassOf(unsigned int cid, int& steps) const {
  if (++steps > kMaxBaseClassDepth)
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("rom_Transporter - The base classes of class %s (%08X) form a "
                                                        "circle in the program's class metadata."),
                                          typ_ArchCompTable::GetName(cid), cid));
  return GetClassMD(cid).BaseClassId();
}

cls_ClassMetadata const& rom_Transporter::FindMDWithDtor(unsigned int cid) const {
  cls_ClassMetadata const* md = &GetClassMD(cid);
  int steps = 0;
  while (!md->HasCowDtor()) {
    if (md->BaseClassId() == cls_kNoClass)
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate("Warning: objectCOW dtor not defined in ddbAPI metadata "
                                                          "for: %s\n"),
                                            md->ClassName()));
    md = &GetClassMD(BaseClassOf(md->ClassId(), steps));
  }
  return *md;
}

int rom_Transporter::GetTableSize(unsigned int cid) {
  rom_ClassBag const& bag = GetClassBagForRead(cid);
  return bag.HasTable() ? bag.Table().Length() : 0;
}
