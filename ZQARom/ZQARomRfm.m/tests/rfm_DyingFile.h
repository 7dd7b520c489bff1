#ifndef rfm_DyingFile_h
#define rfm_DyingFile_h

#include "rfm_FileReprLocal.h"

#include <unistd.h>
#include <csignal>
#include <cstddef>
#include <vector>

// A plain file whose process dies by SIGKILL at its n-th write: before the
// write, or torn, after the part of it up to the first page boundary that it
// crosses, as a kill can leave a write in the kernel's page cache. With n 0
// it only keeps a list of its writes.
class rfm_DyingFile : public rfm_FileReprLocal {
public:
  // Writes are cut at multiples of this, and nowhere else.
  static constexpr int kPage = 4096;

  struct Written {
    utl_FileOffset offset;
    int count;
    bool CrossesPage() const { return offset / kPage != (offset + count - 1) / kPage; }
  };

  rfm_DyingFile(cow_String const& name, bool preallocate, std::size_t dieAt, bool torn)
      : rfm_FileReprLocal(name, utl_FileAccessCreate, preallocate), m_DieAt(dieAt), m_Torn(torn) {}

  int Write(char const* buffer, int count) override {
    m_Writes.push_back({Location(), count});
    if (m_Writes.size() == m_DieAt) {
      int head = kPage - static_cast<int>(Location() % kPage);
      if (m_Torn && head < count) rfm_FileReprLocal::Write(buffer, head);
      ::kill(::getpid(), SIGKILL);
    }
    return rfm_FileReprLocal::Write(buffer, count);
  }

  std::vector<Written> const& Writes() const { return m_Writes; }

private:
  std::size_t m_DieAt;
  bool m_Torn;
  std::vector<Written> m_Writes;
};

#endif
