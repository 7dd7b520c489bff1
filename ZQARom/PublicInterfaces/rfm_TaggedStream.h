#ifndef rfm_TaggedStream_h
#define rfm_TaggedStream_h

#include "cow_CountedHld.h"
#include "cow_List.h"
#include "cow_String.h"
#include "rfm_Handle.h"
#include "utl_FileOffset.h"

class rfm_TaggedStreamRepr;

// A tagged stream by value: copies share one representation, and with it
// one position and one current item. The stream holds a share of its
// database, which stays open while the stream lives (see rfm_Database).
class ZQA_EXPORT rfm_TaggedStream {
public:
  // What GetType answers for an item written by WriteFixedString; any
  // other item answers the rfm_Type of its value.
  static constexpr int kFixedStringType = 7;

  rfm_TaggedStream();
  // Takes ownership of repr.
  explicit rfm_TaggedStream(rfm_TaggedStreamRepr* repr);
  rfm_TaggedStream(rfm_TaggedStream const& other);
  rfm_TaggedStream& operator=(rfm_TaggedStream const& other);
  ~rfm_TaggedStream();

  void WriteInt(int id, int value) const;
  void WriteFloat(int id, float value) const;
  void WriteDouble(int id, double value) const;
  void WriteHandle(int id, rfm_Handle value) const;
  // A pooled string: the item holds the string's reference in the pool.
  void WriteString(int id, cow_String const& value) const;
  // The text itself, zero-padded to a multiple of 4 bytes. The item carries
  // no length, while Next expects one: nothing after such an item can be
  // read back.
  void WriteFixedString(int id, cow_String const& value) const;

  // Reads the next item; false at the end. The Get operations answer the
  // item read, and 0 or empty for the values of the other types.
  bool Next() const;
  // Goes back before the first item, so that Next reads the stream again
  // from its start: a reader after Snap sees the items added since, and a
  // writer sees what it wrote. Items are written where the stream stands,
  // so a writer reads to the end before it writes again.
  void Rewind() const;
  int GetType() const;
  int GetID() const;
  int GetInt() const;
  float GetFloat() const;
  double GetDouble() const;
  rfm_Handle GetHandle() const;
  cow_String GetString() const;

  int Flush() const;
  int Snap() const;
  rfm_Handle Handle() const;
  utl_FileOffset SpaceAllocation() const;
  utl_FileOffset SpaceLength() const;
  cow_List<cow_String> GetObjStatistics() const;

  bool IsNull() const { return m_Repr.IsNull(); }
  // The representation, for the library's own layers.
  rfm_TaggedStreamRepr& Repr() const { return m_Repr.GetRef(); }

private:
  cow_CountedHld<rfm_TaggedStreamRepr> m_Repr;
};

#endif
