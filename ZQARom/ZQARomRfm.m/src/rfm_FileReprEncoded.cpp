#include "rfm_FileReprEncoded.h"

#include "utl_File.h"

#include <cstring>

namespace {
char const kEncodedMagic[] = "ZBXTSA";
constexpr int kEncodedMagicLength = sizeof kEncodedMagic - 1;
}  // namespace

bool rfm_FileReprEncoded::IsEncoded(cow_String const& name) {
  utl_File file(name, utl_FileAccessRead, utl_FileShareNone);
  char head[kEncodedMagicLength];
  return file.Read(head, kEncodedMagicLength) == kEncodedMagicLength &&
         std::memcmp(head, kEncodedMagic, kEncodedMagicLength) == 0;
}
