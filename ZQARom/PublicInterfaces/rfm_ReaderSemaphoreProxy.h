#ifndef rfm_ReaderSemaphoreProxy_h
#define rfm_ReaderSemaphoreProxy_h

#include "rfm_Database.h"

// Marks a writer's transaction for the lifetime of a scope: readers in other
// processes see the marker and hold off their Snap until it goes.
class ZQA_EXPORT rfm_ReaderSemaphoreProxy {
public:
  explicit rfm_ReaderSemaphoreProxy(rfm_Database& database) : m_Database(database) {
    m_Database.ReaderSemaphoreSet();
  }
  ~rfm_ReaderSemaphoreProxy() { m_Database.ReaderSemaphoreClear(); }
  rfm_ReaderSemaphoreProxy(rfm_ReaderSemaphoreProxy const&) = delete;
  rfm_ReaderSemaphoreProxy& operator=(rfm_ReaderSemaphoreProxy const&) = delete;

private:
  rfm_Database& m_Database;
};

#endif
