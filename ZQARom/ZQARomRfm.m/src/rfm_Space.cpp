#include "rfm_Space.h"

#include "rfm_SpaceRepr.h"

rfm_Space::rfm_Space() = default;
rfm_Space::rfm_Space(rfm_SpaceRepr* repr, rfm_Database const& database) : m_Database(database), m_Repr(repr) {}
rfm_Space::rfm_Space(rfm_Space const& other) = default;
rfm_Space& rfm_Space::operator=(rfm_Space const& other) = default;
rfm_Space::~rfm_Space() = default;

rfm_Handle rfm_Space::Handle() const { return m_Repr.GetRef().Handle(); }
bool rfm_Space::ReadOnly() const { return m_Repr.GetRef().ReadOnly(); }
utl_FileOffset rfm_Space::Length() const { return m_Repr.GetRef().Length(); }
utl_FileOffset rfm_Space::Allocation() const { return m_Repr.GetRef().Allocation(); }
utl_FileOffset rfm_Space::Location() const { return m_Repr.GetRef().Location(); }
void rfm_Space::Seek(utl_FileOffset offset) const { m_Repr.GetRef().Seek(offset); }
void rfm_Space::Extend(utl_FileOffset delta) const { m_Repr.GetRef().Extend(delta); }
void rfm_Space::Truncate(utl_FileOffset length) const { m_Repr.GetRef().Truncate(length); }
void rfm_Space::Flush() const { m_Repr.GetRef().Flush(); }
int rfm_Space::Read(char* buffer, int count) const { return m_Repr.GetRef().Read(buffer, count); }
int rfm_Space::Write(char const* buffer, int count) const { return m_Repr.GetRef().Write(buffer, count); }
int rfm_Space::ReadInt() const { return m_Repr.GetRef().ReadInt(); }
void rfm_Space::WriteInt(int value) const { m_Repr.GetRef().WriteInt(value); }
