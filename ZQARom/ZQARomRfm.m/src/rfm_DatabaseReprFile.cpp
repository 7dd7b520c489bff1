#include "rfm_DatabaseReprFile.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_ArrayRepr.h"
#include "rfm_Block0.h"
#include "rfm_DBMetadata.h"
#include "rfm_DestructorFlush.h"
#include "rfm_FileException.h"
#include "rfm_GroupLayout.h"
#include "rfm_HandleConverter.h"
#include "rfm_LinkageRules.h"
#include "rfm_ObjectMagic.h"
#include "rfm_OffsetConverter.h"
#include "rfm_SpaceReprFile.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_DatabaseReprFile";

[[noreturn]] void Raise(int line, atr_String const& text) { nex_ThrowMessage(kSourcePath, line, text); }

// How often a reader reads the groups for one Snap, and for an Open, before
// it takes them to be moving under a writer's flush.
constexpr int kSnapReadings = 4;
constexpr int kOpenReadings = 64;

// The application magic as stored: at most its first four characters.
cow_String ApplicationMagic(cow_String const& magic) { return magic.Substr(0, kRfmApplicationMagicSize); }

// Reads block 0's magic into a zeroed buffer of 9 bytes.
void ReadMagic(rfm_FileRepr& file, char (&magic)[kRfmMagicSize + 1]) {
  std::memset(magic, 0, sizeof magic);
  file.Seek(kRfmMagicOffset);
  file.Read(magic, kRfmMagicSize);
}

bool StartsWith(char const* text, char const* prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

// Whether the application magic after "ZKRR" is exactly the wanted one; an
// empty wanted magic accepts any.
bool ApplicationMagicMatches(char const (&stored)[kRfmMagicSize + 1], cow_String const& wanted) {
  if (wanted.Empty()) return true;
  cow_String expected = ApplicationMagic(wanted);
  char const* application = stored + std::strlen(kRfmDatabaseMagic);
  return expected == application;
}

}  // namespace

rfm_DatabaseRepr::~rfm_DatabaseRepr() = default;

cow_String rfm_DatabaseRepr::GetObjectLocationReport(utl_FileOffset const&) const {
  return atr_translate("Object location report not supported for this rfm database type.");
}

rfm_TableMetadata const* rfm_DatabaseRepr::GetTableMetadata(cow_String const& name) const {
  return m_Metadata->FindTableMetadata(name);
}

rfm_TableMetadata const* rfm_DatabaseRepr::GetTableMetadata(utl_FileOffset const& handle) const {
  return m_Metadata->FindTableMetadata(handle);
}

utl_FileOffset rfm_DatabaseRepr::GetTableMetadataHandle(cow_String const& name) const {
  return m_Metadata->FindTableMetadataHandle(name);
}

cow_List<cow_String> rfm_DatabaseRepr::GetTableMetadataNames() const { return m_Metadata->GetTableMetadataNames(); }

bool rfm_DatabaseRepr::HasTable(cow_String const& name) const { return m_Metadata->HasTable(name); }

void rfm_DatabaseRepr::Bind() { m_Metadata->Bind(); }

rfm_TableMetadata* rfm_DatabaseRepr::BindTableMetadata(utl_FileOffset handle) { return m_Metadata->BindHandle(handle); }

rfm_TableMetadata* rfm_DatabaseRepr::Bind(rfm_TableMetadata const& definition) { return m_Metadata->Bind(definition); }

cow_Map<cow_String, int> const& rfm_DatabaseRepr::GetMapClassName2ClassVersion() const {
  return m_Metadata->GetMapClassName2ClassVersion();
}

void rfm_DatabaseRepr::InsertInMapClassName2ClassVersion(cow_String const& className, int version) {
  m_Metadata->InsertInMapClassName2ClassVersion(className, version);
}

rfm_Type rfm_DatabaseRepr::HandleType(rfm_Handle const& handle) {
  std::unique_ptr<rfm_SpaceRepr> space(Space(handle, -1));
  int words[3] = {};
  if (space->ReadIntArray(words, 3) < 3) return rfm_TypeSpace;
  switch (static_cast<std::uint32_t>(words[0])) {
    case kRfmTableMagic:
      return rfm_TypeTable;
    case kRfmTaggedStreamMagic:
      return rfm_TypeStream;
    case kRfmArrayMagic:
      // A damaged element type answers none: a value outside the enumeration cannot be one.
      return rfm_ArrayRepr::IsElementType(words[2]) ? static_cast<rfm_Type>(words[2]) : rfm_TypeNone;
    default:
      return rfm_TypeSpace;
  }
}

rfm_DatabaseReprFile::rfm_DatabaseReprFile(rfm_File const& file) : m_File(file) {}

rfm_DatabaseReprFile::~rfm_DatabaseReprFile() {
  // A failure to close leaves the file at the state of its last successful
  // flush. So does an exception on its way out (a write failed on a full
  // disk): the objects may be halfway through a change, and a flush now
  // would vouch for that half.
  if (m_Opened && std::uncaught_exceptions() == 0) rfm_FlushInDestructor([this] { Close(); });
  // The catalogue writes strings to the pool, so it goes first.
  delete m_Metadata;
  m_Metadata = nullptr;
}

void rfm_DatabaseReprFile::Close() {
  rfm_FileRepr& file = File();
  if (!ReadOnly()) {
    file.Seek(kRfmClosingWordOffset);
    file.WriteInt(0);
  }
  Flush();
  if (!ReadOnly()) {
    file.Trim();
    file.FTPCheckSet(kRfmFtpRecordOffset);
  }
}

void rfm_DatabaseReprFile::RaiseCorrupt(int line) const {
  Raise(line, atr_SubstituteFormat(
                  atr_translate("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  %s"), FileName()));
}

void rfm_DatabaseReprFile::Create(cow_String const& magic, cow_String const& description, long creationTime) {
  rfm_FileRepr& file = File();
  Extend(kRfmBlock0Size);
  char zeros[kRfmBlock0Size] = {};
  file.Write(zeros, kRfmBlock0Size);
  file.Seek(kRfmMagicOffset);
  file.WriteFixedString(cow_String(kRfmDatabaseMagic).Append(ApplicationMagic(magic)), kRfmMagicSize);
  file.WriteInt(kRfmFormatVersion);
  file.WriteFixedString(description, kRfmDescriptionSize);
  // The closing word, the transfer record and the flush count start at zero.
  for (int offset = kRfmClosingWordOffset; offset <= kRfmFlushCountOffset; offset += 4) file.WriteInt(0);
  file.WriteInt(static_cast<int>(creationTime));

  m_Scratch.reset(new char[kRfmGroupSize]);
  m_Groups.clear();
  CreateGroup();

  m_StringManager.Open(NewWellKnownSpace(kRfmStringPoolMagic));
  // Handle 2 is reserved: a space made and dropped at once.
  delete Space(-1);
  m_Metadata = new rfm_DBMetadata(NewWellKnownSpace(kRfmMetadataMagic));
  m_ReferencedTails[0] = rfm_Handle(kRfmStringPoolHandle);
  m_ReferencedTails[1] = rfm_Handle(kRfmMetadataHandle);
  m_Opened = true;
}

void rfm_DatabaseReprFile::Open(cow_String const& magic) {
  rfm_FileRepr& file = File();
  char stored[kRfmMagicSize + 1];
  ReadMagic(file, stored);
  if (StartsWith(stored, kRfmOldFormatMagic)) {
    Raise(__LINE__, atr_SubstituteFormat(
                        atr_translate("***ERROR: \"%s\"\nis an old format Zorbex database file.\ndatabase files "
                                      "generated with an Zorbex analysis \nrelease prior to 6.1-1 cannot be opened "
                                      "with \nthe current release of Zorbex/Viewer. \nPlease rerun the analysis "
                                      "using the current \nZorbex analysis release."),
                        FileName()));
  }
  if (!StartsWith(stored, kRfmDatabaseMagic)) {
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("***ERROR: \"%s\"  is not an Zorbex database file."),
                                         FileName()));
  }
  if (!ApplicationMagicMatches(stored, magic)) {
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("***ERROR: Incorrect magic number in file: \"%s\"  ."),
                                         FileName()));
  }
  // Block 0 and the first group must be there before anything is read from them.
  if (file.LengthPysical() < kRfmBlock0Size + kRfmGroupSize) RaiseCorrupt(__LINE__);
  file.Seek(kRfmVersionOffset);
  int version = file.ReadInt();
  if (version < kRfmOldestReadableVersion) {
    Raise(__LINE__, atr_SubstituteFormat(
                        atr_translate("***ERROR: Wrong Zorbex database file version, %d;  Expected version %d."),
                        version, kRfmFormatVersion));
  }
  file.Seek(kRfmFlushCountOffset);
  m_FlushCount = file.ReadInt();
  file.FTPCheckCheck(kRfmFtpRecordOffset);

  m_Scratch.reset(new char[kRfmGroupSize]);
  if (!ReadOnly()) {
    m_Groups = LoadGroupList();
  } else if (!LoadSteadyGroupList(m_Groups, kOpenReadings)) {
    RaiseCorrupt(__LINE__);
  }
  // Bytes the file claims beyond the database's end and does not store are
  // no part of it, written by no one: a damaged count in a compressed
  // file's header. Whoever copied or checked the whole file would work
  // through all of them.
  if (file.LengthLogical() > std::max(LogicalEnd(), file.LengthStored())) RaiseCorrupt(__LINE__);
  m_StringManager.Open(OpenWellKnownSpace(kRfmStringPoolHandle, kRfmStringPoolMagic,
                                         "***ERROR: String space object is not where it belongs."));
  m_Metadata = new rfm_DBMetadata(OpenWellKnownSpace(kRfmMetadataHandle, kRfmMetadataMagic,
                                                     "***ERROR: Metadata table object is not where it belongs."));
  m_Metadata->Load();
  if (!ReadOnly()) {
    m_ReferencedTails[0] = ChainEnd(rfm_Handle(kRfmStringPoolHandle));
    m_ReferencedTails[1] = ChainEnd(rfm_Handle(kRfmMetadataHandle));
  }
  m_Opened = true;
}

rfm_SpaceRepr* rfm_DatabaseReprFile::OpenWellKnownSpace(int handle, std::uint32_t magic, char const* misplacedText) {
  std::unique_ptr<rfm_SpaceRepr> space(Space(rfm_Handle(handle), -1));
  int first = 0;
  if (space->ReadIntArray(&first, 1) < 1 || static_cast<std::uint32_t>(first) != magic) {
    Raise(__LINE__, atr_translate(misplacedText));
  }
  return space.release();
}

rfm_SpaceRepr* rfm_DatabaseReprFile::NewWellKnownSpace(std::uint32_t magic) {
  std::unique_ptr<rfm_SpaceRepr> space(Space(-1));
  space->WriteInt(static_cast<int>(magic));
  return space.release();
}

bool rfm_DatabaseReprFile::IsMagic(rfm_File const& file, cow_String const& magic) {
  char stored[kRfmMagicSize + 1];
  ReadMagic(*file.Repr(), stored);
  return StartsWith(stored, kRfmDatabaseMagic) && ApplicationMagicMatches(stored, magic);
}

long rfm_DatabaseReprFile::GetCreationTime(rfm_File const& file) {
  file->Seek(kRfmVersionOffset);
  if (file->ReadInt() < kRfmFirstVersionWithCreationTime) return 0;
  file->Seek(kRfmCreationTimeOffset);
  return file->ReadInt();
}

void rfm_DatabaseReprFile::SetCreationTime(long creationTime) {
  File().Seek(kRfmCreationTimeOffset);
  File().WriteInt(static_cast<int>(creationTime));
}

cow_String rfm_DatabaseReprFile::Description() const {
  File().Seek(kRfmDescriptionOffset);
  cow_String field = File().ReadFixedString(kRfmDescriptionSize);
  // The field is zero-filled: the description is the text before the first zero.
  return field.Substr(0, static_cast<int>(std::strlen(field.CStr())));
}

rfm_Handle rfm_DatabaseReprFile::RootTableHandle() const { return rfm_Handle(kRfmRootTableHandle); }

rfm_Handle rfm_DatabaseReprFile::RootTableHandle2() const { return rfm_Handle(kRfmRootTableHandle2); }

void rfm_DatabaseReprFile::Flush() {
  // The catalogue's records bring new strings to the pool: it goes first.
  m_Metadata->Flush();
  m_StringManager.Flush();
  if (ReadOnly()) return;
  DumpGroupList();
  File().Seek(kRfmFlushCountOffset);
  File().WriteInt(++m_FlushCount);
  File().Flush();
}

// A reader shares the file with a writer that may flush at any moment, and
// nothing tells it that a flush is under way: the flush count is written
// last. A flush writes its pieces in an order in which the groups describe a
// prefix of every object at every moment (see DumpGroupList), but a reader
// reads the groups over a stretch of time, so what it reads can join pieces
// from before and after some of the writer's writes and then hold nothing
// together, or hold together and still point at strings the pool does not
// admit yet. So a reader reads the groups twice, the second time past any
// cache. Two readings that find the same bytes saw the file hold still
// between them: the first reading is a true picture of one moment, of one
// flush or of a prefix of the next, and taken whole it is consistent. When
// the bytes differ the file is moving and the reader reads again, a few
// times; Snap then keeps the old view and answers false, and the next call
// tries again. Only damage found in two equal readings is raised.
bool rfm_DatabaseReprFile::Snap() {
  if (!ReadOnly()) return false;
  if (File().ReaderSemaphore()) return false;
  int flushCount = ReadFlushCount();
  if (flushCount == m_FlushCount) return false;
  GroupList groups;
  if (!LoadSteadyGroupList(groups, kSnapReadings)) return false;
  // The picture is of the flush counted or later: a later flush's count is
  // news to the next Snap, which reads again.
  utl_FileOffset metadataLength = m_Metadata->Length();
  m_Groups = std::move(groups);
  m_FlushCount = flushCount;
  if (m_Metadata->Length() != metadataLength) m_Metadata->Load();
  return true;
}

int rfm_DatabaseReprFile::ReadFlushCount() {
  File().Seek(kRfmFlushCountOffset);
  return File().ReadInt();
}

bool rfm_DatabaseReprFile::LoadSteadyGroupList(GroupList& groups, int readings) {
  std::string previous;
  for (int reading = 0; reading < readings; ++reading) {
    std::string bytes;
    utl_FileOffset stored = 0;
    std::exception_ptr damage;
    try {
      stored = ReadGroupChain(bytes, true);
    } catch (rfm_FileException const&) {
      throw;
    } catch (nex_PrimException<atr_String, 1> const&) {
      damage = std::current_exception();
    }
    if (reading > 0 && bytes == previous) {
      if (damage) std::rethrow_exception(damage);
      groups = DecodeGroupList(bytes, stored);
      return true;
    }
    previous.swap(bytes);
  }
  return false;
}

utl_FileOffset rfm_DatabaseReprFile::LogicalEnd() const {
  utl_FileOffset end = kRfmBlock0Size;
  for (auto const& group : m_Groups) {
    end = std::max(end, group->m_Offset + kRfmGroupSize);
    for (int slot = 1; slot < group->m_Used; ++slot) {
      rfm_Linkage const& link = group->m_Linkages[slot];
      if (link.m_Allocation > 0) end = std::max(end, link.m_Location + link.m_Allocation);
    }
  }
  return end;
}

void rfm_DatabaseReprFile::Extend(utl_FileOffset delta) {
  if (File().FileExtend(delta)) File().FTPCheckSet(kRfmFtpRecordOffset);
}

void rfm_DatabaseReprFile::CreateGroup() {
  std::unique_ptr<rfm_DatabaseGroup> group(new rfm_DatabaseGroup);
  group->m_Dirty = true;
  // Every group lies as group 0 does, 1024 bytes past a page boundary, so
  // that page boundaries cut its linkages where DumpGroupList expects. The
  // bytes skipped belong to no object.
  constexpr int kPage = rfm_SpaceReprFile::kPageSize;
  utl_FileOffset end = File().LengthLogical();
  group->m_Offset = end + ((kRfmBlock0Size - end) % kPage + kPage) % kPage;
  Extend(group->m_Offset - end + kRfmGroupSize);
  m_Groups.push_back(std::move(group));
}

rfm_DatabaseReprFile::GroupList rfm_DatabaseReprFile::LoadGroupList() {
  std::string bytes;
  utl_FileOffset stored = ReadGroupChain(bytes, false);
  return DecodeGroupList(bytes, stored);
}

utl_FileOffset rfm_DatabaseReprFile::ReadGroupChain(std::string& bytes, bool afresh) {
  utl_FileOffset const stored = File().LengthStored();
  omi_Swapper order = rfm_FileOrder();
  utl_FileOffset offset = kRfmBlock0Size;
  while (offset != 0) {
    // Checked before the seek: a compressed file would make room in memory
    // for any offset within its claimed size. Only the group's start is
    // bound: a flush need not write the free slots at its end, which read as
    // zeros all the same.
    if (offset >= stored) RaiseCorrupt(__LINE__);
    if (afresh) File().ForgetCached(offset, kRfmGroupSize);
    std::size_t at = bytes.size();
    bytes.resize(at + kRfmGroupSize);
    File().Seek(offset);
    int got = File().Read(&bytes[at], kRfmGroupSize);
    bytes.resize(at + static_cast<std::size_t>(std::max(got, 0)));
    if (got != kRfmGroupSize) RaiseCorrupt(__LINE__);
    utl_FileOffset next = rfm_OffsetConverter::Internalize(order, &bytes[at] + kRfmLinkageLocation);
    // Groups only ever go to the end of the file: a next group that is not
    // further on would make the chain a loop.
    if (next != 0 && next <= offset) RaiseCorrupt(__LINE__);
    offset = next;
  }
  return stored;
}

rfm_DatabaseReprFile::GroupList rfm_DatabaseReprFile::DecodeGroupList(std::string const& bytes,
                                                                      utl_FileOffset stored) const {
  GroupList groups;
  utl_FileOffset offset = kRfmBlock0Size;
  for (std::size_t at = 0; at < bytes.size(); at += kRfmGroupSize) {
    std::unique_ptr<rfm_DatabaseGroup> group(new rfm_DatabaseGroup);
    DecodeGroup(bytes.data() + at, offset, *group);
    offset = group->m_Linkages[0].m_Location;
    groups.push_back(std::move(group));
  }
  CheckLinkages(groups, stored);
  return groups;
}

void rfm_DatabaseReprFile::DecodeGroup(char const* bytes, utl_FileOffset offset, rfm_DatabaseGroup& group) const {
  omi_Swapper order = rfm_FileOrder();
  group.m_Offset = offset;
  group.m_Dirty = false;
  group.m_Used = rfm_DatabaseGroup::kSlots;
  // What the slots hold is judged in CheckLinkages, for the slots in use only.
  for (int slot = 0; slot < rfm_DatabaseGroup::kSlots; ++slot, bytes += kRfmLinkageSize) {
    rfm_Linkage& link = group.m_Linkages[slot];
    link.m_Allocation = rfm_OffsetConverter::Internalize(order, bytes + kRfmLinkageAllocation);
    link.m_Length = rfm_OffsetConverter::Internalize(order, bytes + kRfmLinkageLength);
    link.m_Location = rfm_OffsetConverter::Internalize(order, bytes + kRfmLinkageLocation);
    link.m_Next = rfm_HandleConverter::Internalize(order, bytes + kRfmLinkageNext);
    link.m_Continues = false;
    if (slot > 0 && link.m_Location == 0 && group.m_Used == rfm_DatabaseGroup::kSlots) group.m_Used = slot;
  }
}

void rfm_DatabaseReprFile::CheckLinkages(GroupList& groups, utl_FileOffset stored) const {
  struct Range {
    utl_FileOffset m_Start;
    utl_FileOffset m_Size;
    bool operator<(Range const& other) const { return m_Start < other.m_Start; }
  };
  std::vector<Range> ranges{{0, kRfmBlock0Size}};
  std::size_t used = 0;
  for (auto const& group : groups) {
    ranges.push_back({group->m_Offset, kRfmGroupSize});
    used += static_cast<std::size_t>(group->m_Used - 1);
    for (int slot = 1; slot < group->m_Used; ++slot) {
      rfm_Linkage const& link = group->m_Linkages[slot];
      if (rfm_LinkageRules::Check(link.m_Allocation, link.m_Length, link.m_Location, link.m_Next, stored) !=
              rfm_LinkageRules::kSound ||
          !File().Stores(link.m_Location, link.m_Length)) {
        RaiseCorrupt(__LINE__);
      }
      if (link.m_Allocation > 0) ranges.push_back({link.m_Location, link.m_Allocation});
      rfm_Handle next = link.m_Next;
      if (next.IsNull()) continue;
      // A chain goes on in a slot in use, and no two chains share a linkage.
      if (next.Group() >= groups.size() || next.Slot() >= groups[next.Group()]->m_Used ||
          !rfm_LinkageRules::MayContinueAt(next)) {
        RaiseCorrupt(__LINE__);
      }
      rfm_Linkage& continued = groups[next.Group()]->m_Linkages[next.Slot()];
      if (continued.m_Continues) RaiseCorrupt(__LINE__);
      continued.m_Continues = true;
    }
  }
  // Every chain starts at a head: a linkage that no head reaches lies on a
  // loop. No walk meets a linkage twice, since none is continued twice.
  std::size_t reached = 0;
  for (std::size_t index = 0; index < groups.size(); ++index) {
    for (int slot = 1; slot < groups[index]->m_Used; ++slot) {
      if (groups[index]->m_Linkages[slot].m_Continues) continue;
      for (rfm_Handle link = rfm_Handle::Make(static_cast<int>(index), slot); !link.IsNull(); ++reached) {
        link = groups[link.Group()]->m_Linkages[link.Slot()].m_Next;
      }
    }
  }
  if (reached != used) RaiseCorrupt(__LINE__);
  // Every byte belongs to one extent at most: an extent that a flipped
  // location moved onto another's bytes is found here.
  std::sort(ranges.begin(), ranges.end());
  for (std::size_t i = 1; i < ranges.size(); ++i) {
    if (ranges[i].m_Start - ranges[i - 1].m_Start < ranges[i - 1].m_Size) RaiseCorrupt(__LINE__);
  }
}

// A writer may be killed at any moment of a flush, and there is no journal:
// whatever the groups on disk say when the writer dies is what the file
// holds. So the groups are not written whole but piece by piece, in an order
// in which every state on the way describes a prefix of every object:
//
//   1. the slots the file does not use yet (from the first without a
//      location on): nothing on disk leads to them;
//   2. changed locations: extents given to placeholders, whose lengths on
//      disk are still 0, and links to new groups, which are written by now;
//   3. the string pool's growth and then its link to a new extent, then the
//      catalogue's: rows and tables refer to their records;
//   4. the growth of every other object, over data written before the flush;
//   5. every other link to a new extent, whose linkage is written by now.
//
// Each piece is one write. A kill can still cut a write, but only at a page
// boundary. A group lies 1024 bytes past one, as group 0 does, so the
// boundaries inside it fall before slot 256, between slot 402's allocation
// and length, and inside slot 109's location. A location changes only from
// the placeholder, and one cut there keeps the placeholder's high half: 1.0
// with new low bits still reads as 1. So no cut write leaves a length above
// its allocation, a location that is neither old nor new, or half a link.
void rfm_DatabaseReprFile::DumpGroupList() {
  // Pieces are written by rank: fresh slots, locations, then for the pool,
  // the catalogue and everything else in turn, sizes and then the next.
  constexpr int kFreshSlots = 0;
  constexpr int kLocations = 1;
  auto sizesRank = [](int owner) { return 2 + 2 * owner; };
  struct Piece {
    int rank;
    std::size_t group;
    int begin;  // bytes within the group
    int end;
  };
  std::vector<Piece> pieces;
  omi_Swapper order = rfm_FileOrder();
  char* onDisk = m_Scratch.get();
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    rfm_DatabaseGroup& group = *m_Groups[index];
    if (!group.m_Dirty) continue;
    group.m_Linkages[0].m_Allocation = 0;
    group.m_Linkages[0].m_Length = 0;
    File().Seek(group.m_Offset);
    int got = File().Read(onDisk, kRfmGroupSize);
    std::memset(onDisk + got, 0, static_cast<std::size_t>(kRfmGroupSize - got));
    int used = 1;
    while (used < rfm_DatabaseGroup::kSlots &&
           rfm_OffsetConverter::Internalize(order, onDisk + used * kRfmLinkageSize + kRfmLinkageLocation) != 0) {
      ++used;
    }
    // A group the file does not hold whole yet is written to its end.
    int freshEnd = got < kRfmGroupSize ? kRfmGroupSize : group.m_Used * kRfmLinkageSize;
    pieces.push_back({kFreshSlots, index, used * kRfmLinkageSize, std::max(freshEnd, used * kRfmLinkageSize)});
    for (int slot = 0; slot < used; ++slot) {
      char now[kRfmLinkageSize];
      EncodeLinkage(group.m_Linkages[slot], now);
      int at = slot * kRfmLinkageSize;
      auto changed = [&](int begin, int end) {
        return std::memcmp(now + begin, onDisk + at + begin, static_cast<std::size_t>(end - begin)) != 0;
      };
      int owner = ReferencedObject(rfm_Handle::Make(static_cast<int>(index), slot));
      if (changed(kRfmLinkageLocation, kRfmLinkageNext)) {
        pieces.push_back({kLocations, index, at + kRfmLinkageLocation, at + kRfmLinkageNext});
      }
      if (changed(kRfmLinkageAllocation, kRfmLinkageLocation)) {
        pieces.push_back({sizesRank(owner), index, at + kRfmLinkageAllocation, at + kRfmLinkageLocation});
      }
      if (changed(kRfmLinkageNext, kRfmLinkageSize)) {
        pieces.push_back({sizesRank(owner) + 1, index, at + kRfmLinkageNext, at + kRfmLinkageSize});
      }
    }
  }
  std::stable_sort(pieces.begin(), pieces.end(), [](Piece const& a, Piece const& b) { return a.rank < b.rank; });
  for (Piece const& piece : pieces) {
    if (piece.begin == piece.end) continue;
    rfm_DatabaseGroup const& group = *m_Groups[piece.group];
    for (int slot = piece.begin / kRfmLinkageSize; slot <= (piece.end - 1) / kRfmLinkageSize; ++slot) {
      EncodeLinkage(group.m_Linkages[slot], m_Scratch.get() + slot * kRfmLinkageSize);
    }
    File().Seek(group.m_Offset + piece.begin);
    File().Write(m_Scratch.get() + piece.begin, piece.end - piece.begin);
  }
  for (auto& group : m_Groups) group->m_Dirty = false;
  for (rfm_Handle& tail : m_ReferencedTails) tail = ChainEnd(tail);
}

int rfm_DatabaseReprFile::ReferencedObject(rfm_Handle link) const {
  if (link == m_ReferencedTails[0]) return 0;
  if (link == m_ReferencedTails[1]) return 1;
  return 2;
}

void rfm_DatabaseReprFile::EncodeLinkage(rfm_Linkage const& link, char* bytes) {
  omi_Swapper order = rfm_FileOrder();
  rfm_OffsetConverter::Externalize(order, bytes + kRfmLinkageAllocation, link.m_Allocation);
  rfm_OffsetConverter::Externalize(order, bytes + kRfmLinkageLength, link.m_Length);
  rfm_OffsetConverter::Externalize(order, bytes + kRfmLinkageLocation, link.m_Location);
  // The next field is 4 bytes here, not a stored handle's 8.
  char handle[rfm_HandleConverter::ExternalSize()];
  rfm_HandleConverter::Externalize(order, handle, link.m_Next);
  std::memcpy(bytes + kRfmLinkageNext, handle, kRfmLinkageSize - kRfmLinkageNext);
}

rfm_Handle rfm_DatabaseReprFile::ChainEnd(rfm_Handle link) const {
  for (int steps = 0; !Linkage(link).m_Next.IsNull(); ++steps) {
    if (steps > ChainLimit()) RaiseCorrupt(__LINE__);
    link = Linkage(link).m_Next;
  }
  return link;
}

rfm_Linkage const& rfm_DatabaseReprFile::Linkage(rfm_Handle handle) const {
  std::uint32_t index = handle.Group();
  if (index >= m_Groups.size() || handle.Slot() >= m_Groups[index]->m_Used) RaiseCorrupt(__LINE__);
  return m_Groups[index]->m_Linkages[handle.Slot()];
}

rfm_Linkage& rfm_DatabaseReprFile::Linkage(rfm_Handle handle) {
  return const_cast<rfm_Linkage&>(static_cast<rfm_DatabaseReprFile const&>(*this).Linkage(handle));
}

void rfm_DatabaseReprFile::MakeDirty(rfm_Handle handle) { m_Groups[handle.Group()]->m_Dirty = true; }

rfm_Handle rfm_DatabaseReprFile::CreateLinkage() {
  rfm_DatabaseGroup* last = m_Groups.back().get();
  if (last->m_Used == rfm_DatabaseGroup::kSlots) {
    CreateGroup();
    rfm_DatabaseGroup* fresh = m_Groups.back().get();
    last->m_Dirty = true;
    last->m_Linkages[0].m_Location = fresh->m_Offset;
    last->m_Linkages[0].m_Next = rfm_Handle::Make(static_cast<int>(m_Groups.size()) - 1, 0);
    last = fresh;
  }
  // A write cut by a kill can leave sizes in a slot that is free: a new
  // linkage starts empty whatever the file held there.
  last->m_Linkages[last->m_Used] = rfm_Linkage();
  return rfm_Handle::Make(static_cast<int>(m_Groups.size()) - 1, last->m_Used++);
}

bool rfm_DatabaseReprFile::HandleOk(rfm_Handle handle) const {
  if (handle.Slot() == 0 || handle.Group() >= m_Groups.size()) return false;
  return m_Groups[handle.Group()]->m_Linkages[handle.Slot()].m_Location != 0;
}

rfm_SpaceRepr* rfm_DatabaseReprFile::Space(int quantum) { return new rfm_SpaceReprFile(*this, quantum); }

rfm_SpaceRepr* rfm_DatabaseReprFile::Space(rfm_Handle const& handle, int quantum) {
  return new rfm_SpaceReprFile(*this, handle, quantum);
}

cow_List<cow_String> rfm_DatabaseReprFile::GetObjStatistics(rfm_Handle const& handle) const {
  cow_List<cow_String> statistics;
  if (!HandleOk(handle)) return statistics;
  int count = 0;
  for (rfm_Handle link = handle; !link.IsNull() && count <= ChainLimit(); link = Linkage(link).m_Next) ++count;
  statistics.Append(atr_SubstituteFormat("Linkage_Count=%d", count));
  return statistics;
}

cow_List<cow_String> rfm_DatabaseReprFile::GetDBStatistics() const {
  cow_List<cow_String> statistics;
  statistics.Append(atr_SubstituteFormat("Block 0 Size (bytes)=%d", kRfmBlock0Size));
  statistics.Append(atr_SubstituteFormat("Total Linkage Usage (bytes)=%20.0lf",
                                         static_cast<double>(m_Groups.size()) * kRfmGroupSize));
  statistics.Append(atr_SubstituteFormat("Metadata Pool Size (bytes)=%20.0lf",
                                         static_cast<double>(m_Metadata->Length())));
  statistics.Append(atr_SubstituteFormat("String Pool Size (bytes)=%20.0lf",
                                         static_cast<double>(m_StringManager.EndOffset())));
  statistics.Append(atr_SubstituteFormat("String Pool Count (number of strings)=%d", m_StringManager.Count()));
  cow_List<cow_String> pool = GetObjStatistics(rfm_Handle(kRfmStringPoolHandle));
  statistics.Append(atr_SubstituteFormat("String Pool %s", pool.IsEmpty() ? cow_String() : pool.First()));
  return statistics;
}

cow_List<rfm_Handle> rfm_DatabaseReprFile::ObjectHandles() const {
  // Heads are the used slots with a location that no other slot continues.
  cow_List<rfm_Handle> heads;
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    rfm_DatabaseGroup const& group = *m_Groups[index];
    for (int slot = 1; slot < group.m_Used; ++slot) {
      rfm_Linkage const& link = group.m_Linkages[slot];
      if (link.m_Location != 0 && !link.m_Continues) heads.Append(rfm_Handle::Make(static_cast<int>(index), slot));
    }
  }
  return heads;
}

int rfm_DatabaseReprFile::ExtentCount(rfm_Handle const& handle) const {
  if (!HandleOk(handle) || Linkage(handle).m_Continues) return 0;
  int extents = 0;
  int steps = 0;
  for (rfm_Handle link = handle; !link.IsNull() && steps <= ChainLimit(); ++steps) {
    rfm_Linkage const& extent = Linkage(link);
    if (extent.m_Location >= kRfmBlock0Size) ++extents;
    link = extent.m_Next;
  }
  return extents;
}

cow_String rfm_DatabaseReprFile::GetObjectLocationReport(utl_FileOffset const& offset) const {
  cow_List<rfm_Handle> heads = ObjectHandles();
  for (int i = 0; i < heads.Length(); ++i) {
    rfm_Handle head = heads[i];
    utl_FileOffset before = 0;
    int steps = 0;
    for (rfm_Handle link = head; !link.IsNull() && steps <= ChainLimit(); ++steps) {
      rfm_Linkage const& extent = Linkage(link);
      if (extent.m_Location == 0) break;
      if (extent.m_Location <= offset && offset < extent.m_Location + extent.m_Length) {
        return atr_SubstituteFormat("Object: %08x - Offset: %20.0lf", head.Value(),
                                    static_cast<double>(before + offset - extent.m_Location));
      }
      before += extent.m_Length;
      link = extent.m_Next;
    }
  }
  return atr_translate("Object not found.");
}
