#include "rfm_IOS.h"

#include "ZQABasAssert.h"
#include "rfm_StagingBuffer.h"
#include "rfm_StringManager.h"

#include <climits>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_IOS";
}

rfm_StringManager::~rfm_StringManager() = default;

rfm_StringManager& rfm_IOS::RequireStringManager() const {
  rfm_StringManager* manager = StringManager();
  ZQA_ASSERT(kSourcePath, manager != nullptr);
  return *manager;
}

int rfm_IOS::ReadStringArray(cow_String* strings, int count) {
  rfm_StringManager& manager = RequireStringManager();
  int size = manager.ExternalStringSize();
  CheckArrayArguments(strings, count, size);
  rfm_StagingBuffer staging(count * size);
  int whole = Read(staging.Data(), count * size) / size;
  if (whole > 0) manager.Internalize(staging.Data(), strings, whole);
  return whole;
}

cow_String rfm_IOS::ReadString() {
  cow_String text;
  if (ReadStringArray(&text, 1) < 1) RaiseEndOfFile();
  return text;
}

void rfm_IOS::WriteStringArray(cow_String const* strings, int count) {
  rfm_StringManager& manager = RequireStringManager();
  int size = manager.ExternalStringSize();
  CheckArrayArguments(strings, count, size);
  rfm_StagingBuffer staging(count * size);
  manager.Externalize(staging.Data(), strings, count);
  if (Write(staging.Data(), count * size) != count * size) RaiseWriteFailed();
}

void rfm_IOS::WriteString(cow_String const& text) { WriteStringArray(&text, 1); }
