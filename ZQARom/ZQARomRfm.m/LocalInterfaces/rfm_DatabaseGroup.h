#ifndef rfm_DatabaseGroup_h
#define rfm_DatabaseGroup_h

#include "mem_Alloc.h"
#include "rfm_Handle.h"
#include "utl_FileOffset.h"

// Where one extent of an object lies. A chain of linkages, joined by their
// next handles, lists the extents of one object in order.
struct rfm_Linkage {
  utl_FileOffset m_Allocation = 0;  // bytes reserved in this extent
  utl_FileOffset m_Length = 0;      // bytes used in this extent
  utl_FileOffset m_Location = 0;    // file offset of the extent; 0: slot free, below 1024: no extent yet
  rfm_Handle m_Next;                // the linkage that continues the object, null at the end
  bool m_Continues = false;         // another linkage's next: it heads no object
};

// A linkage group as it is held in memory: 512 linkages, of which slot 0
// links to the next group (its location is that group's file offset).
//
// Invariant: slots at and above m_Used are free; a file left by a killed
// writer may hold leftovers of a cut write there, which CreateLinkage clears
// when it takes the slot.
struct rfm_DatabaseGroup : mem_AllocationOperators {
  static constexpr int kSlots = rfm_Handle::kSlotsPerGroup;

  utl_FileOffset m_Offset = 0;  // where the group lies in the file
  bool m_Dirty = false;         // changed since it was last written
  int m_Used = 1;               // slots in use, counting slot 0
  rfm_Linkage m_Linkages[kSlots];
};

#endif
