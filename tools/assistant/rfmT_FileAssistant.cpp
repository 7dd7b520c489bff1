// rfmT_FileAssistant.exe FILE
//
// Serves FILE to one remote reader over standard input and output, until
// the reader closes standard input. Failures go to standard error as one
// line beginning "assistant,", which the reader quotes as the reason.

#include "rfmT_PageServer.h"
#include "rfm_RemotePages.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <unistd.h>

namespace {

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;

int Report(std::string text) {
  // One line, whatever the text holds: the reader takes lines one by one.
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  std::fprintf(stderr, "%s %s\n", rfm_RemotePages::kAssistantErrorPrefix, text.c_str());
  return kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    Report(std::string("usage: ") + rfm_RemotePages::kAssistantProgram + " FILE");
    return kBadUsage;
  }
  // Pages are lent to the output pipe, which raises SIGPIPE when the reader
  // has gone; the failed send reports it instead.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    rfmT_PageServer server(argv[1], STDIN_FILENO, STDOUT_FILENO);
    server.Serve();
  } catch (std::exception const& failure) {
    return Report(failure.what());
  }
  return 0;
}
