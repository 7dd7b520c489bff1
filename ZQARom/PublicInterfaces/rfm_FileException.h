#ifndef rfm_FileException_h
#define rfm_FileException_h

#include "atr_String.h"
#include "cow_String.h"
#include "nex_PrimException.h"

// The conditions of a file: missing, unreadable, read-only, a bad argument,
// a remote file that cannot be reached or was lost, a full network cache.
// Each class builds its translated text from what it is given, and its
// Propagate() rethrows a copy of its own dynamic type, so a handler may
// catch the family and pass one member on unchanged.
class ZQA_EXPORT rfm_FileException : public nex_PrimException<atr_String, 1> {
public:
  explicit rfm_FileException(atr_String const& message) : nex_PrimException(message) {}
  [[noreturn]] void Propagate() const override { throw *this; }
};

class ZQA_EXPORT rfm_FileNoSuchFile : public rfm_FileException {
public:
  explicit rfm_FileNoSuchFile(cow_String const& name);
  [[noreturn]] void Propagate() const override { throw *this; }
};

class ZQA_EXPORT rfm_FileNotReadable : public rfm_FileException {
public:
  explicit rfm_FileNotReadable(cow_String const& name);
  [[noreturn]] void Propagate() const override { throw *this; }
};

class ZQA_EXPORT rfm_FileReadOnlyExc : public rfm_FileException {
public:
  explicit rfm_FileReadOnlyExc(cow_String const& name);
  [[noreturn]] void Propagate() const override { throw *this; }
};

class ZQA_EXPORT rfm_FileBadParameterExc : public rfm_FileException {
public:
  explicit rfm_FileBadParameterExc(cow_String const& method);
  [[noreturn]] void Propagate() const override { throw *this; }
};

class ZQA_EXPORT rfm_FileConnectExc : public rfm_FileException {
public:
  rfm_FileConnectExc(cow_String const& name, cow_String const& reason);
  [[noreturn]] void Propagate() const override { throw *this; }
};

class ZQA_EXPORT rfm_FileFailExc : public rfm_FileException {
public:
  rfm_FileFailExc(cow_String const& name, cow_String const& reason);
  [[noreturn]] void Propagate() const override { throw *this; }
};

class ZQA_EXPORT rfm_FileCacheExc : public rfm_FileException {
public:
  rfm_FileCacheExc();
  [[noreturn]] void Propagate() const override { throw *this; }
};

#endif
