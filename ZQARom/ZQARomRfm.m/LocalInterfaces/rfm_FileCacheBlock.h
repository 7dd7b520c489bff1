#ifndef rfm_FileCacheBlock_h
#define rfm_FileCacheBlock_h

#include "omi_Btree.h"

class rfm_FileCacheBlock;
class utl_BinIStream;

// A remote file's pages: page start offset to the block holding it, or to
// null when the cache gave the block to another page.
using rfm_FileCachePageMap = omi_Btree<long long, rfm_FileCacheBlock*>;

// One page slot of the network file cache: a page-sized place in the cache
// file, the remote page it holds, and its place in one of the cache's
// lists (a circular doubly linked list; a block alone points to itself).
//
// Invariant: while m_Owner is set, m_Owner maps m_Key to this block, and
// m_Length bytes from m_FileOffset are the page's first bytes. The block's
// page of the cache file is mapped at m_Data for the block's lifetime.
class rfm_FileCacheBlock {
public:
  // A list head, or a block alone.
  rfm_FileCacheBlock() = default;
  // A page slot whose bytes are data, its place in the cache file mapped.
  rfm_FileCacheBlock(char* data, long long fileOffset, int pageSize)
      : m_Data(data), m_FileOffset(fileOffset), m_PageSize(pageSize) {}
  ~rfm_FileCacheBlock();
  rfm_FileCacheBlock(rfm_FileCacheBlock const&) = delete;
  rfm_FileCacheBlock& operator=(rfm_FileCacheBlock const&) = delete;

  // Gives the block to key of map (both may be empty), emptying it; its
  // old owner's entry stays with a null block.
  void Assign(long long key, rfm_FileCachePageMap* map);
  // Delivers what the block holds from position on, up to remaining bytes:
  // count and position grow, buffer moves on, remaining falls.
  void ReadPartial(int& count, char*& buffer, int& remaining, long long& position);
  // Reads a page's length and bytes from in into the cache file. The
  // block holds no bytes until the whole page has come.
  void FetchPage(utl_BinIStream& in);

  // Moves the block to the head of the list that list heads.
  void Insert(rfm_FileCacheBlock& list);
  void Remove();
  bool IsAlone() const { return m_Next == this; }
  rfm_FileCacheBlock* Next() const { return m_Next; }
  rfm_FileCacheBlock* Previous() const { return m_Previous; }

  long long Key() const { return m_Key; }
  int Length() const { return m_Length; }
  long long FileOffset() const { return m_FileOffset; }

private:
  rfm_FileCacheBlock* m_Next = this;
  rfm_FileCacheBlock* m_Previous = this;
  char* m_Data = nullptr;
  long long m_Key = 0;
  long long m_FileOffset = 0;
  int m_PageSize = 0;
  int m_Length = 0;
  rfm_FileCachePageMap* m_Owner = nullptr;
};

#endif
