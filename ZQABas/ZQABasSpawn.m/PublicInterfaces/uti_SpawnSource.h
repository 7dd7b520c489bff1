#ifndef uti_SpawnSource_h
#define uti_SpawnSource_h

#include "uti_Spawn.h"

#include <cstdio>

// A child whose standard output comes to this process through a pipe; its
// standard input is this process's own. The object also holds the sink, the
// writing end of a pipe to the child's standard input, for
// uti_SpawnSourceWithSink, which alone makes and shows it.
//
// Invariant: m_Source is the pipe's reading end until the destructor closes
// it; once GetLine has been called, m_Lines is a stream on that descriptor
// and owns it. m_Sink is -1 when there is no sink or it has been closed.
class ZQA_EXPORT uti_SpawnSource : public uti_Spawn {
public:
  uti_SpawnSource(cow_String const& program, cow_List<cow_String> const& arguments, uti_Redirection const& redirection,
                  cow_Map<cow_String, cow_String> const& environment);
  // Closes the pipes, then collects the child as Reap(0) does.
  ~uti_SpawnSource() override;

  int SourceDescriptor() const noexcept { return m_Source; }

  // As fgets: the next line of the child's output, newline kept, in buffer
  // (a longer line comes in pieces of size - 1 bytes). Returns non-zero when
  // a line was read, 0 at the end of the output or on a read error. Lines
  // are read through a buffer: mixing GetLine with reads of
  // SourceDescriptor() loses bytes.
  int GetLine(char* buffer, int size);

protected:
  enum SinkChoice { kWithoutSink, kWithSink };

  uti_SpawnSource(cow_String const& program, cow_List<cow_String> const& arguments, uti_Redirection const& redirection,
                  cow_Map<cow_String, cow_String> const& environment, SinkChoice sink);

  int SinkDescriptor() const noexcept { return m_Sink; }
  void CloseSink() noexcept;

private:
  int m_Source = -1;
  int m_Sink = -1;
  std::FILE* m_Lines = nullptr;
};

#endif
