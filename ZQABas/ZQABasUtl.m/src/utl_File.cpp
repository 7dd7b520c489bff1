#include "utl_File.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {
char const kSourcePath[] = "ZQABas/ZQABasUtl.m/src/utl_File";
}

utl_File::utl_File(cow_String const& name, int access, int sharing) { Open(name, access, sharing); }

utl_File::~utl_File() { Close(); }

utl_File::utl_File(utl_File&& other) noexcept
    : m_Name(std::move(other.m_Name)), m_Descriptor(other.m_Descriptor), m_Position(other.m_Position) {
  other.m_Descriptor = -1;
  other.m_Position = 0;
}

utl_File& utl_File::operator=(utl_File&& other) noexcept {
  if (this != &other) {
    Close();
    m_Name = std::move(other.m_Name);
    m_Descriptor = other.m_Descriptor;
    m_Position = other.m_Position;
    other.m_Descriptor = -1;
    other.m_Position = 0;
  }
  return *this;
}

void utl_File::RaiseSystemError(int line) const {
  int error = errno;
  nex_ThrowMessage(kSourcePath, line, atr_SubstituteFormat(atr_translate("%s: %s"), m_Name, std::strerror(error)));
}

void utl_File::Open(cow_String const& name, int access, int) {
  Close();
  m_Name = name;
  int flags = O_CLOEXEC;
  switch (access) {
    case utl_FileAccessRead:
      flags |= O_RDONLY;
      break;
    case utl_FileAccessUpdate:
      flags |= O_RDWR;
      break;
    case utl_FileAccessCreate:
      flags |= O_RDWR | O_CREAT | O_TRUNC;
      break;
    default:
      ZQA_ASSERT(kSourcePath, !"Incorrect file access.");
  }
  // Opened without blocking: a FIFO without a writer would hold the open
  // for good. Only a regular file is taken; what else a name can stand for
  // (a FIFO, a device, a directory, a socket) is refused before anything is
  // read from it or written to it.
  int descriptor;
  do {
    descriptor = ::open(name.CStr(), flags | O_NONBLOCK, 0666);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0 && errno == EISDIR) RaiseNotRegular(__LINE__);
  if (descriptor < 0) RaiseSystemError(__LINE__);
  m_Descriptor = descriptor;
  m_Position = 0;
  struct stat status;
  if (::fstat(descriptor, &status) < 0) RaiseAndClose(__LINE__);
  if (!S_ISREG(status.st_mode)) {
    Close();
    RaiseNotRegular(__LINE__);
  }
  if (::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK) < 0) RaiseAndClose(__LINE__);
}

void utl_File::RaiseNotRegular(int line) const {
  nex_ThrowMessage(kSourcePath, line, atr_SubstituteFormat(atr_translate(kNotRegularFileText), m_Name));
}

void utl_File::RaiseAndClose(int line) {
  int error = errno;
  Close();
  errno = error;
  RaiseSystemError(line);
}

void utl_File::Close() noexcept {
  if (m_Descriptor >= 0) ::close(m_Descriptor);
  m_Descriptor = -1;
  m_Position = 0;
}

void utl_File::Seek(utl_FileOffset offset) {
  if (offset < 0) {
    errno = EINVAL;
    RaiseSystemError(__LINE__);
  }
  m_Position = offset;
}

int utl_File::Read(char* buffer, int count) {
  int done = 0;
  while (done < count) {
    ssize_t n = ::pread(m_Descriptor, buffer + done, static_cast<std::size_t>(count - done), m_Position + done);
    if (n < 0) {
      if (errno == EINTR) continue;
      RaiseSystemError(__LINE__);
    }
    if (n == 0) break;
    done += static_cast<int>(n);
  }
  m_Position += done;
  return done;
}

int utl_File::Write(char const* buffer, int count) {
  int done = 0;
  while (done < count) {
    ssize_t n = ::pwrite(m_Descriptor, buffer + done, static_cast<std::size_t>(count - done), m_Position + done);
    if (n < 0) {
      if (errno == EINTR) continue;
      RaiseSystemError(__LINE__);
    }
    done += static_cast<int>(n);
  }
  m_Position += done;
  return done;
}

void utl_File::Extend(utl_FileOffset size) {
  int result;
  do {
    result = ::ftruncate(m_Descriptor, size);
  } while (result < 0 && errno == EINTR);
  if (result < 0) RaiseSystemError(__LINE__);
}

utl_FileOffset utl_File::FileSize() const {
  struct stat status;
  if (::fstat(m_Descriptor, &status) < 0) RaiseSystemError(__LINE__);
  return status.st_size;
}
