#include "rfm_IO.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "rfm_StagingBuffer.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_IO";

char const kInvalidArrayPointer[] = "***ERROR: Invalid array pointer.";
// Writes deliberately give the reading text too: there is no writing variant.
char const kInvalidArrayLength[] = "***ERROR: Invalid length when reading array.";
char const kUnexpectedEndOfFile[] = "***ERROR: Unexpected End Of File.";
char const kWriteFailed[] = "***ERROR: Write operation failed.";

[[noreturn]] void Raise(int line, char const* text) { nex_ThrowMessage(kSourcePath, line, atr_translate(text)); }

}  // namespace

rfm_IO::~rfm_IO() = default;

void rfm_IO::CheckArrayArguments(void const* values, int count, int elementSize) {
  if (values == nullptr) Raise(__LINE__, kInvalidArrayPointer);
  if (count < 1 || count > INT_MAX / elementSize) Raise(__LINE__, kInvalidArrayLength);
}

void rfm_IO::RaiseEndOfFile() { Raise(__LINE__, kUnexpectedEndOfFile); }

void rfm_IO::RaiseWriteFailed() { Raise(__LINE__, kWriteFailed); }

int rfm_IO::ReadArray(void* values, int count, int elementSize) {
  CheckArrayArguments(values, count, elementSize);
  int bytes = count * elementSize;
  // Staged, so that the caller's array receives whole elements only.
  rfm_StagingBuffer staging(bytes);
  int elements = Read(staging.Data(), bytes) / elementSize;
  if (elements > 0) {
    if (m_Swap) {
      omi_SwapperGuts::InternalizeArray(values, staging.Data(), elements, elementSize);
    } else {
      omi_SwapperGuts::CopyBytes(values, staging.Data(), elements * elementSize);
    }
  }
  return elements;
}

void rfm_IO::WriteArray(void const* values, int count, int elementSize) {
  CheckArrayArguments(values, count, elementSize);
  int bytes = count * elementSize;
  int written;
  if (m_Swap) {
    rfm_StagingBuffer staging(bytes);
    omi_SwapperGuts::ExternalizeArray(staging.Data(), values, count, elementSize);
    written = Write(staging.Data(), bytes);
  } else {
    written = Write(static_cast<char const*>(values), bytes);
  }
  if (written != bytes) RaiseWriteFailed();
}

int rfm_IO::ReadIntArray(int* values, int count) { return ReadArray(values, count, sizeof(int)); }
int rfm_IO::ReadFloatArray(float* values, int count) { return ReadArray(values, count, sizeof(float)); }
int rfm_IO::ReadDoubleArray(double* values, int count) { return ReadArray(values, count, sizeof(double)); }
void rfm_IO::WriteIntArray(int const* values, int count) { WriteArray(values, count, sizeof(int)); }
void rfm_IO::WriteFloatArray(float const* values, int count) { WriteArray(values, count, sizeof(float)); }
void rfm_IO::WriteDoubleArray(double const* values, int count) { WriteArray(values, count, sizeof(double)); }

// The scalars go through the virtual array operations, so that a derived
// class that moves arrays faster moves scalars faster too.
int rfm_IO::ReadInt() {
  int value = 0;
  if (ReadIntArray(&value, 1) < 1) RaiseEndOfFile();
  return value;
}

float rfm_IO::ReadFloat() {
  float value = 0;
  if (ReadFloatArray(&value, 1) < 1) RaiseEndOfFile();
  return value;
}

double rfm_IO::ReadDouble() {
  double value = 0;
  if (ReadDoubleArray(&value, 1) < 1) RaiseEndOfFile();
  return value;
}

void rfm_IO::WriteInt(int value) { WriteIntArray(&value, 1); }
void rfm_IO::WriteFloat(float value) { WriteFloatArray(&value, 1); }
void rfm_IO::WriteDouble(double value) { WriteDoubleArray(&value, 1); }

cow_String rfm_IO::ReadFixedString(int width) {
  if (width < 1) return cow_String();
  if (width == INT_MAX) Raise(__LINE__, kInvalidArrayLength);
  char* buffer = static_cast<char*>(mem_Malloc(static_cast<std::size_t>(width) + 1));
  int got;
  try {
    got = Read(buffer, width);
  } catch (...) {
    mem_Free(buffer);
    throw;
  }
  if (got < width) {
    mem_Free(buffer);
    RaiseEndOfFile();
  }
  return cow_String::Adopt(buffer, width);
}

void rfm_IO::WriteFixedString(cow_String const& text, int width) {
  if (width < 1) return;
  rfm_StagingBuffer staging(width);
  char* field = staging.Data();
  std::memset(field, 0, static_cast<std::size_t>(width));
  // Like strncpy: up to the text's first zero byte, cut at the width.
  std::size_t textBytes = std::strlen(text.CStr());
  std::memcpy(field, text.CStr(), std::min(textBytes, static_cast<std::size_t>(width)));
  if (Write(field, width) != width) RaiseWriteFailed();
}
