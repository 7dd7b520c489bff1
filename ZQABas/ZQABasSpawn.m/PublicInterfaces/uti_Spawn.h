#ifndef uti_Spawn_h
#define uti_Spawn_h

#include "ZQABasExport.h"
#include "cow_List.h"
#include "cow_Map.h"
#include "cow_String.h"

class uti_Redirection;

// A child process this process started, and the duty to collect it. Every
// child is collected exactly once, so none is left a zombie: by IsRunning or
// Reap once it has ended, by the destructor (which kills it if it still
// runs), or, after Detach, by a thread of its own that waits for it.
//
// Starting: the program is looked up through PATH when its name has no "/".
// The child's environment is this process's own, with every entry of the
// environment map set in it (added, or replacing an entry of that name); an
// empty map thus means the parent's environment unchanged. The child gets
// the default action for SIGPIPE and an empty signal mask whatever this
// process uses, and no descriptor beyond its standard three: pipes are made
// close-on-exec and the rest are closed in the child before the program runs.
//
// Status values: an exit status 0 to 255 (0 is success), kKilled when the
// child ended by a signal (Reap's own SIGKILL included), kNoChild when there
// is nothing of ours to collect: the child was detached, or someone else in
// this process collected it (as when SIGCHLD is ignored). Only the child
// itself is killed: processes it started in turn are left alone.
//
// Invariant: m_Owned is true exactly while the child has been started and
// neither collected nor detached; m_Status is meaningful only when
// m_Owned is false.
class ZQA_EXPORT uti_Spawn {
public:
  static constexpr int kKilled = -1;
  static constexpr int kNoChild = -2;

  virtual ~uti_Spawn();
  uti_Spawn(uti_Spawn const&) = delete;
  uti_Spawn& operator=(uti_Spawn const&) = delete;

  // The absolute path of the program name found in a directory of PATH
  // (an executable regular file), the name itself when it contains "/",
  // and empty when it is found nowhere.
  static cow_String FindCommand(cow_String const& name);

  // The child's process id; it stays readable after the child is collected.
  int Pid() const noexcept { return m_Pid; }

  // True while the child runs; a child found ended is collected here.
  // False once the child is collected or detached.
  virtual bool IsRunning();

  // Waits up to seconds for the child to end; a child still running then is
  // sent SIGKILL and collected. Reap(0) thus collects a child that has ended
  // and kills one that has not; a negative time waits without limit. Returns
  // the status (see above); a second Reap returns the same status again.
  // The wait polls, so it can run a few milliseconds past the child's end.
  virtual int Reap(int seconds);

  // Gives up the child without waiting: it runs on, a thread of this process
  // collects it when it ends, and Reap answers kNoChild from now on.
  virtual void Detach();

protected:
  uti_Spawn() = default;

  // Starts the child; childInput and childOutput become its standard input
  // and output, or it shares this process's when they are negative. Raises
  // nex_PrimException<atr_String, 1> naming the program (or the redirection
  // target) and the system's reason when the child cannot be started.
  void Start(cow_String const& program, cow_List<cow_String> const& arguments, uti_Redirection const& redirection,
             cow_Map<cow_String, cow_String> const& environment, int childInput, int childOutput);

private:
  // Asks once, waiting or not, whether the child has ended, and collects it
  // if so. True while the child is ours and runs.
  bool Poll(bool block) noexcept;
  int WaitForEnd(int seconds) noexcept;

  int m_Pid = 0;
  bool m_Owned = false;
  int m_Status = kNoChild;
};

#endif
