#include "rfm_IntConverter.h"
#include "rfm_ArrayRepr.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "rfm_ChangeCount.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_Exc.h"
#include "rfm_ObjectMagic.h"
#include "rfm_StringManager.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

// The on-disk form of an array, all words 32-bit in the file's byte order:
//
//  offset  size  content
//       0     4  magic 0xFFFAEEEB
//       4     4  change count, 0 in a new array, raised at every flush
//       8     4  element type: rfm_TypeInt 1, rfm_TypeFloat 3,
//                rfm_TypeDouble 4 or rfm_TypeString 6
//      12     4  fields per row
//      16        the rows, with no gaps
//
// A row is fields-per-row elements: 4 bytes each for int and float, 8 for
// double, and an external string of the pool (8 bytes) for strings.

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_ArrayRepr";

// CreateCopy moves at most this many bytes at a time.
constexpr int kCopyChunk = 1048576;
// Append moves strings in batches of this many, each through the pools.
constexpr int kStringBatch = 16;
// Elements given to the buffer in one call, so that a call's bytes fit an int.
constexpr int kElementsPerCall = 1 << 27;

[[noreturn]] void Raise(int line, char const* text) { nex_ThrowMessage(kSourcePath, line, atr_translate(text)); }

[[noreturn]] void RaiseCorrupt(int line) {
  Raise(line, "rfm_ArrayRepr::rfm_ArrayRepr: Array object in ZDB/ZAE file is corrupt.  File may be unusable.");
}

[[noreturn]] void RaiseIllegalType(int line) { Raise(line, "rfm_ArrayRepr::RowSize - illegal array type."); }

// Checks the arguments before anything is allocated: a new array that can
// never be made must not take a slot in the database.
rfm_SpaceRepr* NewArraySpace(rfm_Database const& database, rfm_Type type, int fieldsPerRow, int quantum) {
  if (!rfm_ArrayRepr::IsElementType(type)) RaiseIllegalType(__LINE__);
  ZQA_ASSERT(kSourcePath, fieldsPerRow > 0);
  ZQA_ASSERT(kSourcePath, fieldsPerRow <= rfm_ArrayRepr::kMaxFieldsPerRow);
  if (database.ReadOnly()) rfm_IssueWritingToReadOnlyException();
  return database.Repr().Space(quantum);
}

// The arguments of Read and Write; the elements of rowCount rows must fit
// the int that Read answers.
template <class T>
void CheckRows(T const* data, int rowCount, int fieldsPerRow) {
  ZQA_ASSERT(kSourcePath, data != NULL);
  ZQA_ASSERT(kSourcePath, rowCount > 0);
  ZQA_ASSERT(kSourcePath, rowCount <= INT_MAX / fieldsPerRow);
}

// Numbers. A small transfer in the file's byte order is a plain copy into
// or out of the buffer, inline; the rest takes the typed path, which swaps
// while copying and sends large arrays around the buffer.
template <class T>
bool CopiesAsBytes(rfm_IOBuffer const& buffer, int count) {
  return !buffer.SwapBytes() && count < buffer.Size() / static_cast<int>(sizeof(T));
}

int ReadTyped(rfm_IOBuffer& buffer, int* data, int count) { return buffer.ReadIntArray(data, count); }
int ReadTyped(rfm_IOBuffer& buffer, float* data, int count) { return buffer.ReadFloatArray(data, count); }
int ReadTyped(rfm_IOBuffer& buffer, double* data, int count) { return buffer.ReadDoubleArray(data, count); }
void WriteTyped(rfm_IOBuffer& buffer, int const* data, int count) { buffer.WriteIntArray(data, count); }
void WriteTyped(rfm_IOBuffer& buffer, float const* data, int count) { buffer.WriteFloatArray(data, count); }
void WriteTyped(rfm_IOBuffer& buffer, double const* data, int count) { buffer.WriteDoubleArray(data, count); }

template <class T>
int ReadElements(rfm_IOBuffer& buffer, T* data, int count) {
  if (!CopiesAsBytes<T>(buffer, count)) return ReadTyped(buffer, data, count);
  int size = static_cast<int>(sizeof(T));
  int got = buffer.ReadBytes(reinterpret_cast<char*>(data), count * size);
  // A torn last element stays unread, as on the typed path.
  if (got % size != 0) buffer.Seek(buffer.Location() - got % size);
  return got / size;
}

template <class T>
void WriteElements(rfm_IOBuffer& buffer, T const* data, int count) {
  if (!CopiesAsBytes<T>(buffer, count)) return WriteTyped(buffer, data, count);
  buffer.WriteBytes(reinterpret_cast<char const*>(data), count * static_cast<int>(sizeof(T)));
}

// Strings pass through the pool of the buffer's database.
int ReadElements(rfm_IOBuffer& buffer, cow_String* data, int count) { return buffer.ReadStringArray(data, count); }
void WriteElements(rfm_IOBuffer& buffer, cow_String const* data, int count) { buffer.WriteStringArray(data, count); }

}  // namespace

bool rfm_ArrayRepr::IsElementType(int type) {
  return type == rfm_TypeInt || type == rfm_TypeFloat || type == rfm_TypeDouble || type == rfm_TypeString;
}

rfm_ArrayRepr::rfm_ArrayRepr(rfm_Database const& database, rfm_Handle const& handle, int quantum, int bufferSize)
    : m_Database(database), m_Space(database.Repr().Space(handle, quantum)), m_Buffer(m_Space.get(), bufferSize),
      m_FlushCountSeen(database.GetFlushCount()) {
  int header[4] = {};
  if (m_Buffer.ReadIntArray(header, 4) < 4) RaiseCorrupt(__LINE__);
  if (static_cast<std::uint32_t>(header[0]) != kRfmArrayMagic) {
    Raise(__LINE__,
          "rfm_ArrayRepr::rfm_ArrayRepr: Handle is not to an Array object in ZDB/ZAE file.  File may be unusable.");
  }
  if (!IsElementType(header[2]) || header[3] < 1 || header[3] > kMaxFieldsPerRow) RaiseCorrupt(__LINE__);
  m_ChangeCount = header[1];
  m_Type = static_cast<rfm_Type>(header[2]);
  m_FieldsPerRow = header[3];
}

rfm_ArrayRepr::rfm_ArrayRepr(rfm_Database const& database, rfm_Type type, int fieldsPerRow, int quantum,
                             int bufferSize)
    : m_Database(database), m_Space(NewArraySpace(database, type, fieldsPerRow, quantum)),
      m_Buffer(m_Space.get(), bufferSize), m_Type(type), m_FieldsPerRow(fieldsPerRow),
      m_FlushCountSeen(database.GetFlushCount()) {
  int const header[4] = {static_cast<int>(kRfmArrayMagic), m_ChangeCount, type, fieldsPerRow};
  m_Buffer.WriteIntArray(header, 4);
}

rfm_ArrayRepr::~rfm_ArrayRepr() = default;

int rfm_ArrayRepr::RowSize() const {
  switch (m_Type) {
    case rfm_TypeInt:
    case rfm_TypeFloat:
      return m_FieldsPerRow * 4;
    case rfm_TypeDouble:
      return m_FieldsPerRow * 8;
    case rfm_TypeString:
      return m_FieldsPerRow * m_Buffer.StringManager()->ExternalStringSize();
    default:
      RaiseIllegalType(__LINE__);
  }
}

template <class T>
int rfm_ArrayRepr::ReadRows(T* data, int rowCount) {
  CheckRows(data, rowCount, m_FieldsPerRow);
  int elements = rowCount * m_FieldsPerRow;
  int done = 0;
  while (done < elements) {
    int wanted = std::min(elements - done, kElementsPerCall);
    int got = ReadElements(m_Buffer, data + done, wanted);
    done += got;
    if (got < wanted) break;
  }
  return done;
}

template <class T>
int rfm_ArrayRepr::WriteRows(T const* data, int rowCount) {
  CheckRows(data, rowCount, m_FieldsPerRow);
  int elements = rowCount * m_FieldsPerRow;
  for (int done = 0; done < elements; done += kElementsPerCall) {
    WriteElements(m_Buffer, data + done, std::min(elements - done, kElementsPerCall));
  }
  return rowCount;
}

int rfm_ArrayRepr::Read(int* data, int rowCount) { return ReadRows(data, rowCount); }
int rfm_ArrayRepr::Read(float* data, int rowCount) { return ReadRows(data, rowCount); }
int rfm_ArrayRepr::Read(double* data, int rowCount) { return ReadRows(data, rowCount); }
int rfm_ArrayRepr::Read(cow_String* data, int rowCount) { return ReadRows(data, rowCount); }
int rfm_ArrayRepr::Write(int const* data, int rowCount) { return WriteRows(data, rowCount); }
int rfm_ArrayRepr::Write(float const* data, int rowCount) { return WriteRows(data, rowCount); }
int rfm_ArrayRepr::Write(double const* data, int rowCount) { return WriteRows(data, rowCount); }
int rfm_ArrayRepr::Write(cow_String const* data, int rowCount) { return WriteRows(data, rowCount); }

void rfm_ArrayRepr::Seek(int row) {
  ZQA_ASSERT(kSourcePath, row >= 0);
  m_Buffer.Seek(kHeaderSize + static_cast<utl_FileOffset>(row) * RowSize());
}

// Rounded to the nearest row, so that a torn last row counts from its half.
int rfm_ArrayRepr::RowsAt(utl_FileOffset offset) const {
  if (offset <= kHeaderSize) return 0;
  double rows = static_cast<double>(offset - kHeaderSize) / RowSize() + 0.5;
  ZQA_ASSERT(kSourcePath, rows <= INT_MAX);
  return static_cast<int>(rows);
}

int rfm_ArrayRepr::Location() const { return RowsAt(m_Buffer.Location()); }

int rfm_ArrayRepr::Length() const { return RowsAt(m_Buffer.Length()); }

void rfm_ArrayRepr::Truncate(int rows) {
  if (ReadOnly()) Raise(__LINE__, "***ERROR: Attempt to truncate read only array.");
  ZQA_ASSERT(kSourcePath, rows >= 0);
  m_Buffer.Flush();
  m_Buffer.Seek(kHeaderSize);
  m_Space->Truncate(kHeaderSize + static_cast<utl_FileOffset>(rows) * RowSize());
}

int rfm_ArrayRepr::Flush() { return rfm_FlushChangeCount(m_Buffer, m_ChangeCount); }

int rfm_ArrayRepr::Snap() {
  return rfm_SnapChangeCount(m_Buffer, m_Database.GetFlushCount(), m_FlushCountSeen, m_ChangeCount);
}

void rfm_ArrayRepr::Append(rfm_ArrayRepr& other) {
  if (ReadOnly()) Raise(__LINE__, "rfm_ArrayRepr::Append - Attempt to append to read only array.");
  // Appending an array to itself would read what it writes, without end.
  bool const sameObject = &m_Database.Repr() == &other.m_Database.Repr() && Handle() == other.Handle();
  ZQA_ASSERT(kSourcePath, !sameObject);
  Flush();
  other.Flush();
  m_Buffer.Flush();
  other.m_Buffer.Flush();
  m_Buffer.Seek(m_Buffer.Length());
  other.m_Buffer.Seek(kHeaderSize);
  if (m_Type != rfm_TypeString) {
    m_Buffer.Append(other.m_Buffer);
    return;
  }
  // External strings name records in their own database's pool: each string
  // is read through other's pool and stored again in this one's.
  cow_String batch[kStringBatch];
  for (;;) {
    int got = other.m_Buffer.ReadStringArray(batch, kStringBatch);
    if (got < 1) break;
    m_Buffer.WriteStringArray(batch, got);
  }
}

// Arrays hold no handles (their types are checked), so equal element types
// and widths are all that a raw append needs.
bool rfm_ArrayRepr::CopyAllowed(rfm_ArrayRepr const& other) const {
  return m_Type == other.m_Type && m_FieldsPerRow == other.m_FieldsPerRow;
}

rfm_Handle rfm_ArrayRepr::CreateCopy(rfm_DatabaseRepr& from, rfm_DatabaseRepr& to, rfm_Handle handle) {
  std::unique_ptr<rfm_SpaceRepr> source(from.Space(handle, -1));
  utl_FileOffset length = source->Length();
  int chunkSize = static_cast<int>(std::min<utl_FileOffset>(length, kCopyChunk));
  std::unique_ptr<char[]> chunk(new char[static_cast<std::size_t>(chunkSize)]);
  // A space too short for the header cannot be read as an array.
  if (chunkSize < kHeaderSize || source->Read(chunk.get(), chunkSize) != chunkSize) {
    Raise(__LINE__, "rfm_ArrayRepr::CreateCopy: Array read failed. (1)  File may be unusable.");
  }
  if (static_cast<std::uint32_t>(rfm_IntConverter::Internalize(rfm_FileOrder(), chunk.get())) != kRfmArrayMagic) {
    Raise(__LINE__,
          "rfm_ArrayRepr::CreateCopy: Handle is not to an Array object in ZDB/ZAE file.  File may be unusable.");
  }
  // The element type: external strings name records of from's pool, which
  // mean nothing in to's.
  int const data = rfm_IntConverter::Internalize(rfm_FileOrder(), chunk.get() + 8);
  ZQA_ASSERT(kSourcePath, data != rfm_TypeString);

  if (to.ReadOnly()) rfm_IssueWritingToReadOnlyException();
  std::unique_ptr<rfm_SpaceRepr> target(to.Space(-1));
  target->Write(chunk.get(), chunkSize);
  for (utl_FileOffset remaining = length - chunkSize; remaining > 0;) {
    int piece = static_cast<int>(std::min<utl_FileOffset>(remaining, chunkSize));
    if (source->Read(chunk.get(), piece) != piece) {
      Raise(__LINE__, "rfm_ArrayRepr::CreateCopy: Array read failed. (2)  File may be unusable.");
    }
    target->Write(chunk.get(), piece);
    remaining -= piece;
  }
  return target->Handle();
}

cow_List<cow_String> rfm_ArrayRepr::GetObjStatistics() const { return m_Database.GetObjStatistics(Handle()); }
