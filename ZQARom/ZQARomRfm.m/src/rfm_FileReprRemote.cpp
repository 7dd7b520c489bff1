#include "rfm_FileReprRemote.h"

#include "ZQABasAssert.h"
#include "ZQABasUtlUrlParser.h"
#include "atr_String.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "nex_PrimException.h"
#include "rfm_FileCache.h"
#include "rfm_FileException.h"
#include "rfm_RemotePages.h"
#include "uti_Redirection.h"
#include "uti_SpawnSourceWithSink.h"
#include "utl_BinIStream.h"
#include "utl_BinOStream.h"
#include "utl_BinStreamException.h"
#include "utl_PathFinder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_FileReprRemote";
char const kErrorFilePrefix[] = "zbxrdb_err_";

// The connector that runs the assistant on another host.
char const kConnectorPathVariable[] = "ZOR_PATH";
char const kConnectorSubDirectory[] = "ZQAExternal/dmbwtr";
char const kConnector[] = "dmbwtr";
char const kScratchMark[] = "SCRATCHDIR_RHOST";

// The lines of a spawned program's standard error that give a reason, by
// their beginnings.
char const* const kReasonPrefixes[] = {"dmbwtrd,", "dmbwtr,", rfm_RemotePages::kAssistantErrorPrefix,
                                       "Zorbex Error:"};
constexpr int kStderrLineLimit = 512;

// The most a key's length can say: it travels as a Uchar.
constexpr int kLongestKey = 255;

// The size past which a file is worth a warning: five times one MiB per
// page the cache may hold, whatever the page size.
constexpr long long kWarningBytesPerCachePage = 5242880;

// How long closing waits for the assistant to finish after its input ends.
constexpr auto kShutdownWait = std::chrono::seconds(10);

constexpr long long kNoPage = -1;

bool HasReasonPrefix(char const* line) {
  for (char const* prefix : kReasonPrefixes) {
    if (std::strncmp(line, prefix, std::strlen(prefix)) == 0) return true;
  }
  return false;
}

}  // namespace

rfm_FileReprRemote::rfm_FileReprRemote(cow_String const& url, cow_String const& key)
    : rfm_FileRepr(url), m_ErrorFile(kErrorFilePrefix), m_Cache(&rfm_FileCache::Instance()) {
  ZQA_ASSERT(kSourcePath, ZQABasUtlUrlParser::IsUrl(url));
  ZQA_ASSERT(kSourcePath, ZQABasUtlUrlParser::HasHost(url));
  ZQA_ASSERT(kSourcePath, ZQABasUtlUrlParser::HasPath(url));
  Start(url);
  try {
    Greet(url, key);
    m_LogicalFileSize = m_PhysicalFileSize = GetFileLength();
  } catch (utl_BinStreamException const&) {
    Disconnect(__LINE__, InterpretStderr(m_ErrorFile));
  }
  m_Opened = true;
}

rfm_FileReprRemote::~rfm_FileReprRemote() {
  Shutdown();
  m_Cache->FreeAllPages(&m_Pages);
}

void rfm_FileReprRemote::Start(cow_String const& url) {
  cow_String program;
  cow_List<cow_String> arguments;
  if (ZQABasUtlUrlParser::HasPort(url)) {
    cow_String directory =
        utl_PathFinder::getSubDirPath(kConnectorPathVariable, kConnectorSubDirectory, kConnector, false, false, false);
    if (directory.Empty()) {
      rfm_FileConnectExc(url, atr_translate("Cannot locate dmbwtr executable")).Throw(kSourcePath, __LINE__);
    }
    program = directory + "/" + kConnector;
    for (cow_String const& argument :
         {cow_String("-cpu"), ZQABasUtlUrlParser::GetHost(url), cow_String("-private"), cow_String("-port"),
          ZQABasUtlUrlParser::GetPort(url), cow_String(rfm_RemotePages::kAssistantProgram),
          ZQABasUtlUrlParser::GetPath(url)}) {
      arguments.Append(argument);
    }
    if (std::strstr(url.CStr(), kScratchMark) != nullptr) arguments.Append("-scratch");
  } else {
    ZQA_ASSERT(kSourcePath, ZQABasUtlUrlParser::GetHost(url) == "localhost");
    program = rfm_RemotePages::kAssistantProgram;
    arguments.Append(ZQABasUtlUrlParser::GetPath(url));
  }
  try {
    m_Spawn.reset(new uti_SpawnSourceWithSink(program, arguments,
                                              uti_Redirection(uti_Redirection::kStandardError, m_ErrorFile.Name()),
                                              cow_Map<cow_String, cow_String>()));
  } catch (nex_PrimException<atr_String, 1> const& failure) {
    rfm_FileConnectExc(url, cow_String(failure.what())).Throw(kSourcePath, __LINE__);
  }
  // A pipe that holds a whole page lets a page cross in one turn of the two
  // processes rather than in one per 64 KiB. Where the system refuses the
  // size, the pipe keeps its own.
  ::fcntl(m_Spawn->SourceDescriptor(), F_SETPIPE_SZ, m_Cache->PageSize());
  m_Out.reset(new utl_BinOStream(m_Spawn->SinkDescriptor(), rfm_RemotePages::kEndType));
  m_In.reset(new utl_BinIStream(m_Spawn->SourceDescriptor(), rfm_RemotePages::kEndType));
}

void rfm_FileReprRemote::Greet(cow_String const& url, cow_String const& key) {
  cow_String presented = key;
  if (presented.Empty() && ZQABasUtlUrlParser::HasPass(url)) presented = ZQABasUtlUrlParser::GetPass(url);
  if (presented.Length() > kLongestKey) {
    Disconnect(__LINE__, atr_SubstituteFormat(atr_translate("the key is longer than %d bytes"), kLongestKey));
  }
  m_Out->WriteUchar(static_cast<unsigned char>(presented.Length()));
  m_Out->Write(presented.CStr(), presented.Length());
  m_Out->Flush();

  short offered = m_In->ReadShort();
  m_Version = std::min(offered, rfm_RemotePages::kProtocolVersion);
  if (m_Version != rfm_RemotePages::kProtocolVersion) {
    Disconnect(__LINE__, atr_SubstituteFormat(atr_translate("the file assistant speaks version %d of the page "
                                                            "protocol, this library version %d"),
                                              static_cast<int>(offered),
                                              static_cast<int>(rfm_RemotePages::kProtocolVersion)));
  }
  m_Out->WriteShort(m_Version);
  m_Out->WriteInt(m_Cache->PageSize());
}

long long rfm_FileReprRemote::GetFileLength() {
  m_Out->WriteSchar(rfm_RemotePages::kCommandFileLength);
  m_Out->Flush();
  ExpectAcknowledgement(rfm_RemotePages::kCommandFileLength);
  ReceiveFileStatus(kNoPage);
  long long length = m_In->ReadInt64();
  if (length < 0) {
    Disconnect(__LINE__, atr_SubstituteFormat(atr_translate("the file assistant sent a length of %d bytes"), length));
  }
  return length;
}

int rfm_FileReprRemote::Read(char* buffer, int count) {
  if (count < 0) {
    nex_ThrowMessage(kSourcePath, __LINE__,
                     atr_translate("rfm_FileReprRemote::Read: Invalid length when reading file."));
  }
  if (count == 0) return 0;
  if (buffer == nullptr) rfm_FileBadParameterExc("rfm_FileReprRemote::Read").Throw(kSourcePath, __LINE__);

  int const pageSize = m_Cache->PageSize();
  long long position = m_Location;
  int delivered = 0;
  int remaining = count;
  for (;;) {
    long long const key = position / pageSize * pageSize;
    rfm_FileCacheBlock* block = m_Cache->GetPage(key, &m_Pages);
    try {
      block->ReadPartial(delivered, buffer, remaining, position);
      if (remaining > 0 && block->Length() < pageSize) {
        FetchPage(block);
        block->ReadPartial(delivered, buffer, remaining, position);
      }
    } catch (utl_BinStreamException const&) {
      // A page half received cannot be trusted: its block goes back empty.
      m_Cache->FreePage(key, &m_Pages);
      m_Location = position;
      Disconnect(__LINE__, InterpretStderr(m_ErrorFile));
    } catch (...) {
      m_Cache->FreePage(key, &m_Pages);
      m_Location = position;
      throw;
    }
    m_Cache->IdlePage(block);
    if (remaining == 0 || block->Length() < pageSize) break;
  }
  m_Location = position;
  return delivered;
}

void rfm_FileReprRemote::FetchPage(rfm_FileCacheBlock* block) {
  m_Out->WriteSchar(rfm_RemotePages::kCommandReadPage);
  // Pages this file lost to other files: the assistant stops watching them.
  // Past what one request can name, the assistant keeps watching some in
  // vain, and a stale report of them finds nothing to free.
  cow_List<long long> dropped = m_Cache->SiftMap(&m_Pages);
  int const named = std::min(dropped.Length(), rfm_RemotePages::kMostDroppedPages);
  m_Out->WriteShort(static_cast<short>(named));
  for (int index = 0; index < named; ++index) m_Out->WriteInt64(dropped[index]);
  m_Out->WriteInt64(block->Key());
  m_Out->WriteInt(m_Cache->PageSize());
  m_Out->Flush();
  ExpectAcknowledgement(rfm_RemotePages::kCommandReadPage);
  ReceiveFileStatus(block->Key());
  try {
    block->FetchPage(*m_In);
  } catch (nex_PrimException<atr_String, 1> const& failure) {
    // A page refused, or one the cache file could not take, leaves the rest
    // of it in the pipe: the conversation cannot go on.
    Disconnect(__LINE__, cow_String(failure.what()));
  }
  ++m_PagesFetched;
}

void rfm_FileReprRemote::ReceiveFileStatus(long long pageBeingFetched) {
  int status = m_In->ReadSchar();
  if (status < rfm_FileStatus::kUnchanged || status > rfm_FileStatus::kInTransaction) {
    Disconnect(__LINE__, atr_SubstituteFormat(atr_translate("the file assistant sent status %d"), status));
  }
  m_FileStatus = status;
  if (status != rfm_FileStatus::kFlushed) return;
  m_FlushUnannounced = true;
  int stale = m_In->ReadInt();
  if (stale < 0) {
    Disconnect(__LINE__, atr_SubstituteFormat(atr_translate("the file assistant sent %d stale pages"), stale));
  }
  // Stale pages go before anything reads them again.
  for (int index = 0; index < stale; ++index) {
    long long key = m_In->ReadInt64();
    // The page being fetched is about to be replaced whole; its block is
    // busy and must stay with it.
    if (key != pageBeingFetched) m_Cache->FreePage(key, &m_Pages);
  }
}

void rfm_FileReprRemote::ExpectAcknowledgement(signed char command) {
  signed char answer = m_In->ReadSchar();
  if (answer != command) {
    Disconnect(__LINE__, atr_SubstituteFormat(atr_translate("the file assistant answered request %d with %d"),
                                              static_cast<int>(command), static_cast<int>(answer)));
  }
}

rfm_FileStatus::RfmFileStatus rfm_FileReprRemote::FileStatus() {
  try {
    m_Out->WriteSchar(rfm_RemotePages::kCommandFileStatus);
    m_Out->Flush();
    ExpectAcknowledgement(rfm_RemotePages::kCommandFileStatus);
    ReceiveFileStatus(kNoPage);
  } catch (utl_BinStreamException const&) {
    Disconnect(__LINE__, InterpretStderr(m_ErrorFile));
  }
  // The assistant tells of a flush once, in whichever answer comes first; a
  // flush told while a page was read is still news to the caller here.
  auto status = static_cast<rfm_FileStatus::RfmFileStatus>(m_FileStatus);
  if (status == rfm_FileStatus::kUnchanged && m_FlushUnannounced) status = rfm_FileStatus::kFlushed;
  if (status == rfm_FileStatus::kFlushed) m_FlushUnannounced = false;
  return status;
}

void rfm_FileReprRemote::ForgetCached(utl_FileOffset offset, utl_FileOffset length) {
  long long const pageSize = m_Cache->PageSize();
  for (long long key = offset / pageSize * pageSize; key < offset + length; key += pageSize) {
    m_Cache->FreePage(key, &m_Pages);
  }
}

utl_FileOffset rfm_FileReprRemote::LengthStored() {
  try {
    return GetFileLength();
  } catch (utl_BinStreamException const&) {
    Disconnect(__LINE__, InterpretStderr(m_ErrorFile));
  }
}

cow_String rfm_FileReprRemote::CheckNZDBCache() {
  if (LengthStored() <= m_Cache->PageLimit() * kWarningBytesPerCachePage) return cow_String();
  return atr_translate(
      "The Network ZDB file being opened is over five times the size of the Network ZDB cache file. Performance "
      "may be degraded. If this is not acceptable, please relocate the temporary file directory to a location that "
      "has more free space.");
}

void rfm_FileReprRemote::FTPCheckCheck(int offset) { CheckTransferRecord(offset); }

void rfm_FileReprRemote::Extend(utl_FileOffset) { rfm_FileReadOnlyExc(m_Name).Throw(kSourcePath, __LINE__); }

int rfm_FileReprRemote::Write(char const*, int) { rfm_FileReadOnlyExc(m_Name).Throw(kSourcePath, __LINE__); }

bool rfm_FileReprRemote::FileExtend(utl_FileOffset) { rfm_FileReadOnlyExc(m_Name).Throw(kSourcePath, __LINE__); }

void rfm_FileReprRemote::Trim() { rfm_FileReadOnlyExc(m_Name).Throw(kSourcePath, __LINE__); }

void rfm_FileReprRemote::FTPCheckSet(int) { rfm_FileReadOnlyExc(m_Name).Throw(kSourcePath, __LINE__); }

cow_String rfm_FileReprRemote::InterpretStderr(utl_TempFile const& errorFile) {
  cow_String reason = atr_translate("Can't be determined");
  int descriptor = errorFile.OpenIfPresent();
  if (descriptor < 0) return reason;
  std::FILE* lines = ::fdopen(descriptor, "r");
  if (lines == nullptr) {
    ::close(descriptor);
    return reason;
  }
  char line[kStderrLineLimit];
  while (std::fgets(line, sizeof line, lines) != nullptr) {
    if (!HasReasonPrefix(line)) continue;
    // The reason is quoted in a message of its own lines: no line end.
    line[std::strcspn(line, "\r\n")] = '\0';
    reason = atr_SubstituteFormat(atr_translate("%s"), line);
  }
  std::fclose(lines);
  return reason;
}

void rfm_FileReprRemote::Disconnect(int line, cow_String const& reason) {
  m_Spawn->Reap(0);
  if (!m_Opened) rfm_FileConnectExc(m_Name, reason).Throw(kSourcePath, line);
  rfm_FileFailExc(m_Name, reason).Throw(kSourcePath, line);
}

// The assistant ends when its input does. Its answers still on the way are
// read and dropped, so that it never waits on a full pipe; one that has not
// ended within kShutdownWait is killed, so closing never hangs.
void rfm_FileReprRemote::Shutdown() noexcept {
  if (!m_Spawn) return;
  m_Out.reset();
  m_In.reset();
  if (m_Spawn->IsRunning()) {
    m_Spawn->CloseSink();
    auto const deadline = std::chrono::steady_clock::now() + kShutdownWait;
    char scratch[4096];
    for (;;) {
      auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      if (left.count() <= 0) break;
      pollfd source{m_Spawn->SourceDescriptor(), POLLIN, 0};
      int ready = ::poll(&source, 1, static_cast<int>(left.count()));
      if (ready < 0 && errno == EINTR) continue;
      if (ready <= 0) break;
      ssize_t got = ::read(source.fd, scratch, sizeof scratch);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
    }
  }
  m_Spawn->Reap(0);
}
