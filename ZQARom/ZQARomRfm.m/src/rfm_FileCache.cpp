#include "rfm_FileCache.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "omi_BtreeIterator.h"
#include "rfm_FileException.h"
#include "utl_CommandLine.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileCache";

char const kCacheFilePrefix[] = "zbxrdb_cache_";
char const kPageSizeOption[] = "nzdb_page_size";
char const kCacheLimitOption[] = "nzdb_cache_limit";
constexpr int kLargestPageKiB = 65536;
constexpr int kOutOfRangePageKiB = 2048;
constexpr long long kMiB = 1 << 20;

}  // namespace

rfm_FileCache::rfm_FileCache() : m_PageSize(PageSizeFromCommandLine()) {
  Open();
  m_PageLimit = PageLimitFor(m_PageSize, m_TempFile->AvailableSpace());
  m_TempFile->RemoveName();
}

rfm_FileCache::rfm_FileCache(int pageSize, long long pageLimit) : m_PageSize(pageSize), m_PageLimit(pageLimit) {
  ZQA_ASSERT(kSourcePath, pageSize > 0 && pageSize % kPageQuantum == 0);
  Open();
  m_TempFile->RemoveName();
}

rfm_FileCache::~rfm_FileCache() {
  m_File.Close();
  m_TempFile.reset();
}

// The cache file is held open and its name removed at once: the process-wide
// cache usually lives until the process ends, and the system then frees the
// file however the process ended.
void rfm_FileCache::Open() {
  m_TempFile.reset(new utl_TempFile(kCacheFilePrefix));
  m_File.Open(m_TempFile->Name(), utl_FileAccessCreate, utl_FileShareNone);
}

int rfm_FileCache::PageSizeFromCommandLine() {
  utl_CommandLine& options = utl_CommandLine::Instance();
  if (!options.IsMember(kPageSizeOption)) return kDefaultPageSize;
  int kib = options.ConstGetValueAsInt(kPageSizeOption);
  if (kib <= 0) kib = 1;
  if (kib > kLargestPageKiB) kib = kOutOfRangePageKiB;
  int bytes = kib * 1024;
  return (bytes + kPageQuantum - 1) / kPageQuantum * kPageQuantum;
}

long long rfm_FileCache::PageLimitFor(int pageSize, unsigned long long availableBytes) {
  auto limit = static_cast<long long>(availableBytes / static_cast<unsigned long long>(pageSize) * 4 / 5);
  utl_CommandLine& options = utl_CommandLine::Instance();
  if (options.IsMember(kCacheLimitOption)) {
    long long asked = options.ConstGetValueAsInt(kCacheLimitOption) * kMiB / pageSize;
    if (asked >= 0 && asked < limit) limit = asked;
  }
  return limit;
}

rfm_FileCacheBlock* rfm_FileCache::GetPage(long long const& key, rfm_FileCachePageMap* map) {
  thr_MutexGuard guard(m_Mutex);
  rfm_FileCacheBlock* block = map->IsMember(key) ? map->Get(key) : nullptr;
  if (block == nullptr) {
    if (!m_Free.IsAlone()) {
      block = m_Free.Next();
    } else if (m_PageCount < m_PageLimit) {
      block = NewBlock();
      ++m_PageCount;
    } else if (!m_Idle.IsAlone()) {
      block = m_Idle.Previous();
    } else {
      nex_ThrowMessage(kSourcePath, __LINE__, atr_translate("Cache Space Exausted."));
    }
    block->Assign(key, map);
    if (!map->Insert(key, block)) map->Get(key) = block;
  }
  block->Insert(m_Busy);
  return block;
}

void rfm_FileCache::IdlePage(rfm_FileCacheBlock* block) {
  thr_MutexGuard guard(m_Mutex);
  block->Insert(m_Idle);
}

void rfm_FileCache::Release(rfm_FileCacheBlock* block) {
  block->Assign(0, nullptr);
  block->Insert(m_Free);
}

void rfm_FileCache::FreePage(long long const& key, rfm_FileCachePageMap* map) {
  thr_MutexGuard guard(m_Mutex);
  if (!map->IsMember(key)) return;
  if (rfm_FileCacheBlock* block = map->Get(key)) Release(block);
}

void rfm_FileCache::FreeAllPages(rfm_FileCachePageMap* map) {
  thr_MutexGuard guard(m_Mutex);
  for (omi_BtreeIterator<long long, rfm_FileCacheBlock*> it(*map); !it.IsDone(); it.Next()) {
    if (rfm_FileCacheBlock* block = it.CurrentValue()) Release(block);
  }
}

cow_List<long long> rfm_FileCache::SiftMap(rfm_FileCachePageMap* map) {
  thr_MutexGuard guard(m_Mutex);
  cow_List<long long> lost;
  for (omi_BtreeIterator<long long, rfm_FileCacheBlock*> it(*map); !it.IsDone(); it.Next()) {
    if (it.CurrentValue() == nullptr) lost.Append(it.CurrentKey());
  }
  for (int index = 0; index < lost.Length(); ++index) map->Remove(lost[index]);
  return lost;
}

rfm_FileCacheBlock* rfm_FileCache::NewBlock() {
  long long const offset = static_cast<long long>(m_PageCount) * m_PageSize;
  int const error = ::posix_fallocate(m_File.Descriptor(), offset, m_PageSize);
  if (error == ENOSPC) rfm_FileCacheExc().Throw(kSourcePath, __LINE__);
  void* data = MAP_FAILED;
  if (error == 0) {
    data = ::mmap(nullptr, static_cast<std::size_t>(m_PageSize), PROT_READ | PROT_WRITE, MAP_SHARED,
                  m_File.Descriptor(), offset);
  }
  if (data == MAP_FAILED) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate("***ERROR: The network ZDB cache file %s cannot grow: %s"),
                                          m_File.Name().CStr(), std::strerror(error != 0 ? error : errno)));
  }
  m_Blocks.emplace_back(new rfm_FileCacheBlock(static_cast<char*>(data), offset, m_PageSize));
  return m_Blocks.back().get();
}
