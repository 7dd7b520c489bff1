#ifndef rom_FastCopyVisitor_h
#define rom_FastCopyVisitor_h

#include "ZQABasExport.h"
#include "rom_UtlVisitor.h"

class cls_Uid;
class rom_Transporter;

// A copy's visitor between two open transporters, which copies nothing that
// the target has already. An object whose identity the source knows is,
// when the source's cow barn holds its value, written into the target from
// that value (CopyCow), or else taken as the target's row of the same
// identity, if there is one. Each object copied row by row takes its
// identity along: afterwards both histories know it, each at its own row.
class ZQA_EXPORT rom_FastCopyVisitor : public rom_UtlVisitor {
public:
  // Both transporters must outlive the visitor.
  rom_FastCopyVisitor(rom_Transporter& source, rom_Transporter& target);

  int AcceptObjectBeforeCopy(unsigned int cid, int oid) override;
  void AcceptObjectAfterCopy(rfm_Row& source, rfm_Row& target, unsigned int cid) override;

  // The target's row for the object of identity uid in row oid of class cid
  // of the source: the target's own row when its history and barn know the
  // object, else the row that the value in the source's barn is written to
  // now, through its class's DBWrite; -1 when the source's barn does not
  // hold the object.
  int CopyCow(cls_Uid const& uid, unsigned int cid, int oid);

private:
  rom_Transporter& m_Source;
  rom_Transporter& m_Target;
};

#endif
