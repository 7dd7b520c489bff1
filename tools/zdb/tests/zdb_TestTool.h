#ifndef zdb_TestTool_h
#define zdb_TestTool_h

#include <string>
#include <vector>

// The zdb program run as a user runs it, in a child process of the test.

// What a finished run left: its exit status (128 + the signal for a child
// killed by one) and everything it wrote.
struct zdb_Run {
  int m_Status = -1;
  std::string m_Out;
  std::string m_Err;
};

// A running zdb, its standard output and error on pipes.
class zdb_Tool {
public:
  // environment holds NAME=VALUE entries set for the child on top of ours.
  explicit zdb_Tool(std::vector<std::string> const& arguments, std::vector<std::string> const& environment = {});
  ~zdb_Tool();
  zdb_Tool(zdb_Tool const&) = delete;
  zdb_Tool& operator=(zdb_Tool const&) = delete;

  // The next line of standard output without its newline; empty when none
  // came within seconds or the output ended.
  std::string ReadLine(double seconds);
  void Signal(int signal) const;
  // Reads the rest of both outputs and collects the child.
  zdb_Run Finish();
  // The same, but a child still running after seconds is killed first (its
  // status is then 128 + SIGKILL): a hang fails a test instead of stopping it.
  zdb_Run FinishWithin(double seconds);

private:
  // Moves what is ready on the pipes into the buffers; false when nothing
  // came within the time.
  bool Pump(int milliseconds);

  int m_Pid;
  int m_Out;
  int m_Err;
  std::string m_OutBuffer;
  std::string m_ErrBuffer;
};

// Runs zdb to its end.
zdb_Run RunZdb(std::vector<std::string> const& arguments, std::vector<std::string> const& environment = {});
// Runs zdb to its end, killing it when it runs longer than seconds.
zdb_Run RunZdbWithin(double seconds, std::vector<std::string> const& arguments);

// The lines of a text, without their newlines.
std::vector<std::string> Lines(std::string const& text);

#endif
