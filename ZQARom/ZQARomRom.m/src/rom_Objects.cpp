#include "rom_Objects.h"

#include "cls_ClassMetadata.h"
#include "cls_FieldHandle.h"
#include "cls_WriteVisitor.h"
#include "rom_MementoWrite.h"

namespace {
// The member a root stands in for: it has no column anywhere.
cls_FieldHandle const kRootField(-1, cow_String());
}  // namespace

rom_CidOid rom_WriteObject(rom_Transporter& transporter, cls_CowValue const& value, unsigned int cid) {
  if (!value.HasValue()) return rom_CidOid();
  // The root is a member of a memento without a row, which keeps where the
  // member went.
  rom_MementoWrite parent(transporter);
  cls_WriteVisitor const root(&parent);
  transporter.Registrar().ConstGet(cid).DBWrite(value.Address(), cls_WriteVisitor(root, kRootField, value));
  return parent.LastReference();
}
