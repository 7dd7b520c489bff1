#include "ZQABasAssert.h"
#include "rfm_Array.h"
#include "rfm_ArrayRepr.h"
#include "rfm_Database.h"
#include "rfm_DatabaseRepr.h"
#include "rfm_TaggedStream.h"
#include "rfm_TaggedStreamRepr.h"

#include <memory>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_DatabaseArrays";

// The existing array at handle, which must hold elements of type.
rfm_ArrayRepr* OpenArray(rfm_Database const& database, rfm_Type type, rfm_Handle handle, int quantum,
                         int bufferSize) {
  std::unique_ptr<rfm_ArrayRepr> repr(new rfm_ArrayRepr(database, handle, quantum, bufferSize));
  ZQA_ASSERT(kSourcePath, repr->Type() == type);
  return repr.release();
}

}  // namespace

rfm_Array<int, rfm_TypeInt> rfm_Database::ArrayInt(rfm_Handle handle, int quantum, int bufferSize) const {
  return rfm_Array<int, rfm_TypeInt>(OpenArray(*this, rfm_TypeInt, handle, quantum, bufferSize));
}

rfm_Array<int, rfm_TypeInt> rfm_Database::ArrayInt(int fieldsPerRow, int quantum, int bufferSize) const {
  return rfm_Array<int, rfm_TypeInt>(new rfm_ArrayRepr(*this, rfm_TypeInt, fieldsPerRow, quantum, bufferSize));
}

rfm_Array<float, rfm_TypeFloat> rfm_Database::ArrayFloat(rfm_Handle handle, int quantum, int bufferSize) const {
  return rfm_Array<float, rfm_TypeFloat>(OpenArray(*this, rfm_TypeFloat, handle, quantum, bufferSize));
}

rfm_Array<float, rfm_TypeFloat> rfm_Database::ArrayFloat(int fieldsPerRow, int quantum, int bufferSize) const {
  return rfm_Array<float, rfm_TypeFloat>(new rfm_ArrayRepr(*this, rfm_TypeFloat, fieldsPerRow, quantum, bufferSize));
}

rfm_Array<double, rfm_TypeDouble> rfm_Database::ArrayDouble(rfm_Handle handle, int quantum, int bufferSize) const {
  return rfm_Array<double, rfm_TypeDouble>(OpenArray(*this, rfm_TypeDouble, handle, quantum, bufferSize));
}

rfm_Array<double, rfm_TypeDouble> rfm_Database::ArrayDouble(int fieldsPerRow, int quantum, int bufferSize) const {
  return rfm_Array<double, rfm_TypeDouble>(
      new rfm_ArrayRepr(*this, rfm_TypeDouble, fieldsPerRow, quantum, bufferSize));
}

rfm_Array<cow_String, rfm_TypeString> rfm_Database::ArrayString(rfm_Handle handle, int quantum,
                                                                int bufferSize) const {
  return rfm_Array<cow_String, rfm_TypeString>(OpenArray(*this, rfm_TypeString, handle, quantum, bufferSize));
}

rfm_Array<cow_String, rfm_TypeString> rfm_Database::ArrayString(int fieldsPerRow, int quantum,
                                                                int bufferSize) const {
  return rfm_Array<cow_String, rfm_TypeString>(
      new rfm_ArrayRepr(*this, rfm_TypeString, fieldsPerRow, quantum, bufferSize));
}

rfm_TaggedStream rfm_Database::TaggedStream(rfm_Handle handle, int bufferSize) const {
  return rfm_TaggedStream(new rfm_TaggedStreamRepr(*this, handle, bufferSize));
}

rfm_TaggedStream rfm_Database::TaggedStream(int bufferSize) const {
  return rfm_TaggedStream(new rfm_TaggedStreamRepr(*this, bufferSize));
}
