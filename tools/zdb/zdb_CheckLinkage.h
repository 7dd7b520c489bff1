#ifndef zdb_CheckLinkage_h
#define zdb_CheckLinkage_h

#include "rfm_Handle.h"
#include "zdb_CheckSpace.h"

#include <map>
#include <string>
#include <vector>

class zdb_CheckBytes;
class zdb_CheckReport;

// The check of a database's skeleton: the chain of linkage groups from
// offset 1024, every linkage in them, every object's chain of extents, and
// the areas that block 0, the groups and the extents take in the file. It
// finds the objects, each with the extents that can be followed, for the
// checks of their contents.
//
// Invariant: every value read from the file is validated before it is used
// as an offset, a size or an index; a damaged linkage ends its chain.
class zdb_CheckLinkage {
public:
  zdb_CheckLinkage(zdb_CheckBytes& bytes, zdb_CheckReport& report);

  void Run();

  // Every object, by handle, with the extents its chain leads to inside the file.
  std::map<int, std::vector<zdb_Extent> > const& Objects() const { return m_Objects; }
  int GroupCount() const { return static_cast<int>(m_Groups.size()); }
  // Where the database ends, as the library counts it: past block 0, the
  // last group read and the allocation of every valid slot in use.
  utl_FileOffset End() const;

private:
  struct Slot {
    utl_FileOffset m_Allocation = 0;
    utl_FileOffset m_Length = 0;
    utl_FileOffset m_Location = 0;
    rfm_Handle m_Next;
    bool m_Valid = true;         // all three sizes are valid stored offsets
    std::string m_Invalid;       // when not: the first that is not and what it holds, "location (nan)"
    std::string m_LocationText;  // what an invalid location holds, "nan"
    bool m_Extent = false;  // valid, with an extent that lies inside the file
    int m_Owner = 0;        // the object whose chain reaches it, 0 before the walk
  };
  struct Group {
    utl_FileOffset m_Offset = 0;
    int m_Used = 0;  // slots in use, counting slot 0: the library's count
    std::vector<Slot> m_Slots;
  };

  void ReadGroups();
  // Decodes one group; false when it cannot be read.
  bool ReadGroup(int index, utl_FileOffset offset, Group& group);
  void CheckSlots();
  void CheckSlot(rfm_Handle handle, Slot& slot);
  // Why a chain cannot go on at next (rfm_LinkageRules), "" when it can.
  std::string WhyNoContinuation(rfm_Handle next) const;
  // The slot that next names when a chain can go on there and its fields
  // are valid, else null.
  Slot* Follow(rfm_Handle next);
  void FollowChains();
  // Walks the chain from head, marking its slots; answers its extents.
  std::vector<zdb_Extent> Walk(rfm_Handle head);
  void CheckOverlaps();
  Slot& SlotOf(rfm_Handle handle) { return m_Groups[handle.Group()].m_Slots[static_cast<std::size_t>(handle.Slot())]; }

  zdb_CheckBytes& m_Bytes;
  zdb_CheckReport& m_Report;
  std::vector<Group> m_Groups;
  std::map<int, std::vector<zdb_Extent> > m_Objects;
};

// "handle 513", the subject of a linkage's problems.
std::string zdb_HandleSubject(rfm_Handle handle);

#endif
