#include "zdb_ObjectHeader.h"

#include "rfm_ObjectMagic.h"
#include "rfm_Space.h"
#include "rfm_TaggedStream.h"
#include "zdb_DumpSink.h"
#include "zdb_TableFinder.h"
#include "zdb_Text.h"

#include <cstdint>
#include <exception>

namespace {

// The root's first word, which tells the header's form.
constexpr int kWordSize = 4;

}  // namespace

zdb_ObjectHeader::zdb_ObjectHeader(rfm_Database const& database, zdb_TableFinder const& finder)
    : m_Root(database.RootTableHandle().Value()), m_Subject("object header (handle " + std::to_string(m_Root) + ")") {
  if (!database.HasTable(kRomCatalogName)) return;
  m_Form = kUnknownForm;
  if (!finder.IsObject(m_Root)) {
    Problem("there is no object at the root, though the file has a " + zdb_QuotedText(kRomCatalogName) + " table");
    return;
  }
  rfm_Space root;
  std::uint32_t word = 0;
  try {
    root = database.Space(rfm_Handle(m_Root), -1);
    if (root.Length() < kWordSize) {
      Problem("the root holds " + std::to_string(root.Length()) + " bytes, too few for a first word");
      return;
    }
    root.Seek(0);
    word = static_cast<std::uint32_t>(root.ReadInt());
  } catch (std::exception const& e) {
    Problem(std::string("the root cannot be read: ") + e.what());
    return;
  }
  switch (word) {
    case kRfmTaggedStreamMagic:
      m_Form = kTaggedStreamForm;
      ReadStream(database);
      break;
    case kRfmTableMagic:
      m_Form = kTableForm;
      m_CatalogueHandle = m_Root;
      break;
    case kRomVersionSpaceMagic:
      m_Form = kVersionSpaceForm;
      ReadVersionSpace(root);
      m_CatalogueHandle = database.RootTableHandle2().Value();
      break;
    default:
      Problem("its first word " + zdb_HexWord(word) + " begins no header: not " + zdb_HexWord(kRfmTaggedStreamMagic) +
              " (tagged stream), " + zdb_HexWord(kRfmTableMagic) + " (table) nor " +
              zdb_HexWord(kRomVersionSpaceMagic) + " (version space)");
      return;
  }
  FindCatalogue(finder);
}

char const* zdb_ObjectHeader::FormName(Form form) {
  switch (form) {
    case kTaggedStreamForm:
      return "tagged stream";
    case kTableForm:
      return "table";
    case kVersionSpaceForm:
      return "version space";
    default:
      return "unknown";
  }
}

char const* zdb_ObjectHeader::ItemName(int tag) {
  switch (tag) {
    case kRomTagCatalog:
      return "catalogue";
    case kRomTagVersion:
      return "header version";
    case kRomTagMajorVersion:
      return "major version";
    case kRomTagMinorVersion:
      return "minor version";
    case kRomTagUpdateVersion:
      return "update version";
    case kRomTagReleaseType:
      return "release type";
    default:
      return "unknown";
  }
}

void zdb_ObjectHeader::ReadStream(rfm_Database const& database) {
  bool catalogueItem = false;
  try {
    rfm_TaggedStream stream = database.TaggedStream(rfm_Handle(m_Root), 0);
    while (stream.Next()) {
      int tag = stream.GetID();
      // Tags past the release type are left for later releases to use.
      if (tag < kRomTagCatalog || tag > kRomTagReleaseType) continue;
      if (tag == kRomTagCatalog) catalogueItem = true;
      int expected = tag == kRomTagCatalog ? rfm_TypeHandle : rfm_TypeInt;
      if (stream.GetType() != expected) {
        Problem("item " + std::to_string(tag) + " (" + ItemName(tag) + ") is " +
                zdb_WithArticle(zdb_TagName(stream.GetType())) + ", not " + zdb_WithArticle(zdb_TagName(expected)));
      } else if (tag == kRomTagCatalog) {
        m_CatalogueHandle = stream.GetHandle().Value();
      } else {
        m_Items[static_cast<std::size_t>(tag)] = stream.GetInt();
      }
    }
  } catch (std::exception const& e) {
    Problem(std::string("the stream cannot be read: ") + e.what());
  }
  if (!catalogueItem) Problem("no item " + std::to_string(kRomTagCatalog) + " names the catalogue");
}

void zdb_ObjectHeader::ReadVersionSpace(rfm_Space const& root) {
  try {
    if (root.Length() < kRomVersionSpaceSize) {
      Problem("the version space holds " + std::to_string(root.Length()) + " bytes, too few for a version");
      return;
    }
    root.Seek(kRomVersionSpaceVersionOffset);
    m_Items[kRomTagVersion] = root.ReadInt();
  } catch (std::exception const& e) {
    Problem(std::string("the version space cannot be read: ") + e.what());
  }
}

void zdb_ObjectHeader::FindCatalogue(zdb_TableFinder const& finder) {
  if (!m_CatalogueHandle) return;
  std::string why;
  m_Catalogue = finder.Find(*m_CatalogueHandle, why);
  if (m_Catalogue.IsNull()) Problem("its catalogue handle " + std::to_string(*m_CatalogueHandle) + " " + why);
}
