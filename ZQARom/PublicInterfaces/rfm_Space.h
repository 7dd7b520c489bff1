#ifndef rfm_Space_h
#define rfm_Space_h

#include "cow_CountedHld.h"
#include "rfm_Database.h"
#include "rfm_Handle.h"
#include "utl_FileOffset.h"

class rfm_SpaceRepr;

// A space by value: copies share one representation, and with it one
// position. A space holds a share of its database, which stays open while
// the space lives (see rfm_Database).
class ZQA_EXPORT rfm_Space {
public:
  rfm_Space();
  // Takes ownership of repr, a space of database.
  rfm_Space(rfm_SpaceRepr* repr, rfm_Database const& database);
  rfm_Space(rfm_Space const& other);
  rfm_Space& operator=(rfm_Space const& other);
  ~rfm_Space();

  rfm_Handle Handle() const;
  bool ReadOnly() const;
  utl_FileOffset Length() const;
  utl_FileOffset Allocation() const;
  utl_FileOffset Location() const;
  void Seek(utl_FileOffset offset) const;
  void Extend(utl_FileOffset delta) const;
  void Truncate(utl_FileOffset length) const;
  void Flush() const;
  int Read(char* buffer, int count) const;
  int Write(char const* buffer, int count) const;
  int ReadInt() const;
  void WriteInt(int value) const;

  bool IsNull() const { return m_Repr.IsNull(); }
  // The representation, for the library's own layers.
  rfm_SpaceRepr* Repr() const { return m_Repr.GetPtr(); }
  rfm_SpaceRepr* operator->() const { return m_Repr.GetPtr(); }

private:
  // Declared first, so that it goes last.
  rfm_Database m_Database;
  cow_CountedHld<rfm_SpaceRepr> m_Repr;
};

#endif
