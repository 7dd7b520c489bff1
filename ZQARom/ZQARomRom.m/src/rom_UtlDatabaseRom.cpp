#include "rom_UtlDatabaseRom.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rom_HeaderLayout.h"
#include "rom_Transporter.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_UtlDatabaseRom";

char const kUnknownClass[] =
    "rom_UtlDatabaseRom::Table - Class %08X of %s is not registered with the program: its rows cannot be copied.";
char const kNoTable[] =
    "rom_UtlDatabaseRom::Table - Class \"%s\" (%08X) stores nothing and has no table in %s: no row of it can be "
    "copied.";
}  // namespace

rom_UtlDatabaseRom::rom_UtlDatabaseRom(rom_Transporter& transporter)
    : rom_UtlDatabase(kIndex), m_Transporter(transporter) {}

rfm_Database const& rom_UtlDatabaseRom::Database() const { return m_Transporter.Database(); }

unsigned int rom_UtlDatabaseRom::BaseClassID(unsigned int cid) const {
  return m_Transporter.GetClassMD(cid).BaseClassId();
}

rfm_Table rom_UtlDatabaseRom::Table(unsigned int cid) const {
  // Asked first: the registrar's own message would not say which file
  // refers to the class.
  if (!rom_IsInternalClass(cid) && !m_Transporter.Registrar().ClassIsPresent(cid))
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kUnknownClass), cid, m_Transporter.FileName()));
  rom_ClassBag const& bag = m_Transporter.Database().ReadOnly() ? m_Transporter.GetClassBagForRead(cid)
                                                                : m_Transporter.GetClassBagForWrite(cid);
  if (!bag.HasTable())
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_SubstituteFormat(atr_translate(kNoTable), m_Transporter.GetClassMD(cid).ClassName(), cid,
                                          m_Transporter.FileName()));
  return bag.Table();
}

rfm_Table rom_UtlDatabaseRom::Table(rfm_Handle handle) const { return m_Transporter.Database().Table(handle, -1, -1); }
