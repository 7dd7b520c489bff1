#ifndef rfm_Space_h
#define rfm_Space_h

#include "cow_CountedHld.h"
#include "rfm_Database.h"
#include "rfm_SpaceRepr.h"

// A space by value: copies share one representation, and with it one
// position. A space holds a share of its database, which stays open while
// the space lives (see rfm_Database).
class ZQA_EXPORT rfm_Space {
public:
  rfm_Space() = default;
  // Takes ownership of repr, a space of database.
  rfm_Space(rfm_SpaceRepr* repr, rfm_Database const& database) : m_Database(database), m_Repr(repr) {}

  rfm_Handle Handle() const { return m_Repr.GetRef().Handle(); }
  bool ReadOnly() const { return m_Repr.GetRef().ReadOnly(); }
  utl_FileOffset Length() const { return m_Repr.GetRef().Length(); }
  utl_FileOffset Allocation() const { return m_Repr.GetRef().Allocation(); }
  utl_FileOffset Location() const { return m_Repr.GetRef().Location(); }
  void Seek(utl_FileOffset offset) const { m_Repr.GetRef().Seek(offset); }
  void Extend(utl_FileOffset delta) const { m_Repr.GetRef().Extend(delta); }
  void Truncate(utl_FileOffset length) const { m_Repr.GetRef().Truncate(length); }
  void Flush() const { m_Repr.GetRef().Flush(); }
  int Read(char* buffer, int count) const { return m_Repr.GetRef().Read(buffer, count); }
  int Write(char const* buffer, int count) const { return m_Repr.GetRef().Write(buffer, count); }
  int ReadInt() const { return m_Repr.GetRef().ReadInt(); }
  void WriteInt(int value) const { m_Repr.GetRef().WriteInt(value); }

  bool IsNull() const { return m_Repr.IsNull(); }
  rfm_SpaceRepr* Repr() const { return m_Repr.GetPtr(); }
  rfm_SpaceRepr* operator->() const { return m_Repr.GetPtr(); }

private:
  // Declared first, so that it goes last.
  rfm_Database m_Database;
  cow_CountedHld<rfm_SpaceRepr> m_Repr;
};

#endif
