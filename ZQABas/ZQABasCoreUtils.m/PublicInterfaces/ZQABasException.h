#ifndef ZQABasException_h
#define ZQABasException_h

#include "ZQABasExport.h"

#include <exception>

// Base of every exception the library raises. An exception is raised by
// Throw(sourcePath, line), which records where it was raised and throws a
// copy of the object with its full dynamic type through Propagate().
class ZQA_EXPORT ZQABasException : public std::exception {
public:
  [[noreturn]] void Throw(char const* sourcePath, int line);
  // Throws a copy of this exception with its dynamic type.
  [[noreturn]] virtual void Propagate() const = 0;

  // The source path is a string literal of the raising code.
  char const* SourcePath() const noexcept { return m_SourcePath; }
  int Line() const noexcept { return m_Line; }

protected:
  ZQABasException() = default;

private:
  char const* m_SourcePath = "";
  int m_Line = 0;
};

#endif
