#ifndef uti_SpawnSourceWithSink_h
#define uti_SpawnSourceWithSink_h

#include "uti_SpawnSource.h"

// A child with both standard streams piped: what is written to
// SinkDescriptor() is its standard input, its standard output is read from
// SourceDescriptor(). Reap and Detach first close the sink, so that a child
// reading its input to the end finishes instead of waiting for more.
class ZQA_EXPORT uti_SpawnSourceWithSink : public uti_SpawnSource {
public:
  uti_SpawnSourceWithSink(cow_String const& program, cow_List<cow_String> const& arguments,
                          uti_Redirection const& redirection, cow_Map<cow_String, cow_String> const& environment);

  using uti_SpawnSource::CloseSink;
  using uti_SpawnSource::SinkDescriptor;

  int Reap(int seconds) override;
  void Detach() override;
};

#endif
