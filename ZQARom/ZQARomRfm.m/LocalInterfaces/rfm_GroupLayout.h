#ifndef rfm_GroupLayout_h
#define rfm_GroupLayout_h

#include "rfm_Handle.h"

// The on-disk form of a linkage group: 512 linkages of 28 bytes, numbers
// in the file's byte order. Group 0 follows block 0; readers of the groups
// that stand outside the database layer take the layout from here.
//
//  offset  size  content
//       0     8  allocation, double
//       8     8  length, double
//      16     8  location, double; 0: the slot is free
//      24     4  next handle, 0 at the end of the chain
//
// Slot 0's location is the next group's offset (0 in the last group) and
// its next is that group's index shifted left by 9.
constexpr int kRfmLinkageAllocation = 0;
constexpr int kRfmLinkageLength = 8;
constexpr int kRfmLinkageLocation = 16;
constexpr int kRfmLinkageNext = 24;
constexpr int kRfmLinkageSize = 28;
constexpr int kRfmGroupSize = rfm_Handle::kSlotsPerGroup * kRfmLinkageSize;

#endif
