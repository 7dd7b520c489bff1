#ifndef rfm_LinkageRules_h
#define rfm_LinkageRules_h

#include "rfm_Block0.h"
#include "rfm_Handle.h"
#include "rfm_ObjectMagic.h"
#include "rfm_OffsetConverter.h"
#include "utl_FileOffset.h"

// The rules by which the linkages of a file's groups hold together. The
// library refuses a group list that breaks one (rfm_DatabaseReprFile), and
// zdb check, which reads the bytes itself, reports it: they stand here once,
// so that what the library reads check passes, and what it refuses check
// reports.
//
// Only the slots in use are held to them: slots 1 up to the first whose
// location is 0. Slot 0 is read for its location alone, the next group's
// offset; its other fields, and every free slot, mean nothing whatever they
// hold (a writer killed inside a flush leaves cut writes there).
namespace rfm_LinkageRules {

// What is wrong with the fields of a used linkage, if anything.
enum Fault {
  kSound,
  kInvalidField,           // a size or the location is no stored offset: negative, NaN, 2^62 or more
  kLengthAboveAllocation,  // more bytes used than reserved
  kPlaceholderHoldsBytes,  // a location below block 0 only holds the slot of a space not grown yet
  kPlaceholderContinues,   // such a slot is the whole of its space: a chain grows from a real extent
  kBytesBeyondFile,        // used bytes past the last byte the file stores
};

// Whether a location is a placeholder rather than an extent.
constexpr bool IsPlaceholder(utl_FileOffset location) { return location < kRfmBlock0Size; }

// The fault of a used linkage with these fields, as rfm_OffsetConverter
// reads them, in a file that stores its first `stored` bytes.
constexpr Fault Check(utl_FileOffset allocation, utl_FileOffset length, utl_FileOffset location, rfm_Handle next,
                      utl_FileOffset stored) {
  if (allocation < 0 || length < 0 || location < 0) return kInvalidField;
  if (length > allocation) return kLengthAboveAllocation;
  if (IsPlaceholder(location)) {
    if (allocation != 0) return kPlaceholderHoldsBytes;
    return next.IsNull() ? kSound : kPlaceholderContinues;
  }
  if (length > 0 && location > stored - length) return kBytesBeyondFile;
  return kSound;
}

// Whether a chain may go on at next, a slot in use: never at a group's slot
// 0, nor at the objects every database is made with, which head their
// chains. (That no two chains go on at one slot, and that every chain
// starts at a head, are rules of the whole list, held where it is read.)
constexpr bool MayContinueAt(rfm_Handle next) { return next.Slot() != 0 && next.Value() > kRfmMetadataHandle; }

}  // namespace rfm_LinkageRules

// The extents of one chain, taken in chain order. Writes fill them in that
// order, so after an extent that is not full only empty ones follow; and a
// space's allocation stays below what a stored size can hold.
class rfm_ChainSizes {
public:
  // Takes the next extent of the chain; false when it breaks the rule.
  bool Take(utl_FileOffset allocation, utl_FileOffset length) {
    if (m_Filling && length > 0) return false;
    m_Filling = m_Filling || length < allocation;
    m_Length += length;
    m_Allocation += allocation;
    return m_Allocation < rfm_OffsetConverter::kLargest;
  }
  utl_FileOffset Length() const { return m_Length; }
  utl_FileOffset Allocation() const { return m_Allocation; }

private:
  bool m_Filling = false;
  utl_FileOffset m_Length = 0;
  utl_FileOffset m_Allocation = 0;
};

#endif
