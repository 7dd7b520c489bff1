#ifndef rom_UtlDatabaseRom_h
#define rom_UtlDatabaseRom_h

#include "ZQABasExport.h"
#include "rom_UtlDatabase.h"

class rom_Transporter;

// The copy's view of a database that a transporter holds open: its class
// tables are the transporter's (a writable file gets a class's table on
// first use, as the transporter's write path makes it), its base classes
// those of the transporter's class metadata. Its index is kIndex.
class ZQA_EXPORT rom_UtlDatabaseRom : public rom_UtlDatabase {
public:
  static constexpr int kIndex = -1;

  // The transporter must outlive the view.
  explicit rom_UtlDatabaseRom(rom_Transporter& transporter);

  rfm_Database const& Database() const override;
  unsigned int BaseClassID(unsigned int cid) const override;
  rfm_Table Table(unsigned int cid) const override;
  rfm_Table Table(rfm_Handle handle) const override;

  rom_Transporter& Transporter() const { return m_Transporter; }

private:
  rom_Transporter& m_Transporter;
};

#endif
