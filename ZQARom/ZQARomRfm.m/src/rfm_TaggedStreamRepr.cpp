#include "rfm_TaggedStreamRepr.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "rfm_ChangeCount.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_Exc.h"
#include "rfm_HandleConverter.h"
#include "rfm_ObjectMagic.h"
#include "rfm_StringManager.h"

#include <climits>
#include <cstdint>

// The on-disk form of a tagged stream, all words 32-bit in the file's byte
// order:
//
//  offset  size  content
//       0     4  magic 0xFAAFEBBE
//       4     4  change count, 0 in a new stream, raised at every flush
//       8        items, one after the other, up to the space's length
//
// An item is its tag type (4 bytes), the caller's id (4 bytes) and a value:
//
//  tag  value as written
//    1  int, 4 bytes
//    2  handle, 8 bytes (rfm_HandleConverter)
//    3  float, 4 bytes
//    4  double, 8 bytes
//    6  external string of the pool, 8 bytes
//    7  the text, zero-padded to the next multiple of 4 bytes; Next reads a
//       length word before it, which the writer never puts

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_TaggedStreamRepr";

[[noreturn]] void Raise(int line, char const* text) { nex_ThrowMessage(kSourcePath, line, atr_translate(text)); }

[[noreturn]] void RaiseCorrupt(int line) {
  Raise(line,
        "rfm_TaggedStreamRepr::rfm_TaggedStreamRepr: Tagged stream object format is corrupt in ZDB/ZAE.  File may be "
        "unusable.");
}

rfm_SpaceRepr* NewStreamSpace(rfm_Database const& database) {
  if (database.ReadOnly()) rfm_IssueWritingToReadOnlyException();
  return database.Repr().Space(-1);
}

// An item that claims more bytes than the stream has left is damage, not
// the end of the stream.
void Need(rfm_IOBuffer const& buffer, utl_FileOffset bytes) {
  if (buffer.Length() - buffer.Location() < bytes) RaiseCorrupt(__LINE__);
}

}  // namespace

rfm_TaggedStreamRepr::rfm_TaggedStreamRepr(rfm_Database const& database, rfm_Handle const& handle, int bufferSize)
    : m_Database(database), m_Space(database.Repr().Space(handle, -1)), m_Buffer(m_Space.get(), bufferSize),
      m_FlushCountSeen(database.GetFlushCount()) {
  int header[2] = {};
  if (m_Buffer.ReadIntArray(header, 2) < 2) RaiseCorrupt(__LINE__);
  if (static_cast<std::uint32_t>(header[0]) != kRfmTaggedStreamMagic) {
    Raise(__LINE__,
          "rfm_TaggedStreamRepr::rfm_TaggedStreamRepr: Handle is not to a Tagged Stream object in ZDB/ZAE file.  "
          "File may be unusable.");
  }
  m_ChangeCount = header[1];
}

rfm_TaggedStreamRepr::rfm_TaggedStreamRepr(rfm_Database const& database, int bufferSize)
    : m_Database(database), m_Space(NewStreamSpace(database)), m_Buffer(m_Space.get(), bufferSize),
      m_FlushCountSeen(database.GetFlushCount()) {
  int const header[2] = {static_cast<int>(kRfmTaggedStreamMagic), m_ChangeCount};
  m_Buffer.WriteIntArray(header, 2);
}

rfm_TaggedStreamRepr::~rfm_TaggedStreamRepr() = default;

void rfm_TaggedStreamRepr::BeginItem(Tag tag, int id) {
  int const words[2] = {tag, id};
  m_Buffer.WriteIntArray(words, 2);
  m_CurrentType = tag;
  m_CurrentId = id;
}

void rfm_TaggedStreamRepr::WriteInt(int id, int value) {
  BeginItem(kTagInt, id);
  m_Buffer.WriteInt(value);
}

void rfm_TaggedStreamRepr::WriteFloat(int id, float value) {
  BeginItem(kTagFloat, id);
  m_Buffer.WriteFloat(value);
}

void rfm_TaggedStreamRepr::WriteDouble(int id, double value) {
  BeginItem(kTagDouble, id);
  m_Buffer.WriteDouble(value);
}

void rfm_TaggedStreamRepr::WriteHandle(int id, rfm_Handle value) {
  BeginItem(kTagHandle, id);
  char stored[rfm_HandleConverter::ExternalSize()];
  rfm_HandleConverter::Externalize(rfm_FileOrder(), stored, value);
  m_Buffer.Write(stored, rfm_HandleConverter::ExternalSize());
}

void rfm_TaggedStreamRepr::WriteString(int id, cow_String const& value) {
  BeginItem(kTagString, id);
  m_Buffer.WriteString(value);
}

void rfm_TaggedStreamRepr::WriteFixedString(int id, cow_String const& value) {
  long long width = (static_cast<long long>(value.Length()) + 3) & ~3LL;
  ZQA_ASSERT(kSourcePath, width <= INT_MAX);
  BeginItem(kTagFixedString, id);
  m_Buffer.WriteFixedString(value, static_cast<int>(width));
}

bool rfm_TaggedStreamRepr::Next() {
  if (m_Buffer.Length() <= m_Buffer.Location()) return false;
  Need(m_Buffer, 8);
  m_CurrentType = m_Buffer.ReadInt();
  m_CurrentId = m_Buffer.ReadInt();
  m_IntValue = 0;
  m_FloatValue = 0;
  m_DoubleValue = 0;
  m_HandleValue = rfm_Handle();
  m_StringValue = cow_String();
  switch (m_CurrentType) {
    case kTagInt:
      Need(m_Buffer, 4);
      m_IntValue = m_Buffer.ReadInt();
      break;
    case kTagHandle: {
      char stored[rfm_HandleConverter::ExternalSize()];
      Need(m_Buffer, sizeof stored);
      m_Buffer.Read(stored, sizeof stored);
      m_HandleValue = rfm_HandleConverter::Internalize(rfm_FileOrder(), stored);
      break;
    }
    case kTagFloat:
      Need(m_Buffer, 4);
      m_FloatValue = m_Buffer.ReadFloat();
      break;
    case kTagDouble:
      Need(m_Buffer, 8);
      m_DoubleValue = m_Buffer.ReadDouble();
      break;
    case kTagString:
      Need(m_Buffer, m_Buffer.StringManager()->ExternalStringSize());
      m_StringValue = m_Buffer.ReadString();
      break;
    case kTagFixedString: {
      Need(m_Buffer, 4);
      int length = m_Buffer.ReadInt();
      if (length < 0) RaiseCorrupt(__LINE__);
      Need(m_Buffer, length);
      m_StringValue = m_Buffer.ReadFixedString(length);
      break;
    }
    default:
      ZQA_ASSERT(kSourcePath, !"rfm_TaggedStreamRepr::Next: Bad type from Tagged Stream.");
  }
  return true;
}

void rfm_TaggedStreamRepr::Rewind() { m_Buffer.Seek(kHeaderSize); }

int rfm_TaggedStreamRepr::Flush() { return rfm_FlushChangeCount(m_Buffer, m_ChangeCount); }

int rfm_TaggedStreamRepr::Snap() {
  return rfm_SnapChangeCount(m_Buffer, m_Database.GetFlushCount(), m_FlushCountSeen, m_ChangeCount);
}

cow_List<cow_String> rfm_TaggedStreamRepr::GetObjStatistics() const {
  return m_Database.GetObjStatistics(Handle());
}
