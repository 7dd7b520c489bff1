#ifndef rfm_FileCache_h
#define rfm_FileCache_h

#include "cow_List.h"
#include "rfm_FileCacheBlock.h"
#include "thr_GlobalSingleton.h"
#include "thr_Mutex.h"
#include "utl_File.h"
#include "utl_TempFile.h"

#include <memory>
#include <vector>

// The disk cache that all remote files of a process share: a temporary
// file cut into pages, handed to whichever file needs one. A block is busy
// while a reader uses it, idle (most recent first) when it holds a page no
// reader uses, and free when it holds nothing. A file asking for a page gets
// a free block, else a new one while the page limit allows, else the block
// idle the longest, taken from its owner; the owner's map keeps the key with
// a null block, which tells it the page is gone.
//
// Invariants: every block is on exactly one list; a busy block is never
// given to another page; block n lies at n times the page size in the file,
// which is mapped into memory block by block. Lists and maps change only
// under m_Mutex; a page's bytes move without it, as only the reader that
// holds the block busy touches them.
//
// The pages are mapped rather than read and written: a page then comes from
// the pipe into the cache file, and from there to the caller, in one copy
// each and no system call, where reading and writing the file cost a
// system call and a copy more per page and measured no faster than the
// pipe alone. Each page's disk space is reserved before it is mapped, as a
// store into a mapped page that finds the disk full would end the process.
class rfm_FileCache : public thr_GlobalSingleton<rfm_FileCache> {
public:
  static constexpr int kDefaultPageSize = 1 << 20;
  static constexpr int kPageQuantum = 4096;

  // Page size and limit from the command line and the free disk space.
  rfm_FileCache();
  // A cache of the given geometry; pageSize is a multiple of 4096.
  rfm_FileCache(int pageSize, long long pageLimit);
  ~rfm_FileCache();

  // The page size that nzdb_page_size (in KiB) asks for: 1 MiB when it is
  // absent; a value at or below 0 means 1 KiB, one above 65536 means 2 MiB;
  // the result is rounded up to a multiple of 4096 bytes, so that pages
  // never overlap in the cache file.
  static int PageSizeFromCommandLine();
  // 80 percent of availableBytes in pages, lowered to nzdb_cache_limit
  // (in MiB) when that is given and smaller.
  static long long PageLimitFor(int pageSize, unsigned long long availableBytes);

  // The block of key for map, now busy; raises "Cache Space Exausted." when
  // every block is busy and the limit is reached.
  rfm_FileCacheBlock* GetPage(long long const& key, rfm_FileCachePageMap* map);
  // The reader is done with block.
  void IdlePage(rfm_FileCacheBlock* block);
  // Frees the block of key; map keeps the key with a null block.
  void FreePage(long long const& key, rfm_FileCachePageMap* map);
  // Frees every block of map, which is going away.
  void FreeAllPages(rfm_FileCachePageMap* map);
  // The keys of map whose blocks were taken away, removed from map.
  cow_List<long long> SiftMap(rfm_FileCachePageMap* map);

  int PageSize() const { return m_PageSize; }
  long long PageLimit() const { return m_PageLimit; }
  int PageCount() const { return m_PageCount; }

private:
  void Open();
  rfm_FileCacheBlock* NewBlock();
  void Release(rfm_FileCacheBlock* block);

  thr_Mutex m_Mutex;
  std::unique_ptr<utl_TempFile> m_TempFile;
  utl_File m_File;
  rfm_FileCacheBlock m_Busy;
  rfm_FileCacheBlock m_Idle;
  rfm_FileCacheBlock m_Free;
  std::vector<std::unique_ptr<rfm_FileCacheBlock> > m_Blocks;
  int m_PageSize;
  long long m_PageLimit = 0;
  int m_PageCount = 0;
};

#endif
