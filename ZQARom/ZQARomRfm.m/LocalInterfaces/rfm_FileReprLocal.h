#ifndef rfm_FileReprLocal_h
#define rfm_FileReprLocal_h

#include "rfm_FileRepr.h"
#include "utl_File.h"

#include <memory>

class rfm_DBStatusCheckerFileLocal;

// A plain file on the local file system. Data reaches the file in each
// Write; with preallocation the real file grows in steps of 1 MiB ahead of
// the logical length, so that a growing database changes the file's size
// rarely, and Trim gives the unused tail back.
//
// Invariant: the location is the utl_File's position, and the physical
// length is at least every offset written.
class rfm_FileReprLocal : public rfm_FileRepr {
public:
  static constexpr utl_FileOffset kPreallocationStep = 1 << 20;

  // access is a utl_FileAccess value. An existing file (read or update) gets
  // a status checker and starts with both lengths at its size; a created
  // one starts empty.
  rfm_FileReprLocal(cow_String const& name, int access, bool preallocate);
  ~rfm_FileReprLocal() override;

  bool ReadOnly() const override { return m_ReadOnly; }
  rfm_FileKind Kind() const override { return rfm_FileKindPlain; }
  void Seek(utl_FileOffset offset) override;
  void Flush() override {}
  void Extend(utl_FileOffset delta) override { FileExtend(delta); }
  int Read(char* buffer, int count) override;
  int Write(char const* buffer, int count) override;

  bool FileExtend(utl_FileOffset delta) override;
  utl_FileOffset LengthStored() override { return m_File.FileSize(); }
  void Trim() override;
  rfm_FileStatus::RfmFileStatus FileStatus() override;
  void FTPCheckSet(int offset) override;
  void FTPCheckCheck(int offset) override;

private:
  [[noreturn]] void RaiseReadOnly(int line) const;

  utl_File m_File;
  std::unique_ptr<rfm_DBStatusCheckerFileLocal> m_StatusChecker;
  bool m_ReadOnly;
  bool m_Preallocate;
};

#endif
