#ifndef rfm_FileRepr_h
#define rfm_FileRepr_h

#include "rfm_FileKind.h"
#include "rfm_FileStatus.h"
#include "rfm_IO.h"

// A stored file, whatever it really is: the one interface the database
// layer reads and writes through. It keeps the current location, the
// logical length (what the layers above asked for) and the physical length
// (the real size of the file).
class rfm_FileRepr : public rfm_IO {
public:
  ~rfm_FileRepr() override;

  // What holds the bytes: each representation answers for itself.
  virtual rfm_FileKind Kind() const = 0;

  // The logical length.
  utl_FileOffset Length() const override { return m_LogicalFileSize; }
  utl_FileOffset Location() const override { return m_Location; }

  virtual utl_FileOffset LengthLogical() const { return m_LogicalFileSize; }
  virtual utl_FileOffset LengthPysical() const { return m_PhysicalFileSize; }
  // The bytes from the start that the file really holds now: no stored
  // offset or length that points beyond them can be right. Asked afresh,
  // since another process may have grown the file. A representation that
  // cannot tell answers the largest offset, and nothing is refused for it.
  virtual utl_FileOffset LengthStored();
  // Whether the file stores every byte of a range below LengthStored().
  // Only a compressed file, whose segments never written store nothing,
  // can answer false.
  virtual bool Stores(utl_FileOffset offset, utl_FileOffset length);
  // Drops what this file keeps of a range in memory, so that the next read
  // of it sees the bytes stored now. Only a remote file, whose pages stay
  // in a cache until its assistant names them stale, keeps anything.
  virtual void ForgetCached(utl_FileOffset offset, utl_FileOffset length);
  // Grows the logical length by delta; answers whether the real file grew.
  virtual bool FileExtend(utl_FileOffset delta) = 0;
  // Gives the real file back its unused tail.
  virtual void Trim() = 0;
  virtual rfm_FileStatus::RfmFileStatus FileStatus();
  virtual cow_String CheckNZDBCache();
  // Writes and checks the record that detects a file damaged by a text-mode
  // transfer; representations without such a record do nothing.
  virtual void FTPCheckSet(int offset);
  virtual void FTPCheckCheck(int offset);

  cow_String const& FileName() const { return m_Name; }

  // The writer's transaction marker: a writer sets it around a transaction,
  // and a reader asks whether another process's transaction is running.
  bool ReaderSemaphore();
  void ReaderSemaphoreSet();
  void ReaderSemaphoreClear();

protected:
  explicit rfm_FileRepr(cow_String const& name) : m_Name(name) {}

  // The transfer check record at offset: written with the physical length,
  // and checked against it, through this file's own Seek, Read and Write.
  // The location is kept.
  void WriteTransferRecord(int offset);
  void CheckTransferRecord(int offset);

  utl_FileOffset m_Location = 0;
  utl_FileOffset m_LogicalFileSize = 0;
  utl_FileOffset m_PhysicalFileSize = 0;
  cow_String m_Name;
  bool m_ReaderSemaphoreHeld = false;
};

#endif
