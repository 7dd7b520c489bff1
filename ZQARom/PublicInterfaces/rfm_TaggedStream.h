#ifndef rfm_TaggedStream_h
#define rfm_TaggedStream_h

#include "cow_CountedHld.h"
#include "rfm_TaggedStreamRepr.h"

// A tagged stream by value: copies share one representation, and with it
// one position and one current item. The stream holds a share of its
// database, which stays open while the stream lives (see rfm_Database).
class ZQA_EXPORT rfm_TaggedStream {
public:
  rfm_TaggedStream() = default;
  // Takes ownership of repr.
  explicit rfm_TaggedStream(rfm_TaggedStreamRepr* repr) : m_Repr(repr) {}

  void WriteInt(int id, int value) const { Repr().WriteInt(id, value); }
  void WriteFloat(int id, float value) const { Repr().WriteFloat(id, value); }
  void WriteDouble(int id, double value) const { Repr().WriteDouble(id, value); }
  void WriteHandle(int id, rfm_Handle value) const { Repr().WriteHandle(id, value); }
  void WriteString(int id, cow_String const& value) const { Repr().WriteString(id, value); }
  // See rfm_TaggedStreamRepr: nothing after such an item can be read back.
  void WriteFixedString(int id, cow_String const& value) const { Repr().WriteFixedString(id, value); }

  // Reads the next item; false at the end. The Get operations answer the
  // item read, and 0 or empty for the values of the other types.
  bool Next() const { return Repr().Next(); }
  // Goes back before the first item, so that Next reads the stream again
  // from its start: a reader after Snap sees the items added since, and a
  // writer sees what it wrote. Items are written where the stream stands,
  // so a writer reads to the end before it writes again.
  void Rewind() const { Repr().Rewind(); }
  int GetType() const { return Repr().GetType(); }
  int GetID() const { return Repr().GetID(); }
  int GetInt() const { return Repr().GetInt(); }
  float GetFloat() const { return Repr().GetFloat(); }
  double GetDouble() const { return Repr().GetDouble(); }
  rfm_Handle GetHandle() const { return Repr().GetHandle(); }
  cow_String GetString() const { return Repr().GetString(); }

  int Flush() const { return Repr().Flush(); }
  int Snap() const { return Repr().Snap(); }
  rfm_Handle Handle() const { return Repr().Handle(); }
  utl_FileOffset SpaceAllocation() const { return Repr().SpaceAllocation(); }
  utl_FileOffset SpaceLength() const { return Repr().SpaceLength(); }
  cow_List<cow_String> GetObjStatistics() const { return Repr().GetObjStatistics(); }

  bool IsNull() const { return m_Repr.IsNull(); }
  rfm_TaggedStreamRepr& Repr() const { return m_Repr.GetRef(); }

private:
  cow_CountedHld<rfm_TaggedStreamRepr> m_Repr;
};

#endif
