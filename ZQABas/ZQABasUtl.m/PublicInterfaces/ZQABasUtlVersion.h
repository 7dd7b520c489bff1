#ifndef ZQABasUtlVersion_h
#define ZQABasUtlVersion_h

#include "ZQABasExport.h"
#include "omi_Singleton.h"

// This program's release: what a database header records of the program
// that wrote it. The release type comes first: it is what a writer records
// when its caller names none.
class ZQA_EXPORT ZQABasUtlVersion : public omi_Singleton<ZQABasUtlVersion> {
public:
  int ReleaseType() const { return m_ReleaseType; }
  int MajorVersion() const { return m_MajorVersion; }
  int MinorVersion() const { return m_MinorVersion; }
  int UpdateVersion() const { return m_UpdateVersion; }

private:
  friend class omi_Singleton<ZQABasUtlVersion>;
  ZQABasUtlVersion();

  int m_ReleaseType;
  int m_MajorVersion;
  int m_MinorVersion;
  int m_UpdateVersion;
};

#endif
