#include "rfm_StringManagerFile.h"

#include "ZQABasAssert.h"
#include "atr_translate.h"
#include "rfm_IntConverter.h"
#include "rfm_OffsetConverter.h"

#include <climits>
#include <cstdint>
#include <cstring>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_StringManagerFile";

int StoredLength(char const* bytes) { return rfm_IntConverter::Internalize(rfm_FileOrder(), bytes); }

void StoreLength(char* bytes, int length) { rfm_IntConverter::Externalize(rfm_FileOrder(), bytes, length); }

[[noreturn]] void RaiseNotAvailable(int line) {
  nex_ThrowMessage(kSourcePath, line, atr_translate("rfm_StringManagerFile::String - String is not available."));
}

// Reads count bytes from space, in pieces that an int can count.
void ReadAll(rfm_SpaceRepr& space, char* target, utl_FileOffset count) {
  while (count > 0) {
    int piece = static_cast<int>(std::min<utl_FileOffset>(count, INT_MAX / 2));
    int got = space.Read(target, piece);
    if (got != piece) RaiseNotAvailable(__LINE__);
    target += got;
    count -= got;
  }
}

}  // namespace

rfm_StringManagerFile::~rfm_StringManagerFile() = default;

void rfm_StringManagerFile::Open(rfm_SpaceRepr* space) {
  m_Space.reset(space);
  m_NextFree = kFirstRecord;
  m_Name2Offset.Clear();
  m_Offset2Name.Clear();
  m_Pending.clear();
  m_Recent.assign(kRecentStrings, Recent());
  if (m_Space) Load();
}

void rfm_StringManagerFile::Remember(cow_String const& text, utl_FileOffset offset) {
  m_Name2Offset.Insert(text, offset);
  m_Offset2Name.Insert(offset, text);
}

void rfm_StringManagerFile::Load() {
  // Only records beyond those known are read. A writer's pending records
  // lie beyond the space's end, so for a writer there is never anything.
  utl_FileOffset end = m_Space->Length();
  if (end <= m_NextFree) return;
  utl_FileOffset first = m_NextFree;
  utl_FileOffset count = end - first;
  std::vector<char> bytes(static_cast<std::size_t>(count));
  m_Space->Seek(first);
  ReadAll(*m_Space, bytes.data(), count);
  utl_FileOffset at = 0;
  while (at < count) {
    // A record that runs past the pool is damage, not a string.
    if (at + 4 > count) RaiseNotAvailable(__LINE__);
    int length = StoredLength(bytes.data() + at);
    if (length < 0 || at + RecordSize(length) > count) RaiseNotAvailable(__LINE__);
    Remember(cow_String(bytes.data() + at + 4, length), first + at);
    at += RecordSize(length);
  }
  m_NextFree = end;
}

cow_String rfm_StringManagerFile::String(utl_FileOffset offset) {
  cow_String const* found = m_Offset2Name.Find(offset);
  if (found == nullptr) {
    Load();
    found = m_Offset2Name.Find(offset);
    if (found == nullptr) RaiseNotAvailable(__LINE__);
  }
  return *found;
}

utl_FileOffset rfm_StringManagerFile::String(cow_String const& text) {
  auto address = reinterpret_cast<std::uintptr_t>(text.CStr());
  Recent& recent = m_Recent[(address >> 4) % kRecentStrings];
  if (recent.m_Offset != 0 && recent.m_Text.CStr() == text.CStr() && recent.m_Text.Length() == text.Length()) {
    return recent.m_Offset;
  }
  recent.m_Offset = Lookup(text);
  recent.m_Text = text;
  return recent.m_Offset;
}

utl_FileOffset rfm_StringManagerFile::Lookup(cow_String const& text) {
  if (utl_FileOffset const* found = m_Name2Offset.Find(text)) return *found;
  utl_FileOffset offset = m_NextFree;
  Remember(text, offset);
  m_Pending.push_back(text);
  m_NextFree += RecordSize(text.Length());
  return offset;
}

void rfm_StringManagerFile::Flush() {
  if (m_Pending.empty() || m_Space->ReadOnly()) return;
  // Where the first pending record belongs, not the space's length: a
  // flush that failed half way (a full disk) may have grown that already.
  utl_FileOffset end = *m_Name2Offset.Find(m_Pending.front());
  utl_FileOffset unwritten = m_NextFree - end;
  ZQA_ASSERT(kSourcePath, unwritten > 0 && unwritten <= INT_MAX);
  std::vector<char> bytes(static_cast<std::size_t>(unwritten), '\0');
  utl_FileOffset cursor = 0;
  for (cow_String const& text : m_Pending) {
    ZQA_ASSERT(kSourcePath, cursor == *m_Name2Offset.Find(text) - end);
    StoreLength(bytes.data() + cursor, text.Length());
    std::memcpy(bytes.data() + cursor + 4, text.CStr(), static_cast<std::size_t>(text.Length()));
    cursor += RecordSize(text.Length());
  }
  ZQA_ASSERT(kSourcePath, cursor == unwritten);
  m_Space->Seek(end);
  m_Space->Write(bytes.data(), static_cast<int>(unwritten));
  m_Pending.clear();
}

void rfm_StringManagerFile::Neuter(char const* external, cow_String const& replacement) {
  Flush();
  utl_FileOffset offset = rfm_OffsetConverter::Internalize(rfm_FileOrder(), external);
  if (offset < kFirstRecord) RaiseNotAvailable(__LINE__);
  m_Space->Seek(offset);
  char head[4];
  if (m_Space->Read(head, 4) != 4) RaiseNotAvailable(__LINE__);
  int length = StoredLength(head);
  if (length < 1) return;
  // The record keeps its place and its room; the maps keep the old text.
  std::vector<char> characters(static_cast<std::size_t>(length), '\0');
  int copied = std::min(length, replacement.Length());
  std::memcpy(characters.data(), replacement.CStr(), static_cast<std::size_t>(copied));
  StoreLength(head, copied);
  m_Space->Seek(offset);
  m_Space->Write(head, 4);
  m_Space->Write(characters.data(), length);
}

void rfm_StringManagerFile::Internalize(char const* source, cow_String* strings, int count) {
  for (int i = 0; i < count; ++i) {
    strings[i] = String(rfm_OffsetConverter::Internalize(rfm_FileOrder(), source + i * rfm_OffsetConverter::ExternalSize()));
  }
}

void rfm_StringManagerFile::Externalize(char* target, cow_String const* strings, int count) {
  for (int i = 0; i < count; ++i) {
    rfm_OffsetConverter::Externalize(rfm_FileOrder(), target + i * rfm_OffsetConverter::ExternalSize(), String(strings[i]));
  }
}

int rfm_StringManagerFile::ExternalStringSize() const { return rfm_OffsetConverter::ExternalSize(); }
