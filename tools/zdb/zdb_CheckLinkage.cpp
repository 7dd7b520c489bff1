#include "zdb_CheckLinkage.h"

#include "rfm_Block0.h"
#include "rfm_GroupLayout.h"
#include "rfm_LinkageRules.h"
#include "rfm_OffsetConverter.h"
#include "zdb_CheckBytes.h"
#include "zdb_CheckReport.h"

#include <algorithm>

namespace {

constexpr int kSlots = rfm_Handle::kSlotsPerGroup;
constexpr int kLinkageSize = kRfmLinkageSize;
constexpr int kGroupSize = kRfmGroupSize;

std::string GroupSubject(int index, utl_FileOffset offset) {
  return "group " + std::to_string(index) + " at offset " + std::to_string(offset);
}

// A part of the file that one thing claims: block 0, a group, an extent.
struct Area {
  utl_FileOffset m_Start;
  utl_FileOffset m_End;
  std::string m_Owner;
};

std::string AreaText(Area const& area) {
  return area.m_Owner + " (bytes " + std::to_string(area.m_Start) + " to " + std::to_string(area.m_End - 1) + ")";
}

}  // namespace

std::string zdb_HandleSubject(rfm_Handle handle) { return "handle " + std::to_string(handle.Value()); }

zdb_CheckLinkage::zdb_CheckLinkage(zdb_CheckBytes& bytes, zdb_CheckReport& report) : m_Bytes(bytes), m_Report(report) {}

void zdb_CheckLinkage::Run() {
  ReadGroups();
  CheckSlots();
  FollowChains();
  CheckOverlaps();
}

utl_FileOffset zdb_CheckLinkage::End() const {
  utl_FileOffset end = kRfmBlock0Size;
  for (Group const& group : m_Groups) {
    end = std::max(end, group.m_Offset + kGroupSize);
    for (int place = 1; place < group.m_Used; ++place) {
      Slot const& slot = group.m_Slots[static_cast<std::size_t>(place)];
      if (slot.m_Valid && slot.m_Allocation > 0) end = std::max(end, slot.m_Location + slot.m_Allocation);
    }
  }
  return end;
}

void zdb_CheckLinkage::ReadGroups() {
  utl_FileOffset offset = kRfmBlock0Size;
  for (int index = 0; offset != 0; ++index) {
    Group group;
    if (!ReadGroup(index, offset, group)) return;
    // Slot 0 is read for its location alone: its other fields mean nothing.
    Slot const& link = group.m_Slots[0];
    utl_FileOffset next = link.m_Location;
    if (next == rfm_OffsetConverter::kInvalid) {
      m_Report.Problem(GroupSubject(index, offset) + ": its link to the next group holds no valid offset (" +
                       link.m_LocationText + ")");
      next = 0;
    } else if (next != 0 && next <= offset) {
      // Groups only ever go to the end of the file, so a chain that goes back is a loop.
      m_Report.Problem(GroupSubject(index, offset) + ": the next group's offset " + std::to_string(next) +
                       " does not lie further on (a cycle)");
      next = 0;
    }
    m_Groups.push_back(std::move(group));
    offset = next;
  }
}

bool zdb_CheckLinkage::ReadGroup(int index, utl_FileOffset offset, Group& group) {
  std::vector<char> bytes(kGroupSize);
  if (offset > m_Bytes.Length() - kGroupSize) {
    m_Report.Problem(GroupSubject(index, offset) + ": runs past the end of the file (" +
                     std::to_string(m_Bytes.Length()) + " bytes)");
    return false;
  }
  // A chunk that cannot be read has been reported by the byte source.
  if (!m_Bytes.Read(offset, bytes.data(), bytes.size())) return false;
  group.m_Offset = offset;
  group.m_Slots.resize(kSlots);
  group.m_Used = kSlots;
  for (int place = 0; place < kSlots; ++place) {
    char const* linkage = bytes.data() + place * kLinkageSize;
    Slot& slot = group.m_Slots[static_cast<std::size_t>(place)];
    static char const* const kNames[] = {"allocation", "length", "location"};
    static int const kPlaces[] = {kRfmLinkageAllocation, kRfmLinkageLength, kRfmLinkageLocation};
    utl_FileOffset* const values[] = {&slot.m_Allocation, &slot.m_Length, &slot.m_Location};
    for (int field = 0; field < 3; ++field) {
      if (zdb_StoredOffset(linkage + kPlaces[field], *values[field]) || !slot.m_Valid) continue;
      slot.m_Valid = false;
      slot.m_Invalid = std::string(kNames[field]) + " (" + zdb_StoredDoubleText(linkage + kPlaces[field]) + ")";
    }
    if (slot.m_Location == rfm_OffsetConverter::kInvalid) {
      slot.m_LocationText = zdb_StoredDoubleText(linkage + kRfmLinkageLocation);
    }
    slot.m_Next = rfm_Handle(zdb_Word(linkage + kRfmLinkageNext));
    // As the library counts: the first slot whose location is 0 ends the used ones.
    if (place > 0 && slot.m_Location == 0 && group.m_Used == kSlots) group.m_Used = place;
  }
  return true;
}

void zdb_CheckLinkage::CheckSlots() {
  // Free slots mean nothing, whatever they hold.
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    Group& group = m_Groups[index];
    for (int place = 1; place < group.m_Used; ++place) {
      CheckSlot(rfm_Handle::Make(static_cast<int>(index), place), group.m_Slots[static_cast<std::size_t>(place)]);
    }
  }
}

void zdb_CheckLinkage::CheckSlot(rfm_Handle handle, Slot& slot) {
  std::string subject = zdb_HandleSubject(handle);
  switch (rfm_LinkageRules::Check(slot.m_Allocation, slot.m_Length, slot.m_Location, slot.m_Next, m_Bytes.Length())) {
    case rfm_LinkageRules::kSound:
      break;
    case rfm_LinkageRules::kInvalidField:
      m_Report.Problem(subject + ": its " + slot.m_Invalid + " is no valid size or offset");
      return;
    case rfm_LinkageRules::kLengthAboveAllocation:
      m_Report.Problem(subject + ": the extent's length " + std::to_string(slot.m_Length) +
                       " is above its allocation " + std::to_string(slot.m_Allocation));
      break;
    case rfm_LinkageRules::kPlaceholderHoldsBytes:
      m_Report.Problem(subject + ": claims " + std::to_string(slot.m_Allocation) +
                       " bytes but has no extent (location " + std::to_string(slot.m_Location) + ")");
      break;
    case rfm_LinkageRules::kPlaceholderContinues:
      m_Report.Problem(subject + ": has no extent (location " + std::to_string(slot.m_Location) +
                       ") but its chain continues at handle " + std::to_string(slot.m_Next.Value()));
      break;
    case rfm_LinkageRules::kBytesBeyondFile:
      m_Report.Problem(subject + ": its extent at offset " + std::to_string(slot.m_Location) + " with length " +
                       std::to_string(slot.m_Length) + " runs past the end of the file (" +
                       std::to_string(m_Bytes.Length()) + " bytes)");
      return;
  }
  slot.m_Extent =
      !rfm_LinkageRules::IsPlaceholder(slot.m_Location) && slot.m_Length <= m_Bytes.Length() - slot.m_Location;
}

std::string zdb_CheckLinkage::WhyNoContinuation(rfm_Handle next) const {
  if (next.Group() >= m_Groups.size() || next.Slot() == 0 || next.Slot() >= m_Groups[next.Group()].m_Used) {
    return "which is no linkage in use";
  }
  if (!rfm_LinkageRules::MayContinueAt(next)) return "which heads an object that every database has";
  return std::string();
}

zdb_CheckLinkage::Slot* zdb_CheckLinkage::Follow(rfm_Handle next) {
  if (!WhyNoContinuation(next).empty()) return nullptr;
  Slot& slot = SlotOf(next);
  return slot.m_Valid ? &slot : nullptr;
}

void zdb_CheckLinkage::FollowChains() {
  // Heads: used, valid slots that no other such slot continues.
  std::vector<bool> continued(m_Groups.size() * kSlots, false);
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    for (int place = 1; place < m_Groups[index].m_Used; ++place) {
      Slot const& slot = m_Groups[index].m_Slots[static_cast<std::size_t>(place)];
      if (!slot.m_Valid || slot.m_Next.IsNull()) continue;
      std::string why = WhyNoContinuation(slot.m_Next);
      if (!why.empty()) {
        m_Report.Problem(zdb_HandleSubject(rfm_Handle::Make(static_cast<int>(index), place)) +
                         ": its chain continues at handle " + std::to_string(slot.m_Next.Value()) + ", " + why);
        continue;
      }
      // A continuation whose fields are no offsets is reported with them.
      if (Follow(slot.m_Next) == nullptr) continue;
      continued[slot.m_Next.Group() * kSlots + static_cast<std::size_t>(slot.m_Next.Slot())] = true;
    }
  }
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    for (int place = 1; place < m_Groups[index].m_Used; ++place) {
      Slot const& slot = m_Groups[index].m_Slots[static_cast<std::size_t>(place)];
      if (!slot.m_Valid || continued[index * kSlots + static_cast<std::size_t>(place)]) continue;
      rfm_Handle head = rfm_Handle::Make(static_cast<int>(index), place);
      m_Objects[head.Value()] = Walk(head);
    }
  }
  // What no head reaches is a chain that lost its head, or a loop.
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    for (int place = 1; place < m_Groups[index].m_Used; ++place) {
      Slot const& slot = m_Groups[index].m_Slots[static_cast<std::size_t>(place)];
      if (!slot.m_Valid || slot.m_Owner != 0) continue;
      rfm_Handle orphan = rfm_Handle::Make(static_cast<int>(index), place);
      m_Report.Problem(zdb_HandleSubject(orphan) + ": belongs to no object (a chain without a head)");
      Walk(orphan);
    }
  }
}

std::vector<zdb_Extent> zdb_CheckLinkage::Walk(rfm_Handle head) {
  std::vector<zdb_Extent> extents;
  bool extentsEnded = false;
  rfm_ChainSizes sizes;
  bool sizesHold = true;
  rfm_Handle previous;
  for (rfm_Handle link = head; !link.IsNull();) {
    Slot* slot = link == head ? &SlotOf(head) : Follow(link);
    if (slot == nullptr) break;  // reported with the slot that names it
    if (slot->m_Owner == head.Value()) {
      m_Report.Problem(zdb_HandleSubject(previous) + ": its chain returns to handle " + std::to_string(link.Value()) +
                       " (a cycle)");
      break;
    }
    if (slot->m_Owner != 0) {
      m_Report.Problem(zdb_HandleSubject(previous) + ": its chain runs into handle " + std::to_string(link.Value()) +
                       ", which belongs to the object at handle " + std::to_string(slot->m_Owner));
      break;
    }
    slot->m_Owner = head.Value();
    if (sizesHold && !sizes.Take(slot->m_Allocation, slot->m_Length)) {
      sizesHold = false;
      m_Report.Problem(zdb_HandleSubject(link) +
                       (sizes.Allocation() >= rfm_OffsetConverter::kLargest
                            ? ": the allocations of its object's chain add up to 2^62 bytes or more"
                            : ": holds bytes after an extent of its object that is not full"));
      extentsEnded = true;
    }
    // A chain reads as far as its extents lie in the file, as a reader's does.
    if (slot->m_Location >= kRfmBlock0Size && !slot->m_Extent) extentsEnded = true;
    if (slot->m_Extent && !extentsEnded) extents.push_back({slot->m_Location, slot->m_Length});
    previous = link;
    link = slot->m_Next;
  }
  return extents;
}

void zdb_CheckLinkage::CheckOverlaps() {
  std::vector<Area> areas;
  areas.push_back({0, kRfmBlock0Size, "block 0"});
  for (std::size_t index = 0; index < m_Groups.size(); ++index) {
    Group const& group = m_Groups[index];
    areas.push_back({group.m_Offset, group.m_Offset + kGroupSize, "group " + std::to_string(index)});
    for (int place = 1; place < group.m_Used; ++place) {
      Slot const& slot = group.m_Slots[static_cast<std::size_t>(place)];
      if (!slot.m_Valid || slot.m_Location < kRfmBlock0Size || slot.m_Allocation == 0) continue;
      areas.push_back({slot.m_Location, slot.m_Location + slot.m_Allocation,
                       zdb_HandleSubject(rfm_Handle::Make(static_cast<int>(index), place))});
    }
  }
  std::sort(areas.begin(), areas.end(), [](Area const& a, Area const& b) { return a.m_Start < b.m_Start; });
  // Against the area reaching furthest so far: any later start below its end overlaps it.
  std::size_t widest = 0;
  for (std::size_t index = 1; index < areas.size(); ++index) {
    if (areas[index].m_Start < areas[widest].m_End) {
      m_Report.RepeatedProblem("overlapping areas", AreaText(areas[index]) + " overlaps " + AreaText(areas[widest]));
    }
    if (areas[index].m_End > areas[widest].m_End) widest = index;
  }
}
