#include "rfmT_PageServer.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfmT_PageDigest.h"
#include "rfm_RemotePages.h"
#include "utl_BinStreamException.h"

namespace {

char const kSourcePath[] = "tools/assistant/rfmT_PageServer";

}  // namespace

rfmT_PageServer::rfmT_PageServer(cow_String const& fileName, int input, int output)
    : m_Name(fileName), m_File(fileName, utl_FileAccessRead, utl_FileShareAll), m_Checker(fileName),
      m_In(input, rfm_RemotePages::kEndType), m_Out(output, rfm_RemotePages::kEndType), m_Sender(m_Out),
      m_SizeSeen(m_File.FileSize()) {}

void rfmT_PageServer::Serve() {
  Greet();
  for (;;) {
    signed char command;
    try {
      command = m_In.ReadSchar();
    } catch (utl_BinStreamEOF const&) {
      return;
    }
    m_Sender.Reclaim();
    switch (command) {
      case rfm_RemotePages::kCommandFileLength:
        SendFileLength();
        break;
      case rfm_RemotePages::kCommandReadPage:
        SendPage();
        break;
      case rfm_RemotePages::kCommandFileStatus:
        SendFileStatus();
        break;
      default:
        Refuse(__LINE__, "unknown request %d", command);
    }
    m_Out.Flush();
  }
}

// The key is not checked here: the assistant talks only to whoever started
// it, over that process's own pipes; keys are the connector's business.
void rfmT_PageServer::Greet() {
  int keyLength = m_In.ReadUchar();
  std::vector<char> key(static_cast<std::size_t>(keyLength));
  m_In.Read(key.data(), keyLength);
  m_Out.WriteShort(rfm_RemotePages::kProtocolVersion);
  m_Out.Flush();
  short agreed = m_In.ReadShort();
  if (agreed != rfm_RemotePages::kProtocolVersion) Refuse(__LINE__, "page protocol version %d is not spoken here", agreed);
  int pageSize = m_In.ReadInt();
  if (pageSize <= 0 || pageSize > rfm_RemotePages::kLargestPageSize) Refuse(__LINE__, "page size %d refused", pageSize);
  m_PageSize = pageSize;
  m_Sender.Resize(pageSize);
}

void rfmT_PageServer::SendFileLength() {
  m_Out.WriteSchar(rfm_RemotePages::kCommandFileLength);
  SendStatusBlock(-1);
  m_Out.WriteInt64(m_File.FileSize());
}

void rfmT_PageServer::SendFileStatus() {
  m_Out.WriteSchar(rfm_RemotePages::kCommandFileStatus);
  SendStatusBlock(-1);
}

void rfmT_PageServer::SendPage() {
  int dropped = m_In.ReadShort();
  if (dropped < 0) Refuse(__LINE__, "a count of %d dropped pages", dropped);
  for (int index = 0; index < dropped; ++index) m_Sent.erase(m_In.ReadInt64());
  long long start = m_In.ReadInt64();
  int pageSize = m_In.ReadInt();
  if (pageSize != m_PageSize) Refuse(__LINE__, "a page size of %d in a request", pageSize);
  if (start < 0 || start % m_PageSize != 0) Refuse(__LINE__, "a page at %d", start);

  m_Out.WriteSchar(rfm_RemotePages::kCommandReadPage);
  SendStatusBlock(start);
  int length = ReadPage(start);
  m_Out.WriteInt(length);
  m_Sender.Send(length);
  // The digest is taken while the reader copies the page out: a lent page
  // stays as it is until the next request.
  m_Sent[start] = rfmT_PageDigest(m_Sender.Page(), length);
}

void rfmT_PageServer::SendStatusBlock(long long pageBeingSent) {
  rfm_FileStatus::RfmFileStatus status = m_Checker.CheckStatus();
  long long size = 0;
  if (status == rfm_FileStatus::kUnchanged || status == rfm_FileStatus::kFlushed) {
    size = m_File.FileSize();
    // A writer that has written without flushing yet has changed pages too.
    if (size != m_SizeSeen) status = rfm_FileStatus::kFlushed;
  }
  m_Out.WriteSchar(static_cast<signed char>(status));
  if (status != rfm_FileStatus::kFlushed) return;
  m_SizeSeen = size;
  std::vector<long long> stale = StalePages(pageBeingSent);
  m_Out.WriteInt(static_cast<int>(stale.size()));
  for (long long start : stale) m_Out.WriteInt64(start);
}

std::vector<long long> rfmT_PageServer::StalePages(long long pageBeingSent) {
  std::vector<long long> stale;
  for (auto sent = m_Sent.begin(); sent != m_Sent.end();) {
    if (sent->first != pageBeingSent && rfmT_PageDigest(m_Sender.Page(), ReadPage(sent->first)) != sent->second) {
      stale.push_back(sent->first);
      sent = m_Sent.erase(sent);
    } else {
      ++sent;
    }
  }
  return stale;
}

int rfmT_PageServer::ReadPage(long long start) {
  m_File.Seek(start);
  int length = 0;
  while (length < m_PageSize) {
    int got = m_File.Read(m_Sender.Page() + length, m_PageSize - length);
    if (got == 0) break;
    length += got;
  }
  return length;
}

void rfmT_PageServer::Refuse(int line, char const* format, long long value) {
  nex_ThrowMessage(kSourcePath, line, atr_SubstituteFormat(atr_translate(format), value));
}
