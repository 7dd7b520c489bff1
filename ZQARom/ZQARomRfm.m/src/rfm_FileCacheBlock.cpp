#include "rfm_FileCacheBlock.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "utl_BinIStream.h"

#include <algorithm>
#include <cstring>
#include <sys/mman.h>

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileCacheBlock";
}  // namespace

rfm_FileCacheBlock::~rfm_FileCacheBlock() {
  if (m_Data != nullptr) ::munmap(m_Data, static_cast<std::size_t>(m_PageSize));
}

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
  if (n > 0) std::memcpy(buffer, m_Data + offset, static_cast<std::size_t>(n));
  count += n;
  position += n;
  buffer += n;
  remaining -= n;
}

void rfm_FileCacheBlock::FetchPage(utl_BinIStream& in) {
  int length = in.ReadInt();
  // A page longer than the cache's pages would overwrite the next one.
  if (length < 0 || length > m_PageSize) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("***ERROR: The remote file sent a page of %d bytes; pages "
                                                        "hold at most %d."),
                                          length, m_PageSize));
  }
  // The page comes from the pipe straight into the mapped cache file, and
  // counts only once it is all there.
  m_Length = 0;
  in.Read(m_Data, length);
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
