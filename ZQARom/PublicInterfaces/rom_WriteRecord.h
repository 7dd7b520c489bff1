#ifndef rom_WriteRecord_h
#define rom_WriteRecord_h

#include "ZQABasExport.h"

class rom_HistoryEntry;
class rom_Transporter;

// One write pass over a transporter, as a scope: within it, an object is
// written at most once, and an identity met a second time is taken as a new
// object (it gets a new identity and a row of its own). Records nest; the
// inner one is the transporter's until it ends.
class ZQA_EXPORT rom_WriteRecord {
public:
  explicit rom_WriteRecord(rom_Transporter* transporter);
  rom_WriteRecord(rom_WriteRecord const&) = delete;
  rom_WriteRecord& operator=(rom_WriteRecord const&) = delete;
  // Clears the written marks of the transporter's history and reinstalls the
  // previous record.
  ~rom_WriteRecord();

  // Marks entry written in this pass: false if it was already.
  bool Record(rom_HistoryEntry* entry);

private:
  rom_Transporter* m_Transporter;
  rom_WriteRecord* m_Previous;
};

#endif
