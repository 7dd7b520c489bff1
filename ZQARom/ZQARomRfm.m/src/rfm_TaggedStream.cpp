#include "rfm_TaggedStream.h"

#include "rfm_TaggedStreamRepr.h"

rfm_TaggedStream::rfm_TaggedStream() = default;
rfm_TaggedStream::rfm_TaggedStream(rfm_TaggedStreamRepr* repr) : m_Repr(repr) {}
rfm_TaggedStream::rfm_TaggedStream(rfm_TaggedStream const& other) = default;
rfm_TaggedStream& rfm_TaggedStream::operator=(rfm_TaggedStream const& other) = default;
rfm_TaggedStream::~rfm_TaggedStream() = default;

void rfm_TaggedStream::WriteInt(int id, int value) const { Repr().WriteInt(id, value); }
void rfm_TaggedStream::WriteFloat(int id, float value) const { Repr().WriteFloat(id, value); }
void rfm_TaggedStream::WriteDouble(int id, double value) const { Repr().WriteDouble(id, value); }
void rfm_TaggedStream::WriteHandle(int id, rfm_Handle value) const { Repr().WriteHandle(id, value); }
void rfm_TaggedStream::WriteString(int id, cow_String const& value) const { Repr().WriteString(id, value); }
void rfm_TaggedStream::WriteFixedString(int id, cow_String const& value) const { Repr().WriteFixedString(id, value); }

bool rfm_TaggedStream::Next() const { return Repr().Next(); }
void rfm_TaggedStream::Rewind() const { Repr().Rewind(); }
int rfm_TaggedStream::GetType() const { return Repr().GetType(); }
int rfm_TaggedStream::GetID() const { return Repr().GetID(); }
int rfm_TaggedStream::GetInt() const { return Repr().GetInt(); }
float rfm_TaggedStream::GetFloat() const { return Repr().GetFloat(); }
double rfm_TaggedStream::GetDouble() const { return Repr().GetDouble(); }
rfm_Handle rfm_TaggedStream::GetHandle() const { return Repr().GetHandle(); }
cow_String rfm_TaggedStream::GetString() const { return Repr().GetString(); }

int rfm_TaggedStream::Flush() const { return Repr().Flush(); }
int rfm_TaggedStream::Snap() const { return Repr().Snap(); }
rfm_Handle rfm_TaggedStream::Handle() const { return Repr().Handle(); }
utl_FileOffset rfm_TaggedStream::SpaceAllocation() const { return Repr().SpaceAllocation(); }
utl_FileOffset rfm_TaggedStream::SpaceLength() const { return Repr().SpaceLength(); }
cow_List<cow_String> rfm_TaggedStream::GetObjStatistics() const { return Repr().GetObjStatistics(); }
