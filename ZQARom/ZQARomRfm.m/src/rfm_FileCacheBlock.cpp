#include "rfm_FileCacheBlock.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_FileCache.h"
#include "utl_BinIStream.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileCacheBlock";
}  // namespace

void rfm_FileCacheBlock::Assign(long long key, rfm_FileCachePageMap* map) {
  if (m_Owner != nullptr && m_Owner->IsMember(m_Key) && m_Owner->Get(m_Key) == this) m_Owner->Get(m_Key) = nullptr;
  m_Owner = map;
  m_Key = key;
  m_Length = 0;
}

void rfm_FileCacheBlock::ReadPartial(int& count, char*& buffer, int& remaining, long long& position) {
  long long offset = position - m_Key;
  int available = static_cast<int>(std::max<long long>(0, m_Length - offset));
  int n = std::min(available, remaining);
  if (n > 0) m_Cache->ReadFile(m_FileOffset + offset, buffer, n);
  count += n;
  position += n;
  buffer += n;
  remaining -= n;
}

void rfm_FileCacheBlock::FetchPage(utl_BinIStream& in) {
  int const pageSize = m_Cache->PageSize();
  int length = in.ReadInt();
  // A page longer than the cache's pages would overwrite the next one.
  if (length < 0 || length > pageSize) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("***ERROR: The remote file sent a page of %d bytes; pages "
                                                        "hold at most %d."),
                                          length, pageSize));
  }
  m_Length = 0;
  // The page comes in one piece and goes to the cache file in one write:
  // a page moved in small pieces costs a system call for each.
  std::unique_ptr<char[]> page(new char[static_cast<std::size_t>(pageSize)]);
  in.Read(page.get(), length);
  std::memset(page.get() + length, 0, static_cast<std::size_t>(pageSize - length));
  m_Cache->WriteFile(m_FileOffset, page.get(), pageSize);
  m_Length = length;
}

void rfm_FileCacheBlock::Insert(rfm_FileCacheBlock& list) {
  if (list.m_Next == this) return;
  Remove();
  m_Next = list.m_Next;
  m_Previous = &list;
  list.m_Next->m_Previous = this;
  list.m_Next = this;
}

void rfm_FileCacheBlock::Remove() {
  if (IsAlone()) return;
  m_Previous->m_Next = m_Next;
  m_Next->m_Previous = m_Previous;
  m_Next = m_Previous = this;
}
