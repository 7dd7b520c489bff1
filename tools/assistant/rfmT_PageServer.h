#ifndef rfmT_PageServer_h
#define rfmT_PageServer_h

#include "cow_String.h"
#include "rfmT_PageSender.h"
#include "rfm_DBStatusChecker.h"
#include "utl_BinIStream.h"
#include "utl_BinOStream.h"
#include "utl_File.h"

#include <cstdint>
#include <map>
#include <vector>

// Serves one database file to one remote reader, in pages, over a pair of
// descriptors (the conversation is described in rfm_RemotePages.h). It
// remembers a digest of every page it has sent and the reader still holds;
// when the file's flush count or size moves, it reads those pages again and
// names the ones whose bytes differ as stale, so the reader fetches again
// exactly what changed.
//
// Invariant: m_Sent holds, for each page the reader may hold, the digest of
// the bytes last sent for it.
class rfmT_PageServer {
public:
  // Opens the file, so that a file that cannot be read fails before the
  // conversation starts.
  rfmT_PageServer(cow_String const& fileName, int input, int output);

  // Runs the conversation until the reader closes the input. Raises, with a
  // reason, on a request it cannot serve.
  void Serve();

private:
  void Greet();
  void SendFileLength();
  void SendPage();
  void SendFileStatus();
  // The status block; pageBeingSent is left out of the stale pages, as the
  // reader is about to receive it afresh.
  void SendStatusBlock(long long pageBeingSent);
  std::vector<long long> StalePages(long long pageBeingSent);
  int ReadPage(long long start);
  [[noreturn]] void Refuse(int line, char const* format, long long value);

  cow_String m_Name;
  utl_File m_File;
  rfm_DBStatusCheckerFileLocal m_Checker;
  utl_BinIStream m_In;
  utl_BinOStream m_Out;
  rfmT_PageSender m_Sender;
  int m_PageSize = 0;
  std::map<long long, std::uint64_t> m_Sent;
  long long m_SizeSeen = 0;
};

#endif
