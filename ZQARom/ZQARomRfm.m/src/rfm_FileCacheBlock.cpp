#include "rfm_FileCacheBlock.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_FileCache.h"
#include "utl_BinIStream.h"

#include <algorithm>
#include <cstring>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileCacheBlock";
// Pages move through a buffer of this size on the stack.
constexpr int kChunk = rfm_FileCache::kPageQuantum;
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
  char chunk[kChunk];
  for (int done = 0; done < pageSize; done += kChunk) {
    int take = std::clamp(length - done, 0, kChunk);
    if (take > 0) in.Read(chunk, take);
    std::memset(chunk + take, 0, static_cast<std::size_t>(kChunk - take));
    m_Cache->WriteFile(m_FileOffset + done, chunk, kChunk);
  }
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
