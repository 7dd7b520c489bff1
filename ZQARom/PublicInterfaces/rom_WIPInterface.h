#ifndef rom_WIPInterface_h
#define rom_WIPInterface_h

#include "ZQABasExport.h"

// A hook an application may give a transporter to hear when a lazily held
// object begins and ends loading (for a progress display, say).
class ZQA_EXPORT rom_WIPInterface {
public:
  virtual ~rom_WIPInterface();
  virtual void BeginLoad() = 0;
  virtual void EndLoad() = 0;
};

#endif
