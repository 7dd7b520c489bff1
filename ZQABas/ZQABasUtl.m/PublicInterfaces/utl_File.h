#ifndef utl_File_h
#define utl_File_h

#include "cow_String.h"
#include "utl_FileOffset.h"

// An open operating-system file with its own position. Reads and writes go
// to the position and advance it; Seek itself costs no system call. Every
// failure raises nex_PrimException<atr_String, 1> with the file's name and
// the system's reason.
//
// Invariant: an open utl_File is a regular file. Opening never blocks: a
// name that stands for anything else is refused with kNotRegularFileText.
class ZQA_EXPORT utl_File {
public:
  // The text that refuses a name that is no regular file; %s is the name.
  static constexpr char kNotRegularFileText[] = "*** ERROR: Not a regular file (a FIFO, a device or a directory): %s.";

  utl_File() = default;
  utl_File(cow_String const& name, int access, int sharing = utl_FileShareNone);
  ~utl_File();
  utl_File(utl_File&& other) noexcept;
  utl_File& operator=(utl_File&& other) noexcept;
  utl_File(utl_File const&) = delete;
  utl_File& operator=(utl_File const&) = delete;

  // Opens name with an utl_FileAccess value; an open file is closed first.
  void Open(cow_String const& name, int access, int sharing = utl_FileShareNone);
  void Close() noexcept;
  bool IsOpen() const { return m_Descriptor >= 0; }
  cow_String const& Name() const { return m_Name; }
  // The system's descriptor, for what this class does not offer (mapping).
  int Descriptor() const { return m_Descriptor; }

  void Seek(utl_FileOffset offset);
  utl_FileOffset Tell() const { return m_Position; }
  // Reads up to count bytes; fewer only at the end of the file.
  int Read(char* buffer, int count);
  // Writes all count bytes or raises.
  int Write(char const* buffer, int count);
  // Sets the file's size to exactly size, growing or shrinking it.
  void Extend(utl_FileOffset size);
  utl_FileOffset FileSize() const;

private:
  [[noreturn]] void RaiseSystemError(int line) const;
  [[noreturn]] void RaiseNotRegular(int line) const;
  // Raises the system's reason for the last failure after closing the file.
  [[noreturn]] void RaiseAndClose(int line);

  cow_String m_Name;
  int m_Descriptor = -1;
  utl_FileOffset m_Position = 0;
};

#endif
