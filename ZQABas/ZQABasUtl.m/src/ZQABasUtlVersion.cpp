#include "ZQABasUtlVersion.h"

// The numbers come from the build (the project's version); release type 0
// marks a build of the sources, not a numbered release.
ZQABasUtlVersion::ZQABasUtlVersion()
    : m_ReleaseType(ZQA_RELEASE_TYPE),
      m_MajorVersion(ZQA_VERSION_MAJOR),
      m_MinorVersion(ZQA_VERSION_MINOR),
      m_UpdateVersion(ZQA_VERSION_PATCH) {}
