#include "zdb_DumpSink.h"

#include "rfm_TaggedStreamRepr.h"
#include "zdb_Database.h"

char const* zdb_TagName(int tag) {
  return tag == rfm_TaggedStreamRepr::kTagFixedString ? "fixed string" : zdb_TypeName(tag);
}
