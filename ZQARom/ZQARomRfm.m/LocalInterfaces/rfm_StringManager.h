#ifndef rfm_StringManager_h
#define rfm_StringManager_h

#include "cow_String.h"
#include "mem_Alloc.h"

// The service that stores every string of a database once and hands out
// fixed-size external strings that stand for them in the rest of the file.
class rfm_StringManager : public mem_AllocationOperators {
public:
  virtual ~rfm_StringManager();
  virtual void Flush() = 0;
  // Overwrites the stored characters of the string that external names.
  virtual void Neuter(char const* external, cow_String const& replacement) = 0;
  // Reads count external strings from source into strings.
  virtual void Internalize(char const* source, cow_String* strings, int count) = 0;
  // Writes the external strings of count strings to target.
  virtual void Externalize(char* target, cow_String const* strings, int count) = 0;
  virtual int ExternalStringSize() const = 0;
};

#endif
