#include "rom_WriteRecord.h"

#include "rom_HistoryEntry.h"
#include "rom_Transporter.h"

rom_WriteRecord::rom_WriteRecord(rom_Transporter* transporter)
    : m_Transporter(transporter), m_Previous(transporter->SetWriteRecord(this)) {}

rom_WriteRecord::~rom_WriteRecord() {
  m_Transporter->History().ClearRecordedState();
  m_Transporter->SetWriteRecord(m_Previous);
}

bool rom_WriteRecord::Record(rom_HistoryEntry* entry) {
  if (entry->Recorded()) return false;
  entry->SetRecorded(true);
  return true;
}
