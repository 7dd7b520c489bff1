#include "uti_SpawnSourceWithSink.h"

uti_SpawnSourceWithSink::uti_SpawnSourceWithSink(cow_String const& program, cow_List<cow_String> const& arguments,
                                                 uti_Redirection const& redirection,
                                                 cow_Map<cow_String, cow_String> const& environment)
    : uti_SpawnSource(program, arguments, redirection, environment, kWithSink) {}

int uti_SpawnSourceWithSink::Reap(int seconds) {
  CloseSink();
  return uti_SpawnSource::Reap(seconds);
}

void uti_SpawnSourceWithSink::Detach() {
  CloseSink();
  uti_SpawnSource::Detach();
}
