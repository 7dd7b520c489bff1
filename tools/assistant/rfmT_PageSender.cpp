#include "rfmT_PageSender.h"

#include "utl_BinStreamException.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/uio.h>

namespace {

char const kSourcePath[] = "tools/assistant/rfmT_PageSender";

bool IsPipe(int descriptor) {
  struct stat status;
  return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

}  // namespace

rfmT_PageSender::rfmT_PageSender(utl_BinOStream& out) : m_Out(out), m_Lending(IsPipe(out.Descriptor())) {}

void rfmT_PageSender::Resize(int pageSize) { m_Page.assign(static_cast<std::size_t>(pageSize), '\0'); }

bool rfmT_PageSender::PipeEmpty() const {
  int unread = 0;
  return ::ioctl(m_Out.Descriptor(), FIONREAD, &unread) == 0 && unread == 0;
}

void rfmT_PageSender::Reclaim() {
  if (!m_Lending || PipeEmpty()) return;
  m_Lending = false;
  m_Lent.swap(m_Page);
  m_Page.assign(m_Lent.size(), '\0');
}

void rfmT_PageSender::Send(int count) {
  if (!m_Lending) {
    m_Out.Write(m_Page.data(), count);
    return;
  }
  m_Out.Flush();
  iovec rest{m_Page.data(), static_cast<std::size_t>(count)};
  while (rest.iov_len > 0) {
    ssize_t lent = ::vmsplice(m_Out.Descriptor(), &rest, 1, 0);
    if (lent < 0 && errno == EINTR) continue;
    if (lent <= 0) utl_BinStreamWriteError(m_Out.Descriptor(), lent < 0 ? errno : EPIPE).Throw(kSourcePath, __LINE__);
    rest.iov_base = static_cast<char*>(rest.iov_base) + lent;
    rest.iov_len -= static_cast<std::size_t>(lent);
  }
}
