#include "zdb_DumpSink.h"

#include "rfm_TaggedStream.h"
#include "zdb_Database.h"

char const* zdb_TagName(int tag) {
  return tag == rfm_TaggedStream::kFixedStringType ? "fixed string" : zdb_TypeName(tag);
}
