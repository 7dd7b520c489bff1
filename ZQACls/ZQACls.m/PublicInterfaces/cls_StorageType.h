#ifndef cls_StorageType_h
#define cls_StorageType_h

#include "ZQABasExport.h"
#include "cls_StorageTypeId.h"

#include <atomic>

// The process-wide id of the storage kind named by Tag, allocated on first
// use: two kinds never share one, and a kind keeps its id for the process's
// life. The object layer compares ids to tell whether an agent belongs to
// its own kind of storage.
//
// Exported, so that the library and the application share one id per Tag.
// Threads that race on the first use may each allocate an id; one is kept
// and all answer it, so ids are unique but need not be dense.
template <class Tag>
class ZQA_EXPORT cls_StorageType {
public:
  static int Id() {
    int id = s_Id.load(std::memory_order_acquire);
    if (id != 0) return id;
    int const allocated = cls_StorageTypeId::AllocateId();
    return s_Id.compare_exchange_strong(id, allocated, std::memory_order_acq_rel) ? allocated : id;
  }

private:
  // 0 until allocated.
  static inline std::atomic<int> s_Id{0};
};

#endif
