#ifndef rfm_SectorFile_h
#define rfm_SectorFile_h

#include "cow_String.h"
#include "utl_File.h"

#include <vector>

// A file cut into fixed-size sectors, numbered from 0: sector n is the
// bytes from n times the sector size. Sectors are only ever added, never
// freed. The file grows 256 sectors at a time, and closing cuts it back to
// the sectors in use, so an interrupted writer leaves at most 255 spare
// sectors, which a later open counts as used.
//
// Invariants: m_UsedSectors <= m_AllocatedSectors, and the file is at least
// m_AllocatedSectors sectors long; the prefetched run always equals the
// file's bytes of its sectors.
class rfm_SectorFile {
public:
  static constexpr int kGrowthSectors = 256;

  // access is a utl_FileAccess value; a created file starts empty.
  rfm_SectorFile(cow_String const& name, int sectorSize, int access);
  ~rfm_SectorFile();
  rfm_SectorFile(rfm_SectorFile const&) = delete;
  rfm_SectorFile& operator=(rfm_SectorFile const&) = delete;

  // The number of a new sector at the end, its link word already -1.
  int NewSector();

  // Moves count bytes at offset inside sector number; returns the count
  // moved, which is short only where the file is.
  int Read(int number, int offset, char* buffer, int count);
  void Write(int number, int offset, char const* buffer, int count);
  // Reads up to sectors whole sectors from number on in one call and keeps
  // them, so that reading a chain laid out in order costs one system call
  // per run instead of two per sector. Later writes to them update them.
  void Prefetch(int number, int sectors);

  // Whether number can name a sector after sector 0: one that exists.
  bool IsLinkable(int number) const { return number > 0 && number < m_UsedSectors; }
  // Raises the compressed file's corruption message, naming the file; the
  // source path and line tell where the damage was found.
  [[noreturn]] void RaiseCorrupt(char const* sourcePath, int line) const;

  int SectorSize() const { return m_SectorSize; }
  int UsedSectors() const { return m_UsedSectors; }
  cow_String const& Name() const { return m_File.Name(); }

private:
  static constexpr int kLargestRun = 64;

  bool InRun(int number) const { return number >= m_RunFirst && number < m_RunFirst + m_RunSectors; }

  utl_File m_File;
  int m_SectorSize;
  int m_UsedSectors = 0;
  int m_AllocatedSectors = 0;
  // The sectors of the last prefetch: m_RunSectors of them from m_RunFirst.
  std::vector<char> m_Run;
  int m_RunFirst = 0;
  int m_RunSectors = 0;
};

#endif
