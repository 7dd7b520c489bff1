#ifndef rfmT_PageSender_h
#define rfmT_PageSender_h

#include "utl_BinOStream.h"

#include <vector>

// The file assistant's page buffer and the way its bytes reach the reader.
// When the output is a pipe, a page is lent to it (vmsplice) instead of
// copied in: the reader then copies the bytes straight out of this
// process's memory, which saves a copy of every page and the time both
// sides would spend waiting on the pipe's lock while it is copied.
//
// Invariant: bytes of the buffer that Page() returns never wait unread in
// the pipe. A lent page waits there until the reader takes it, so Reclaim,
// called before each request is served, checks that the pipe is empty; a
// reader that asks again before reading a whole answer finds it not, and
// the assistant then keeps the lent buffer aside and copies from then on.
class rfmT_PageSender {
public:
  explicit rfmT_PageSender(utl_BinOStream& out);

  void Resize(int pageSize);
  // Before serving a request: makes Page() safe to fill.
  void Reclaim();
  char* Page() { return m_Page.data(); }
  // Sends what the stream holds, then the first count bytes of the page.
  void Send(int count);
  // Whether pages still go to the output by reference.
  bool Lending() const { return m_Lending; }

private:
  bool PipeEmpty() const;

  utl_BinOStream& m_Out;
  bool m_Lending;
  std::vector<char> m_Page;
  // A buffer that the pipe may still hold pages of; it lives as long as the
  // assistant.
  std::vector<char> m_Lent;
};

#endif
