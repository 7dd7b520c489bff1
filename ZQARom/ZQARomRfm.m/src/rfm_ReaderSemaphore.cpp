#include "rfm_ReaderSemaphore.h"

#include "ZQABasUtlStat.h"
#include "ZQABasUtlUrlParser.h"

#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

char const kDatabaseExtension[] = ".zdb";
char const kMarkerExtension[] = ".lsm";
constexpr mode_t kMarkerMode = 0744;

// With PAUSE_FOR_TRANSACTION set, a writer halts at each edge of a
// transaction until a line is typed, so that readers can be tried there.
void PauseForTransaction(char const* prompt) {
  if (std::getenv("PAUSE_FOR_TRANSACTION") == nullptr) return;
  std::fputs(prompt, stderr);
  std::fflush(stderr);
  char line[10];
  if (std::fgets(line, sizeof line, stdin) == nullptr) return;
}

}  // namespace

cow_String rfm_ReaderSemaphore::MakeSemaphorePath(cow_String const& name) {
  int dot = name.rfind(".");
  if (dot != cow_String::kNotFound && name.Substr(dot, cow_String::kAll) == kDatabaseExtension) {
    return name.Substr(0, dot).Append(kMarkerExtension);
  }
  return cow_String(name).Append(kMarkerExtension);
}

bool rfm_ReaderSemaphore::ReaderSemaphore(cow_String const& name) {
  if (ZQABasUtlUrlParser::IsUrl(name)) return false;
  return ZQABasUtlStat(MakeSemaphorePath(name)).Found();
}

void rfm_ReaderSemaphore::ReaderSemaphoreSet(cow_String const& name) {
  PauseForTransaction("Before transaction: ");
  // W6: the marker stands from here until the transaction's clear.
  ::mkdir(MakeSemaphorePath(name).CStr(), kMarkerMode);
}

void rfm_ReaderSemaphore::ReaderSemaphoreClear(cow_String const& name) {
  ::rmdir(MakeSemaphorePath(name).CStr());
  PauseForTransaction("After transaction: ");
}

void rfm_ReaderSemaphore::ReaderSemaphoreWait(cow_String const& name) {
  while (ReaderSemaphore(name)) ::sleep(1);
}
