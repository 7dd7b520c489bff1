#include "zdb_DumpSink.h"

#include "rfm_TaggedStream.h"
#include "rfm_TypeName.h"
#include "zdb_Database.h"

char const* zdb_TagName(int tag) {
  return tag == rfm_TaggedStream::kFixedStringType ? "fixed string" : rfm_TypeName(tag);
}
