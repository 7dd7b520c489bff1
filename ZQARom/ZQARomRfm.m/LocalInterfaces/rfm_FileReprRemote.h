#ifndef rfm_FileReprRemote_h
#define rfm_FileReprRemote_h

#include "rfm_FileCacheBlock.h"
#include "rfm_FileRepr.h"
#include "utl_TempFile.h"

#include <memory>

class rfm_FileCache;
class uti_SpawnSourceWithSink;
class utl_BinIStream;
class utl_BinOStream;

// A database file on another machine, read-only, named by a URL. A file
// assistant started for it serves the file in pages over its standard
// input and output (the conversation is described in rfm_RemotePages.h);
// the pages land in the process's shared rfm_FileCache, so each page
// travels once until the assistant reports it stale.
//
// Without a port in the URL the assistant runs on this machine; with one, a
// connector program runs it on the host the URL names.
//
// Invariants: m_Pages maps the start of every page this file holds to its
// block, or to null for a page the cache gave to another file; a block is
// busy only within one Read. Once the conversation has broken, the child
// has been collected and every further request fails the same way.
class rfm_FileReprRemote : public rfm_FileRepr {
public:
  // Starts the assistant and opens the conversation with the key (or the
  // URL's password when the key is empty). Raises rfm_FileConnectExc with
  // the assistant's last error line when that fails.
  rfm_FileReprRemote(cow_String const& url, cow_String const& key);
  ~rfm_FileReprRemote() override;

  bool ReadOnly() const override { return true; }
  rfm_FileKind Kind() const override { return rfm_FileKindRemote; }
  // Any place, also past the end: a read there meets a short page.
  void Seek(utl_FileOffset offset) override { m_Location = offset; }
  void Flush() override {}
  void Extend(utl_FileOffset delta) override;
  int Read(char* buffer, int count) override;
  int Write(char const* buffer, int count) override;

  // The file's length as the assistant sees it now.
  utl_FileOffset LengthStored() override;
  // Frees the cached pages that hold any byte of the range.
  void ForgetCached(utl_FileOffset offset, utl_FileOffset length) override;
  bool FileExtend(utl_FileOffset delta) override;
  void Trim() override;
  // Asks the assistant; stale pages it names are dropped on the way. A
  // flush is answered once, also when it was first seen by a read.
  rfm_FileStatus::RfmFileStatus FileStatus() override;
  // A warning when the file is over five times the cache, else empty.
  cow_String CheckNZDBCache() override;
  void FTPCheckSet(int offset) override;
  void FTPCheckCheck(int offset) override;

  short Version() const { return m_Version; }
  // Pages received from the assistant since opening.
  long long PagesFetched() const { return m_PagesFetched; }

  // The reason a spawned program gave for failing: the last line of its
  // standard error that one of the remote programs marks as an error, or
  // "Can't be determined".
  static cow_String InterpretStderr(utl_TempFile const& errorFile);

private:
  void Start(cow_String const& url);
  void Greet(cow_String const& url, cow_String const& key);
  long long GetFileLength();
  void FetchPage(rfm_FileCacheBlock* block);
  void ReceiveFileStatus(long long pageBeingFetched);
  void ExpectAcknowledgement(signed char command);
  void Shutdown() noexcept;
  // Collects the child and raises: the connect failure while opening, the
  // lost connection after.
  [[noreturn]] void Disconnect(int line, cow_String const& reason);

  utl_TempFile m_ErrorFile;
  std::unique_ptr<uti_SpawnSourceWithSink> m_Spawn;
  std::unique_ptr<utl_BinOStream> m_Out;
  std::unique_ptr<utl_BinIStream> m_In;
  rfm_FileCache* m_Cache;
  rfm_FileCachePageMap m_Pages;
  int m_FileStatus = rfm_FileStatus::kUnchanged;
  // A flush reported in the answer to a page or length request, not yet
  // returned by FileStatus.
  bool m_FlushUnannounced = false;
  short m_Version = 0;
  bool m_Opened = false;
  long long m_PagesFetched = 0;
};

#endif
