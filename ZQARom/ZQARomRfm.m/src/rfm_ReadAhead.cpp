#include "rfm_ReadAhead.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

char const kSwitch[] = "ZQA_READ_AHEAD";
char const kOff[] = "0";

// Read once, at the first question or change.
std::atomic<bool>& Enabled() {
  static std::atomic<bool> enabled{[] {
    char const* value = std::getenv(kSwitch);
    return value == nullptr || std::strcmp(value, kOff) != 0;
  }()};
  return enabled;
}

}  // namespace

void rfm_ReadAhead::SetEnabled(bool enabled) { Enabled().store(enabled); }

bool rfm_ReadAhead::IsEnabled() { return Enabled().load(); }
