#ifndef rom_TransporterBase_h
#define rom_TransporterBase_h

#include "ZQABasExport.h"

// What code that holds a transporter without knowing its kind deletes it
// through.
class ZQA_EXPORT rom_TransporterBase {
public:
  virtual ~rom_TransporterBase();
};

#endif
