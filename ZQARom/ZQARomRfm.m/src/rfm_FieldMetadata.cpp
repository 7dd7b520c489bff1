#include "rfm_FieldMetadata.h"

#include "rfm_IOBuffer.h"

void rfm_FieldMetadata::Dump(rfm_IOBuffer& buffer) const {
  buffer.WriteInt(m_Type);
  buffer.WriteString(m_Name);
}
