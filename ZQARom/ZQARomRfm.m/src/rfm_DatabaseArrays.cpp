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
}

rfm_ArrayRepr* rfm_DatabaseRepr::Array(rfm_Type type, rfm_Handle const& handle, int quantum, int bufferSize) {
  std::unique_ptr<rfm_ArrayRepr> repr(new rfm_ArrayRepr(*this, handle, quantum, bufferSize));
  ZQA_ASSERT(kSourcePath, repr->Type() == type);
  return repr.release();
}

rfm_ArrayRepr* rfm_DatabaseRepr::Array(rfm_Type type, int fieldsPerRow, int quantum, int bufferSize) {
  return new rfm_ArrayRepr(*this, type, fieldsPerRow, quantum, bufferSize);
}

rfm_TaggedStreamRepr* rfm_DatabaseRepr::TaggedStream(rfm_Handle const& handle, int bufferSize) {
  return new rfm_TaggedStreamRepr(*this, handle, bufferSize);
}

rfm_TaggedStreamRepr* rfm_DatabaseRepr::TaggedStream(int bufferSize) {
  return new rfm_TaggedStreamRepr(*this, bufferSize);
}

rfm_Array<int, rfm_TypeInt> rfm_Database::ArrayInt(rfm_Handle handle, int quantum, int bufferSize) const {
  return rfm_Array<int, rfm_TypeInt>(Repr().Array(rfm_TypeInt, handle, quantum, bufferSize));
}

rfm_Array<int, rfm_TypeInt> rfm_Database::ArrayInt(int fieldsPerRow, int quantum, int bufferSize) const {
  return rfm_Array<int, rfm_TypeInt>(Repr().Array(rfm_TypeInt, fieldsPerRow, quantum, bufferSize));
}

rfm_Array<float, rfm_TypeFloat> rfm_Database::ArrayFloat(rfm_Handle handle, int quantum, int bufferSize) const {
  return rfm_Array<float, rfm_TypeFloat>(Repr().Array(rfm_TypeFloat, handle, quantum, bufferSize));
}

rfm_Array<float, rfm_TypeFloat> rfm_Database::ArrayFloat(int fieldsPerRow, int quantum, int bufferSize) const {
  return rfm_Array<float, rfm_TypeFloat>(Repr().Array(rfm_TypeFloat, fieldsPerRow, quantum, bufferSize));
}

rfm_Array<double, rfm_TypeDouble> rfm_Database::ArrayDouble(rfm_Handle handle, int quantum, int bufferSize) const {
  return rfm_Array<double, rfm_TypeDouble>(Repr().Array(rfm_TypeDouble, handle, quantum, bufferSize));
}

rfm_Array<double, rfm_TypeDouble> rfm_Database::ArrayDouble(int fieldsPerRow, int quantum, int bufferSize) const {
  return rfm_Array<double, rfm_TypeDouble>(Repr().Array(rfm_TypeDouble, fieldsPerRow, quantum, bufferSize));
}

rfm_Array<cow_String, rfm_TypeString> rfm_Database::ArrayString(rfm_Handle handle, int quantum,
                                                                int bufferSize) const {
  return rfm_Array<cow_String, rfm_TypeString>(Repr().Array(rfm_TypeString, handle, quantum, bufferSize));
}

rfm_Array<cow_String, rfm_TypeString> rfm_Database::ArrayString(int fieldsPerRow, int quantum,
                                                                int bufferSize) const {
  return rfm_Array<cow_String, rfm_TypeString>(Repr().Array(rfm_TypeString, fieldsPerRow, quantum, bufferSize));
}

rfm_TaggedStream rfm_Database::TaggedStream(rfm_Handle handle, int bufferSize) const {
  return rfm_TaggedStream(Repr().TaggedStream(handle, bufferSize));
}

rfm_TaggedStream rfm_Database::TaggedStream(int bufferSize) const {
  return rfm_TaggedStream(Repr().TaggedStream(bufferSize));
}
