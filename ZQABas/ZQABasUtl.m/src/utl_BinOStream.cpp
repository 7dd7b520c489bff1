#include "utl_BinOStream.h"

#include "ZQABasAssert.h"
#include "utl_BinStreamException.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <unistd.h>

namespace {

char const kSourcePath[] = "ZQABas/ZQABasUtl.m/src/utl_BinOStream";

// One write(2) with SIGPIPE blocked in this thread, so that a reader that
// has gone gives EPIPE instead of ending the process. The SIGPIPE that such
// a write leaves pending is taken back before the mask is restored, unless
// one was already pending before. The process's signal actions are not
// touched.
ssize_t WriteWithoutSigpipe(int descriptor, char const* bytes, std::size_t count) {
  sigset_t pipeSignal;
  sigset_t saved;
  sigset_t pending;
  sigemptyset(&pipeSignal);
  sigaddset(&pipeSignal, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &pipeSignal, &saved);
  ::sigpending(&pending);
  bool alreadyPending = sigismember(&pending, SIGPIPE) == 1;
  ssize_t written;
  do {
    written = ::write(descriptor, bytes, count);
  } while (written < 0 && errno == EINTR);
  int error = errno;
  if (written < 0 && error == EPIPE && !alreadyPending) {
    std::timespec noWait{0, 0};
    ::sigtimedwait(&pipeSignal, nullptr, &noWait);
  }
  ::pthread_sigmask(SIG_SETMASK, &saved, nullptr);
  errno = error;
  return written;
}

}  // namespace

utl_BinOStream::utl_BinOStream(int descriptor, int endType) : m_Descriptor(descriptor), m_Swapper(endType) {
  ZQA_ASSERT(kSourcePath, endType == omi_BigEndian || endType == omi_LittleEndian);
}

utl_BinOStream::~utl_BinOStream() {
  try {
    Flush();
  } catch (utl_BinStreamException const&) {
  }
}

void utl_BinOStream::WriteSchar(signed char value) { WriteNumber(static_cast<std::uint8_t>(value)); }
void utl_BinOStream::WriteUchar(unsigned char value) { WriteNumber(static_cast<std::uint8_t>(value)); }
void utl_BinOStream::WriteShort(short value) { WriteNumber(static_cast<std::uint16_t>(value)); }
void utl_BinOStream::WriteInt(int value) { WriteNumber(static_cast<std::uint32_t>(value)); }
void utl_BinOStream::WriteUInt(unsigned int value) { WriteNumber(static_cast<std::uint32_t>(value)); }
void utl_BinOStream::WriteInt64(long long value) { WriteNumber(static_cast<std::uint64_t>(value)); }
void utl_BinOStream::WriteUInt64(unsigned long long value) { WriteNumber(static_cast<std::uint64_t>(value)); }

void utl_BinOStream::WriteString(cow_String const& value) {
  WriteInt(value.Length());
  Write(value.CStr(), value.Length());
}

template <class Unsigned>
void utl_BinOStream::WriteNumber(Unsigned bits) {
  char bytes[sizeof bits];
  std::memcpy(bytes, &bits, sizeof bits);
  if (m_Swapper.Swap()) omi_SwapperGuts::SwapArray(bytes, bytes, 1, sizeof bits);
  Write(bytes, sizeof bits);
}

void utl_BinOStream::Write(char const* bytes, int count) {
  ZQA_ASSERT(kSourcePath, count >= 0);
  if (count <= kBufferSize - m_Used) {
    omi_SwapperGuts::CopyBytes(m_Buffer + m_Used, bytes, count);
    m_Used += count;
    return;
  }
  Flush();
  if (count >= kBufferSize) {
    Send(bytes, count);
  } else {
    omi_SwapperGuts::CopyBytes(m_Buffer, bytes, count);
    m_Used = count;
  }
}

void utl_BinOStream::Flush() {
  int count = m_Used;
  m_Used = 0;
  Send(m_Buffer, count);
}

void utl_BinOStream::Send(char const* bytes, int count) {
  while (count > 0) {
    ssize_t written = WriteWithoutSigpipe(m_Descriptor, bytes, static_cast<std::size_t>(count));
    if (written < 0) utl_BinStreamWriteError(m_Descriptor, errno).Throw(kSourcePath, __LINE__);
    bytes += written;
    count -= static_cast<int>(written);
  }
}
