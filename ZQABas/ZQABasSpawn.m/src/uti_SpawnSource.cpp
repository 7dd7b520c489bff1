#include "uti_SpawnSource.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

char const kSourcePath[] = "ZQABas/ZQABasSpawn.m/src/uti_SpawnSource";
char const kCannotMakePipeText[] = "Cannot make a pipe for %s: %s";
char const kCannotReadOutputText[] = "Cannot read the output of process %d: %s";

enum PipeEnd { kReadEnd = 0, kWriteEnd = 1 };

void CloseIfOpen(int& descriptor) noexcept {
  if (descriptor >= 0) ::close(descriptor);
  descriptor = -1;
}

}  // namespace

uti_SpawnSource::uti_SpawnSource(cow_String const& program, cow_List<cow_String> const& arguments,
                                 uti_Redirection const& redirection, cow_Map<cow_String, cow_String> const& environment)
    : uti_SpawnSource(program, arguments, redirection, environment, kWithoutSink) {}

uti_SpawnSource::uti_SpawnSource(cow_String const& program, cow_List<cow_String> const& arguments,
                                 uti_Redirection const& redirection, cow_Map<cow_String, cow_String> const& environment,
                                 SinkChoice sink) {
  int output[2] = {-1, -1};
  int input[2] = {-1, -1};
  try {
    if (::pipe2(output, O_CLOEXEC) != 0 || (sink == kWithSink && ::pipe2(input, O_CLOEXEC) != 0)) {
      int error = errno;
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(kCannotMakePipeText), program, std::strerror(error)));
    }
    Start(program, arguments, redirection, environment, input[kReadEnd], output[kWriteEnd]);
  } catch (...) {
    for (int& end : output) CloseIfOpen(end);
    for (int& end : input) CloseIfOpen(end);
    throw;
  }
  // The child holds its own copies of these ends; closing ours lets each side
  // see the end of the stream when the other closes.
  CloseIfOpen(output[kWriteEnd]);
  CloseIfOpen(input[kReadEnd]);
  m_Source = output[kReadEnd];
  m_Sink = input[kWriteEnd];
}

uti_SpawnSource::~uti_SpawnSource() {
  CloseSink();
  if (m_Lines != nullptr) {
    std::fclose(m_Lines);
  } else {
    CloseIfOpen(m_Source);
  }
}

int uti_SpawnSource::GetLine(char* buffer, int size) {
  ZQA_ASSERT(kSourcePath, size > 1);
  if (m_Lines == nullptr) {
    m_Lines = ::fdopen(m_Source, "r");
    if (m_Lines == nullptr) {
      int error = errno;
      nex_ThrowMessage(kSourcePath, __LINE__,
                       atr_SubstituteFormat(atr_translate(kCannotReadOutputText), Pid(), std::strerror(error)));
    }
  }
  return std::fgets(buffer, size, m_Lines) != nullptr ? 1 : 0;
}

void uti_SpawnSource::CloseSink() noexcept { CloseIfOpen(m_Sink); }
