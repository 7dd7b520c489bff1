#include "rfm_LinkageGroups.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "nex_PrimException.h"
#include "rfm_Block0.h"
#include "rfm_FileException.h"
#include "rfm_FileRepr.h"
#include "rfm_GroupLayout.h"
#include "rfm_HandleConverter.h"
#include "rfm_LinkageRules.h"
#include "rfm_ObjectMagic.h"
#include "rfm_OffsetConverter.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <thread>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_LinkageGroups";

// A linkage location below block 0's end is no extent: it holds the slot for
// a space that has not grown yet.
constexpr utl_FileOffset kPlaceholderLocation = 1;

// How long damage that two readings agree on must last before it is raised.
constexpr int kDamagePauseMilliseconds = 1;

utl_FileOffset RoundUp(utl_FileOffset value, utl_FileOffset quantum) { return (value + quantum - 1) / quantum * quantum; }

}  // namespace

rfm_LinkageGroups::rfm_LinkageGroups(rfm_FileRepr& file) : m_File(file), m_Scratch(new char[kRfmGroupSize]) {}

rfm_LinkageGroups::~rfm_LinkageGroups() = default;

void rfm_LinkageGroups::RaiseCorrupt(int line) const {
  nex_ThrowMessage(kSourcePath, line,
                   atr_SubstituteFormat(
                       atr_translate("***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  %s"),
                       m_File.FileName()));
}

void rfm_LinkageGroups::Create() {
  m_Groups.clear();
  CreateGroup();
  // The pool and the catalogue are the file's first objects: nothing of
  // them is on disk yet.
  m_ReferencedTails[0] = rfm_Handle(kRfmStringPoolHandle);
  m_ReferencedTails[1] = rfm_Handle(kRfmMetadataHandle);
  ++m_Generation;
}

void rfm_LinkageGroups::Load() {
  std::string bytes;
  utl_FileOffset stored = ReadChain(bytes, false);
  Install(Decode(bytes, stored));
}

void rfm_LinkageGroups::Install(GroupList groups) {
#ifdef ZQA_PROTOCOL_CHECKS
  // R3: groups are only ever added, so no picture of a later moment has
  // fewer than the view it replaces.
  if (groups.size() < m_Groups.size()) RaiseCorrupt(__LINE__);
#endif
  m_Groups = std::move(groups);
  FindReferencedTails();
  ++m_Generation;
}

void rfm_LinkageGroups::FindReferencedTails() {
  // Checked groups hold no loop: ChainEnd ends. A file without a pool or a
  // catalogue is refused as soon as its database looks for them.
  int const heads[] = {kRfmStringPoolHandle, kRfmMetadataHandle};
  for (int i = 0; i < 2; ++i) {
    rfm_Handle head(heads[i]);
    bool const inUse = !m_Groups.empty() && head.Slot() < m_Groups[0]->m_Used;
    m_ReferencedTails[i] = inUse && HandleOk(head) ? ChainEnd(head) : head;
  }
}

bool rfm_LinkageGroups::LoadSteady(int readings) {
  std::string previous;
  bool paused = false;
  for (int reading = 0; reading < readings; ++reading) {
    std::string bytes;
    utl_FileOffset stored = 0;
    std::exception_ptr damage;
    try {
      stored = ReadChain(bytes, true);
    } catch (rfm_FileException const&) {
      throw;
    } catch (nex_PrimException<atr_String, 1> const&) {
      damage = std::current_exception();
    }
    if (reading > 0 && bytes == previous) {
      try {
        if (damage) std::rethrow_exception(damage);
        Install(Decode(bytes, stored));
        return true;
      } catch (rfm_FileException const&) {
        throw;
      } catch (nex_PrimException<atr_String, 1> const&) {
        // A writer stalled inside one of its writes can show the same half
        // of it twice: damage must also outlast a pause to stay.
        if (paused) throw;
        paused = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(kDamagePauseMilliseconds));
        ++readings;
      }
    }
    previous.swap(bytes);
  }
  return false;
}

utl_FileOffset rfm_LinkageGroups::ReadChain(std::string& bytes, bool afresh) {
  utl_FileOffset const stored = m_File.LengthStored();
  omi_Swapper order = rfm_FileOrder();
  utl_FileOffset offset = kRfmBlock0Size;
  while (offset != 0) {
    // Checked before the seek: a compressed file would make room in memory
    // for any offset within its claimed size. Only the group's start is
    // bound: a flush need not write the free slots at its end, which read as
    // zeros all the same.
    if (offset >= stored) RaiseCorrupt(__LINE__);
    if (afresh) m_File.ForgetCached(offset, kRfmGroupSize);
    std::size_t at = bytes.size();
    bytes.resize(at + kRfmGroupSize);
    m_File.Seek(offset);
    int got = m_File.Read(&bytes[at], kRfmGroupSize);
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

rfm_LinkageGroups::GroupList rfm_LinkageGroups::Decode(std::string const& bytes,
                                                                      utl_FileOffset stored) const {
  GroupList groups;
  utl_FileOffset offset = kRfmBlock0Size;
  for (std::size_t at = 0; at < bytes.size(); at += kRfmGroupSize) {
    std::unique_ptr<rfm_DatabaseGroup> group(new rfm_DatabaseGroup);
    DecodeGroup(bytes.data() + at, offset, *group);
    offset = group->m_Linkages[0].m_Location;
    groups.push_back(std::move(group));
  }
  Check(groups, stored);
  return groups;
}

void rfm_LinkageGroups::DecodeGroup(char const* bytes, utl_FileOffset offset, rfm_DatabaseGroup& group) const {
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

void rfm_LinkageGroups::Check(GroupList& groups, utl_FileOffset stored) const {
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
          !m_File.Stores(link.m_Location, link.m_Length)) {
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

// W2 and W4. A writer may be killed at any moment of a flush, and there is
// no journal: whatever the groups on disk say when the writer dies is what
// the file holds. So the groups are not written whole but piece by piece, in an order
// in which every state on the way describes a prefix of every object:
//
//   1. the slots the file does not use yet (from the first without a
//      location on): nothing on disk leads to them. They go without their
//      links, so that a cut in this write leaves none of them continuing in
//      a slot that the cut left without its location, which is free;
//   2. changed locations: extents given to placeholders, whose lengths on
//      disk are still 0, and links to new groups, which are written by now;
//   3. the links between the slots of step 1, whose linkages are written by
//      now, and which may lead into a new group, which step 2 made part of
//      the file's chain of groups;
//   4. the string pool's growth and then its link to a new extent, then the
//      catalogue's: rows and tables refer to their records;
//   5. the growth of every other object, over data written before the flush;
//   6. every other link to a new extent, whose linkage is written by now,
//      together with the growth of the extent it continues. Written apart,
//      a kill between the two would leave the object ending where that
//      extent ends, which for a table may be inside a row, and the last row
//      of a table counts from half its bytes on.
//
// Each piece is one write. A kill can still cut a write, but only at a page
// boundary. A group lies 1024 bytes past one, as group 0 does, so the
// boundaries inside it fall before slot 256, between slot 402's allocation
// and length, and inside slot 109's location. A location changes only from
// the placeholder, and one cut there keeps the placeholder's high half: 1.0
// with new low bits still reads as 1. So no cut write leaves a length above
// its allocation, a location that is neither old nor new, or half a link;
// only slot 109's growth may arrive without its link, a shorter prefix.
void rfm_LinkageGroups::Write() {
  // Pieces are written by rank: fresh slots, locations, the fresh slots'
  // links, then for the pool, the catalogue and everything else in turn, sizes and
  // then the next.
  constexpr int kFreshSlots = 0;
  constexpr int kLocations = 1;
  constexpr int kFreshLinks = 2;
  auto sizesRank = [](int owner) { return 3 + 2 * owner; };
  struct Piece {
    int rank;
    std::size_t group;
    int begin;  // bytes within the group
    int end;
    bool withoutLinks;  // the next of each linkage written as null
  };
  std::vector<Piece> pieces;
  omi_Swapper order = rfm_FileOrder();
  char* onDisk = m_Scratch.get();
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    rfm_DatabaseGroup& group = *m_Groups[index];
    if (!group.m_Dirty) continue;
    group.m_Linkages[0].m_Allocation = 0;
    group.m_Linkages[0].m_Length = 0;
    m_File.Seek(group.m_Offset);
    int got = m_File.Read(onDisk, kRfmGroupSize);
    std::memset(onDisk + got, 0, static_cast<std::size_t>(kRfmGroupSize - got));
    int used = 1;
    while (used < rfm_DatabaseGroup::kSlots &&
           rfm_OffsetConverter::Internalize(order, onDisk + used * kRfmLinkageSize + kRfmLinkageLocation) != 0) {
      ++used;
    }
    // A group the file does not hold whole yet is written to its end.
    int freshEnd = std::max(got < kRfmGroupSize ? kRfmGroupSize : group.m_Used * kRfmLinkageSize,
                            used * kRfmLinkageSize);
    pieces.push_back({kFreshSlots, index, used * kRfmLinkageSize, freshEnd, true});
    for (int slot = used; slot < group.m_Used; ++slot) {
      int const at = slot * kRfmLinkageSize;
      if (!group.m_Linkages[slot].m_Next.IsNull()) {
        pieces.push_back({kFreshLinks, index, at + kRfmLinkageNext, at + kRfmLinkageSize, false});
      }
    }
    for (int slot = 0; slot < used; ++slot) {
      char now[kRfmLinkageSize];
      Encode(group.m_Linkages[slot], now);
      int at = slot * kRfmLinkageSize;
      auto changed = [&](int begin, int end) {
        return std::memcmp(now + begin, onDisk + at + begin, static_cast<std::size_t>(end - begin)) != 0;
      };
      int owner = ReferencedObject(rfm_Handle::Make(static_cast<int>(index), slot));
      if (changed(kRfmLinkageLocation, kRfmLinkageNext)) {
        pieces.push_back({kLocations, index, at + kRfmLinkageLocation, at + kRfmLinkageNext, false});
      }
      if (changed(kRfmLinkageNext, kRfmLinkageSize)) {
        pieces.push_back({sizesRank(owner) + 1, index, at + kRfmLinkageAllocation, at + kRfmLinkageSize, false});
      } else if (changed(kRfmLinkageAllocation, kRfmLinkageLocation)) {
        pieces.push_back({sizesRank(owner), index, at + kRfmLinkageAllocation, at + kRfmLinkageLocation, false});
      }
    }
  }
  std::stable_sort(pieces.begin(), pieces.end(), [](Piece const& a, Piece const& b) { return a.rank < b.rank; });
  for (Piece const& piece : pieces) {
    if (piece.begin == piece.end) continue;
    rfm_DatabaseGroup const& group = *m_Groups[piece.group];
    for (int slot = piece.begin / kRfmLinkageSize; slot <= (piece.end - 1) / kRfmLinkageSize; ++slot) {
      char* const bytes = m_Scratch.get() + slot * kRfmLinkageSize;
      Encode(group.m_Linkages[slot], bytes);
      if (piece.withoutLinks) std::memset(bytes + kRfmLinkageNext, 0, kRfmLinkageSize - kRfmLinkageNext);
    }
    m_File.Seek(group.m_Offset + piece.begin);
    m_File.Write(m_Scratch.get() + piece.begin, piece.end - piece.begin);
  }
  for (auto& group : m_Groups) group->m_Dirty = false;
  for (rfm_Handle& tail : m_ReferencedTails) tail = ChainEnd(tail);
  ++m_Generation;
#ifdef ZQA_PROTOCOL_CHECKS
  CheckWritten();
#endif
}

int rfm_LinkageGroups::ReferencedObject(rfm_Handle link) const {
  if (link == m_ReferencedTails[0]) return 0;
  if (link == m_ReferencedTails[1]) return 1;
  return 2;
}

void rfm_LinkageGroups::Encode(rfm_Linkage const& link, char* bytes) {
  omi_Swapper order = rfm_FileOrder();
  rfm_OffsetConverter::Externalize(order, bytes + kRfmLinkageAllocation, link.m_Allocation);
  rfm_OffsetConverter::Externalize(order, bytes + kRfmLinkageLength, link.m_Length);
  rfm_OffsetConverter::Externalize(order, bytes + kRfmLinkageLocation, link.m_Location);
  // The next field is 4 bytes here, not a stored handle's 8.
  char handle[rfm_HandleConverter::ExternalSize()];
  rfm_HandleConverter::Externalize(order, handle, link.m_Next);
  std::memcpy(bytes + kRfmLinkageNext, handle, kRfmLinkageSize - kRfmLinkageNext);
}

#ifdef ZQA_PROTOCOL_CHECKS
void rfm_LinkageGroups::CheckWritten() const {
  // W2 and W3: before the flush count is written, every group on disk is
  // what memory holds, so the pieces Write chose left nothing out.
  std::unique_ptr<char[]> expected(new char[kRfmGroupSize]);
  std::unique_ptr<char[]> stored(new char[kRfmGroupSize]);
  for (auto const& group : m_Groups) {
    m_File.Seek(group->m_Offset);
    int got = m_File.Read(stored.get(), kRfmGroupSize);
    for (int slot = 0; slot < group->m_Used; ++slot) {
      rfm_Linkage link = group->m_Linkages[slot];
      if (slot == 0) link.m_Allocation = link.m_Length = 0;
      Encode(link, expected.get() + slot * kRfmLinkageSize);
    }
    int const used = group->m_Used * kRfmLinkageSize;
    if (got < used || std::memcmp(expected.get(), stored.get(), static_cast<std::size_t>(used)) != 0) {
      RaiseCorrupt(__LINE__);
    }
  }
}
#endif

void rfm_LinkageGroups::CreateGroup() {
  std::unique_ptr<rfm_DatabaseGroup> group(new rfm_DatabaseGroup);
  group->m_Dirty = true;
  // Every group lies as group 0 does, 1024 bytes past a page boundary, so
  // that page boundaries cut its linkages where Write expects. The
  // bytes skipped belong to no object.
  constexpr int kPage = kPageSize;
  utl_FileOffset end = m_File.LengthLogical();
  group->m_Offset = end + ((kRfmBlock0Size - end) % kPage + kPage) % kPage;
  ExtendFile(group->m_Offset - end + kRfmGroupSize);
  m_Groups.push_back(std::move(group));
}

utl_FileOffset rfm_LinkageGroups::StartOfNewExtent(int quantum) {
  utl_FileOffset end = m_File.LengthLogical();
  if (quantum < kPageSize) return end;
  // A space that grows in pages starts its extents on a page, so that its
  // transfers cover whole pages of the system's cache. The few bytes
  // skipped belong to no object.
  utl_FileOffset aligned = RoundUp(end, kPageSize);
  if (aligned > end) ExtendFile(aligned - end);
  return aligned;
}

void rfm_LinkageGroups::ExtendFile(utl_FileOffset delta) {
  if (m_File.FileExtend(delta)) m_File.FTPCheckSet(kRfmFtpRecordOffset);
}

rfm_Linkage const& rfm_LinkageGroups::Linkage(rfm_Handle handle) const {
  std::uint32_t index = handle.Group();
  if (index >= m_Groups.size() || handle.Slot() >= m_Groups[index]->m_Used) RaiseCorrupt(__LINE__);
  return m_Groups[index]->m_Linkages[handle.Slot()];
}

rfm_Linkage& rfm_LinkageGroups::Changed(rfm_Handle handle) {
  Linkage(handle);  // raises for a handle outside the groups
  rfm_DatabaseGroup& group = *m_Groups[handle.Group()];
  group.m_Dirty = true;
  return group.m_Linkages[handle.Slot()];
}

rfm_Handle rfm_LinkageGroups::NewLinkage() {
  rfm_DatabaseGroup* last = m_Groups.back().get();
  if (last->m_Used == rfm_DatabaseGroup::kSlots) {
    CreateGroup();
    rfm_DatabaseGroup* fresh = m_Groups.back().get();
    last->m_Dirty = true;
    last->m_Linkages[0].m_Location = fresh->m_Offset;
    last->m_Linkages[0].m_Next = rfm_Handle::Make(static_cast<int>(m_Groups.size()) - 1, 0);
    last = fresh;
  }
  // W5. A write cut by a kill can leave sizes in a slot that is free: a new
  // linkage starts empty whatever the file held there.
  last->m_Linkages[last->m_Used] = rfm_Linkage();
  return rfm_Handle::Make(static_cast<int>(m_Groups.size()) - 1, last->m_Used++);
}

rfm_Handle rfm_LinkageGroups::NewObject() {
  rfm_Handle handle = NewLinkage();
  // Not marked dirty: see the header.
  m_Groups[handle.Group()]->m_Linkages[handle.Slot()].m_Location = kPlaceholderLocation;
  return handle;
}

utl_FileOffset rfm_LinkageGroups::Grow(rfm_Handle last, utl_FileOffset need, int quantum) {
  rfm_Linkage const* extent = &Linkage(last);
  if (!rfm_LinkageRules::IsPlaceholder(extent->m_Location) &&
      extent->m_Location + extent->m_Allocation < m_File.LengthLogical()) {
    // Another object lies beyond this extent: continue in a new one.
    rfm_Handle fresh = NewLinkage();
    Changed(last).m_Next = fresh;
    Changed(fresh).m_Continues = true;
    last = fresh;
    extent = &Linkage(last);
  }
  if (rfm_LinkageRules::IsPlaceholder(extent->m_Location)) Changed(last).m_Location = StartOfNewExtent(quantum);
  utl_FileOffset grown = RoundUp(extent->m_Allocation + need, quantum);
  utl_FileOffset increase = grown - extent->m_Allocation;
  // The file grows first: when it cannot (a full disk, a size limit), the
  // extent claims no bytes beyond the file's end, where the next extent or
  // group would then be placed over them.
  ExtendFile(increase);
  Changed(last).m_Allocation = grown;
  return increase;
}

void rfm_LinkageGroups::RecordLength(rfm_Handle link, utl_FileOffset length) { Changed(link).m_Length = length; }

rfm_Handle rfm_LinkageGroups::ChainEnd(rfm_Handle link) const {
  for (int steps = 0; !Linkage(link).m_Next.IsNull(); ++steps) {
    if (steps > ChainLimit()) RaiseCorrupt(__LINE__);
    link = Linkage(link).m_Next;
  }
  return link;
}

bool rfm_LinkageGroups::HandleOk(rfm_Handle handle) const {
  if (handle.Slot() == 0 || handle.Group() >= m_Groups.size()) return false;
  return m_Groups[handle.Group()]->m_Linkages[handle.Slot()].m_Location != 0;
}

cow_List<rfm_Handle> rfm_LinkageGroups::ObjectHandles() const {
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

int rfm_LinkageGroups::ExtentCount(rfm_Handle handle) const {
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

int rfm_LinkageGroups::LinkageCount(rfm_Handle handle) const {
  if (!HandleOk(handle)) return 0;
  int count = 0;
  for (rfm_Handle link = handle; !link.IsNull() && count <= ChainLimit(); link = Linkage(link).m_Next) ++count;
  return count;
}

utl_FileOffset rfm_LinkageGroups::LogicalEnd() const {
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
