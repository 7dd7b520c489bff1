#ifndef cls_Static_h
#define cls_Static_h

#include "ZQABasExport.h"
#include "cls_CowValue.h"
#include "cls_Uid.h"
#include "thr_ThreadSingleton.h"

// Shared empty values, one set per thread: what a read answers by reference
// for a null reference. Per thread, as the values' counts are plain integers.
class ZQA_EXPORT cls_Static : public thr_ThreadSingleton<cls_Static> {
public:
  // An empty copy-on-write value.
  static cls_CowValue const& ConstIntCOW() { return Instance().m_EmptyValue; }
  // The null identity.
  static cls_Uid const& ConstUid() { return Instance().m_NullUid; }

private:
  friend class thr_ThreadSingleton<cls_Static>;
  cls_Static() = default;
  ~cls_Static() override;

  cls_CowValue const m_EmptyValue{};
  cls_Uid const m_NullUid{};
};

#endif
