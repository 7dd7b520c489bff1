#ifndef rfm_IOS_h
#define rfm_IOS_h

#include "rfm_IO.h"

class rfm_StringManager;

// Typed I/O that can also move strings: a string is stored as its external
// string, the fixed-size reference that the database's string manager
// hands out, not as its characters.
class rfm_IOS : public rfm_IO {
public:
  // The string manager of the database this object belongs to.
  virtual rfm_StringManager* StringManager() const = 0;

  // Whole strings read; a short count is not an error here.
  virtual int ReadStringArray(cow_String* strings, int count);
  virtual cow_String ReadString();
  virtual void WriteStringArray(cow_String const* strings, int count);
  virtual void WriteString(cow_String const& text);

protected:
  using rfm_IO::rfm_IO;

  // The string manager, which string I/O cannot do without.
  rfm_StringManager& RequireStringManager() const;
};

#endif
