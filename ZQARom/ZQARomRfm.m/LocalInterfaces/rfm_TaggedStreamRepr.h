#ifndef rfm_TaggedStreamRepr_h
#define rfm_TaggedStreamRepr_h

#include "cow_List.h"
#include "cow_String.h"
#include "rfm_Database.h"
#include "rfm_Handle.h"
#include "rfm_IOBuffer.h"
#include "rfm_ObjectLayout.h"
#include "rfm_SpaceRepr.h"
#include "rfm_TaggedStream.h"
#include "rfm_Type.h"

#include <memory>

// A tagged stream: a space holding a header and then a sequence of
// self-describing items, each a tag type, an id the caller chooses, and a
// value of that type. Items are written at the current position and read
// one at a time with Next, which makes the item read the current one.
//
// Invariants:
// - Next either reads a whole item or raises; it never reads past the
//   space, nor takes a length from the file without checking it against
//   the bytes that remain.
// - The space outlives the buffer on it, which flushes into it on the way out.
// - The stream holds a share of its database, which outlives space and buffer.
class rfm_TaggedStreamRepr : public mem_AllocationOperators {
public:
  // The tag types of the items. 5 is not one; 7 has no rfm_Type of its own.
  enum Tag {
    kTagInt = rfm_TypeInt,
    kTagHandle = rfm_TypeHandle,
    kTagFloat = rfm_TypeFloat,
    kTagDouble = rfm_TypeDouble,
    kTagString = rfm_TypeString,
    kTagFixedString = rfm_TaggedStream::kFixedStringType,
  };
  static constexpr int kHeaderSize = kRfmTaggedStreamHeaderSize;

  // The existing stream at handle; raises the texts of a damaged object or
  // of a handle to something else.
  rfm_TaggedStreamRepr(rfm_Database const& database, rfm_Handle const& handle, int bufferSize);
  // A new, empty stream.
  rfm_TaggedStreamRepr(rfm_Database const& database, int bufferSize);
  ~rfm_TaggedStreamRepr();
  rfm_TaggedStreamRepr(rfm_TaggedStreamRepr const&) = delete;
  rfm_TaggedStreamRepr& operator=(rfm_TaggedStreamRepr const&) = delete;

  void WriteInt(int id, int value);
  void WriteFloat(int id, float value);
  void WriteDouble(int id, double value);
  void WriteHandle(int id, rfm_Handle value);
  // A pooled string: the item holds its external string.
  void WriteString(int id, cow_String const& value);
  // The text itself, zero-padded to a multiple of 4 bytes. The item carries
  // no length, while Next expects one: a stream is not readable past it.
  void WriteFixedString(int id, cow_String const& value);

  // Reads the next item and makes it the current one; false at the end.
  bool Next();
  // Goes back before the first item: the next Next reads it. Items are
  // written where the stream stands, so a writer that rewinds reads to the
  // end before it writes again, or its items replace those there.
  void Rewind();
  int GetType() const { return m_CurrentType; }
  int GetID() const { return m_CurrentId; }
  int GetInt() const { return m_IntValue; }
  float GetFloat() const { return m_FloatValue; }
  double GetDouble() const { return m_DoubleValue; }
  rfm_Handle GetHandle() const { return m_HandleValue; }
  cow_String const& GetString() const { return m_StringValue; }

  // As for arrays: a writer's new change count, a reader's moved one, else 0.
  int Flush();
  int Snap();
  bool ReadOnly() const { return m_Buffer.ReadOnly(); }
  rfm_Handle Handle() const { return m_Space->Handle(); }
  utl_FileOffset SpaceAllocation() const { return m_Space->Allocation(); }
  // Bytes of the stream, those waiting in the buffer included.
  utl_FileOffset SpaceLength() const { return m_Buffer.Length(); }
  cow_List<cow_String> GetObjStatistics() const;

private:
  void BeginItem(Tag tag, int id);

  // Declared first, so that it goes last: the database closes after the
  // buffer has written into it.
  rfm_Database m_Database;
  std::unique_ptr<rfm_SpaceRepr> m_Space;
  rfm_IOBuffer m_Buffer;
  int m_ChangeCount = 0;
  int m_FlushCountSeen;
  int m_CurrentType = 0;
  int m_CurrentId = 0;
  int m_IntValue = 0;
  float m_FloatValue = 0;
  double m_DoubleValue = 0;
  rfm_Handle m_HandleValue;
  cow_String m_StringValue;
};

#endif
