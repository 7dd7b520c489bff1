#include "rom_ZDBHeaderParser.h"

#include "ZQABasAssert.h"
#include "ZQABasUtlVersion.h"
#include "atr_translate.h"
#include "cls_ClassRegistrar.h"
#include "rfm_Database.h"
#include "rfm_ObjectMagic.h"
#include "rfm_Row.h"
#include "rfm_Space.h"
#include "rfm_TaggedStream.h"
#include "rom_CatalogFieldHandle.h"
#include "rom_HeaderLayout.h"
#include "rom_TransporterMetadata.h"

#include <cstdint>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_ZDBHeaderParser";

// The version a catalogue row without a Class Version stands for: the
// files of the format before versions were recorded.
constexpr int kUnversionedClassVersion = 203;
// A class unknown to the program is older than it below this version and
// newer above, by the history of the format.
constexpr int kUnknownClassVersionThreshold = 1651;

[[noreturn]] void Corrupt(int line, char const* text) { nex_ThrowMessage(kSourcePath, line, atr_translate(text)); }

}  // namespace

rom_ZDBHeaderParser::rom_ZDBHeaderParser(rfm_Database& db)
    : m_HeaderType(static_cast<HeaderType>(0)),
      m_Version(0),
      m_MajorVersion(0),
      m_MinorVersion(0),
      m_UpdateVersion(0),
      m_ReleaseType(-1) {
  rfm_Handle const root = db.RootTableHandle();
  rfm_Space const rootSpace = db.Space(root, -1);
  auto const firstWord = static_cast<std::uint32_t>(rootSpace.ReadInt());
  rom_TransporterMetadata::Instance().BindCatalog(db);
  switch (firstWord) {
    case kRfmTaggedStreamMagic:
      m_HeaderType = HeaderTypeTaggedStream;
      ReadTaggedStream(db, root);
      break;
    case kRfmTableMagic:
      m_HeaderType = HeaderTypeTable;
      m_Catalog = db.Table(root, -1, -1);
      break;
    case kRomVersionSpaceMagic: {
      m_HeaderType = HeaderTypeVersionSpace;
      rootSpace.Seek(kRomVersionSpaceVersionOffset);
      m_Version = rootSpace.ReadInt();
      m_Catalog = db.Table(db.RootTableHandle2(), -1, -1);
      break;
    }
    default:
      Corrupt(__LINE__, "ZDB file is corrupt:  Root object must be either a table, tagged stream, or version space.");
  }
  if (m_Catalog.IsNull()) Corrupt(__LINE__, "ZDB file is corrupt:  No catalog table found in file header.");
}

void rom_ZDBHeaderParser::ReadTaggedStream(rfm_Database& db, rfm_Handle root) {
  rfm_TaggedStream const ts = db.TaggedStream(root, 0);
  while (ts.Next()) {
    int* field = nullptr;
    switch (ts.GetID()) {
      case kRomTagCatalog:
        ZQA_ASSERT(kSourcePath, ts.GetType() == rfm_TypeHandle);
        m_Catalog = db.Table(ts.GetHandle(), -1, -1);
        continue;
      case kRomTagVersion:
        field = &m_Version;
        break;
      case kRomTagMajorVersion:
        field = &m_MajorVersion;
        break;
      case kRomTagMinorVersion:
        field = &m_MinorVersion;
        break;
      case kRomTagUpdateVersion:
        field = &m_UpdateVersion;
        break;
      case kRomTagReleaseType:
        field = &m_ReleaseType;
        break;
      default:
        continue;  // an item of a later release
    }
    ZQA_ASSERT(kSourcePath, ts.GetType() == rfm_TypeInt);
    *field = ts.GetInt();
  }
}

rom_ZDBHeaderParser::rom_ZDBHeaderParser(rfm_Database& db, HeaderType type, int releaseType)
    : m_HeaderType(type), m_Version(kRomHeaderVersion) {
  ZQABasUtlVersion const& version = ZQABasUtlVersion::Instance();
  m_MajorVersion = version.MajorVersion();
  m_MinorVersion = version.MinorVersion();
  m_UpdateVersion = version.UpdateVersion();
  m_ReleaseType = releaseType < 0 ? version.ReleaseType() : releaseType;
  WriteHeader(db);
}

rom_ZDBHeaderParser::rom_ZDBHeaderParser(rfm_Database& db, rom_ZDBHeaderParser const& other)
    : m_HeaderType(other.m_HeaderType),
      m_Version(other.m_HeaderType),
      m_MajorVersion(other.m_MajorVersion),
      m_MinorVersion(other.m_MinorVersion),
      m_UpdateVersion(other.m_UpdateVersion),
      m_ReleaseType(other.m_ReleaseType) {
  WriteHeader(db);
}

void rom_ZDBHeaderParser::WriteHeader(rfm_Database& db) {
  rom_TransporterMetadata::Instance().BindCatalog(db);
  switch (m_HeaderType) {
    case HeaderTypeTaggedStream: {
      // The stream is the first object made: it becomes the root.
      rfm_TaggedStream const ts = db.TaggedStream(0);
      m_Catalog = db.Table(kRomCatalogName, -1, -1);
      WriteTSHeader(ts);
      break;
    }
    case HeaderTypeTable:
      m_Catalog = db.Table(kRomCatalogName, -1, -1);
      break;
    case HeaderTypeVersionSpace: {
      rfm_Space const space = db.Space(-1);
      space.WriteInt(static_cast<int>(kRomVersionSpaceMagic));
      space.WriteInt(m_Version);
      m_Catalog = db.Table(kRomCatalogName, -1, -1);
      break;
    }
    default:
      ZQA_ASSERT(kSourcePath, !"Bad header type.");
  }
}

void rom_ZDBHeaderParser::WriteTSHeader(rfm_TaggedStream const& ts) const {
  if (!m_Catalog.IsNull()) ts.WriteHandle(kRomTagCatalog, m_Catalog.Handle());
  int const fields[] = {m_Version, m_MajorVersion, m_MinorVersion, m_UpdateVersion};
  int const tags[] = {kRomTagVersion, kRomTagMajorVersion, kRomTagMinorVersion, kRomTagUpdateVersion};
  for (int i = 0; i < 4; ++i)
    if (fields[i] != 0) ts.WriteInt(tags[i], fields[i]);
  if (m_ReleaseType >= 0) ts.WriteInt(kRomTagReleaseType, m_ReleaseType);
}

void rom_ZDBHeaderParser::RewriteHeader(rfm_Database& db, int releaseType) {
  if (db.ReadOnly()) Corrupt(__LINE__, "ZDB file is corrupt:  Release type can't be changed in read-only database.");
  if (m_HeaderType != HeaderTypeTaggedStream)
    Corrupt(__LINE__, "ZDB file is corrupt:  Release type can't be changed in old format database.");
  if (releaseType >= 0) m_ReleaseType = releaseType;
  WriteTSHeader(db.TaggedStream(db.RootTableHandle(), 0));
}

unsigned int rom_ZDBHeaderParser::GetUpToDateStatus(cls_ClassRegistrar const& registrar, int* maxVersion) {
  int const position = m_Catalog.Length() > 0 ? m_Catalog.Location() : -1;
  m_Catalog.Seek(0);
  if (maxVersion != nullptr) *maxVersion = 0;
  unsigned int status = 0;
  rfm_FieldHandle const classId = rom_CatalogFieldHandle(kRomCatalogClassId);
  rfm_FieldHandle const classVersion = rom_CatalogFieldHandle(kRomCatalogClassVersion);
  while (m_Catalog.RowExists(-1)) {
    rfm_Row const row = m_Catalog.ReadRow(-1);
    auto const id = static_cast<unsigned int>(row.ReadFieldInt(classId));
    if (rom_IsInternalClass(id)) continue;
    int const version = rom_CatalogRowHasVersion(row, classVersion) ? row.ReadFieldInt(classVersion) : kUnversionedClassVersion;
    if (registrar.ClassIsPresent(id)) {
      if (maxVersion != nullptr && version > *maxVersion) *maxVersion = version;
      int const known = registrar.GetLastClassVersionNumber(id);
      if (known > version) status |= kHoldsOlderClasses;
      if (known < version) status |= kHoldsNewerClasses;
    } else {
      if (version > kUnknownClassVersionThreshold) status |= kHoldsNewerClasses;
      if (version < kUnknownClassVersionThreshold) status |= kHoldsOlderClasses;
    }
  }
  if (position >= 0) m_Catalog.Seek(position);
  return status;
}
