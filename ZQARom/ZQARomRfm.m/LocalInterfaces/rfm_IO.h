#ifndef rfm_IO_h
#define rfm_IO_h

#include "cow_String.h"
#include "mem_Alloc.h"
#include "omi_Swapper.h"
#include "utl_FileOffset.h"

// The byte order of every database file, whatever the host.
constexpr int kRfmFileEndType = omi_LittleEndian;

// Whether numbers of a database file must be swapped on this host.
inline omi_Swapper rfm_FileOrder() { return omi_Swapper(kRfmFileEndType); }

// Typed I/O over a flat sequence of bytes. Derived classes supply the raw
// byte operations; the typed reads and writes here move ints, floats,
// doubles and fixed-width strings in the file's fixed byte order.
//
// Invariant: the swap flag is decided once, at construction, from the
// file's byte order and the host's.
class rfm_IO : public mem_AllocationOperators {
public:
  virtual ~rfm_IO();

  virtual bool ReadOnly() const = 0;
  virtual utl_FileOffset Length() const = 0;
  virtual void Seek(utl_FileOffset offset) = 0;
  virtual utl_FileOffset Location() const = 0;
  virtual void Flush() = 0;
  virtual void Extend(utl_FileOffset delta) = 0;
  // Raw bytes: Read returns the count read, which is short at the end.
  virtual int Read(char* buffer, int count) = 0;
  virtual int Write(char const* buffer, int count) = 0;

  // Whole elements read; a short count is not an error here.
  virtual int ReadIntArray(int* values, int count);
  virtual int ReadFloatArray(float* values, int count);
  virtual int ReadDoubleArray(double* values, int count);
  virtual void WriteIntArray(int const* values, int count);
  virtual void WriteFloatArray(float const* values, int count);
  virtual void WriteDoubleArray(double const* values, int count);

  virtual int ReadInt();
  virtual float ReadFloat();
  virtual double ReadDouble();
  // Reads exactly width bytes; zero bytes inside stay part of the string.
  virtual cow_String ReadFixedString(int width);
  virtual void WriteInt(int value);
  virtual void WriteFloat(float value);
  virtual void WriteDouble(double value);
  // Writes exactly width bytes: the text cut to width, or zero-filled.
  virtual void WriteFixedString(cow_String const& text, int width);

  bool SwapBytes() const { return m_Swap; }

protected:
  explicit rfm_IO(int endType = kRfmFileEndType) : m_Swap(omi_Swapper(endType).Swap()) {}

  // The checks and failures that every typed array operation shares.
  static void CheckArrayArguments(void const* values, int count, int elementSize);
  [[noreturn]] static void RaiseEndOfFile();
  [[noreturn]] static void RaiseWriteFailed();

private:
  int ReadArray(void* values, int count, int elementSize);
  void WriteArray(void const* values, int count, int elementSize);

  bool m_Swap;
};

#endif
