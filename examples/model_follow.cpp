// model_file follow: a solver process appends the increments of the
// running step to its history, flushing after each, while a viewer process
// beside it follows what the file gains.
#include "model_follow.h"

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "beam_model.h"
#include "rfm_File.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"

namespace {

// One direction of a pipe between the solver and the viewer: one process
// sends a byte when it has done a step, the other waits for it. Each
// process closes the end it does not use, so that a wait ends when the
// other process has.
class Signal {
 public:
  Signal() {
    if (pipe(m_Ends) != 0) throw std::runtime_error("cannot make a pipe");
  }
  Signal(Signal const&) = delete;
  Signal& operator=(Signal const&) = delete;
  ~Signal() { Close(); }
  void KeepSendingEnd() { CloseEnd(0); }
  void KeepWaitingEnd() { CloseEnd(1); }
  void Close() {
    CloseEnd(0);
    CloseEnd(1);
  }
  void Send() const {
    char const byte = 1;
    if (write(m_Ends[1], &byte, 1) != 1) throw std::runtime_error("the other process is gone");
  }
  void Wait() const {
    char byte = 0;
    if (read(m_Ends[0], &byte, 1) != 1) throw std::runtime_error("the other process is gone");
  }

 private:
  void CloseEnd(int end) {
    if (m_Ends[end] >= 0) close(m_Ends[end]);
    m_Ends[end] = -1;
  }
  int m_Ends[2];
};

// The increments the solver does, and what each ends with.
constexpr int kIncrements = 4;
double IncrementTime(int increment) { return static_cast<double>(increment) / kIncrements; }
double TipDeflection(int increment) { return -0.0021 * increment; }

// The writer: the beam, then one increment of the last step per flush. The
// step's row is the one its value is stored in; writing the value again
// only answers it.
void Solve(char const* path, Signal const& flushed, Signal const& seen) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  cow_COW<Model> const beam = BuildBeam();
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kModelMagic,
                       "Model of a cantilever beam, solving", static_cast<long>(std::time(nullptr)), -1);
  rom_WriteObject(file, beam);
  int const stepRow = rom_WriteObject(file, beam.ConstGet()->steps.back()).m_Oid;
  std::unique_ptr<cls_AgentListPrim<double>> history = OpenHistoryToAppend(file, stepRow);
  history->Flush();
  file.Flush();
  flushed.Send();
  seen.Wait();
  for (int increment = 1; increment <= kIncrements; ++increment) {
    double const values[Step::kHistoryColumns] = {IncrementTime(increment), TipDeflection(increment)};
    history->Store(history->Size(), Step::kHistoryColumns, values);
    // The list's own buffers first, then the file's flush, which readers
    // take in whole.
    history->Flush();
    file.Flush();
    flushed.Send();
    seen.Wait();
  }
}

// The reader beside it: after each of the writer's flushes, the file's Snap
// takes in the flush and the history's Snap what the list gained.
int View(char const* path, Signal const& flushed, Signal const& seen) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  flushed.Wait();
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kModelMagic, -1);
  // The running step is the last one written.
  std::unique_ptr<cls_AgentListPrim<double>> history = OpenHistoryToFollow(file, file.GetTableSize(Step::kClassId) - 1);
  std::string seenSizes;
  for (int increment = 0;; ++increment) {
    int const expected = increment * Step::kHistoryColumns;
    if (history->Size() != expected || history->Columns() != Step::kHistoryColumns)
      throw std::runtime_error("after flush " + std::to_string(increment) + " the viewer sees " +
                               std::to_string(history->Size()) + " values in rows of " +
                               std::to_string(history->Columns()) + ", not " + std::to_string(expected) +
                               " in rows of " + std::to_string(Step::kHistoryColumns));
    if (increment > 0) {
      double values[Step::kHistoryColumns] = {};
      history->Fetch(expected - Step::kHistoryColumns, Step::kHistoryColumns, values);
      if (values[0] != IncrementTime(increment) || values[1] != TipDeflection(increment))
        throw std::runtime_error("increment " + std::to_string(increment) + " reads wrong");
      seenSizes += (increment > 1 ? ", " : "") + std::to_string(increment);
    }
    seen.Send();
    if (increment == kIncrements) break;
    flushed.Wait();
    if (file.Snap() == 0) throw std::runtime_error("a flush of the writer went unseen");
    history->Snap();
  }
  std::printf(
      "followed %s beside its writer: after each flush and Snap the step's history held %s increments; "
      "the tip went down to %g at t=%g\n",
      path, seenSizes.c_str(), TipDeflection(kIncrements), IncrementTime(kIncrements));
  return 0;
}

}  // namespace

int Follow(char const* path) {
  // A process gone early shows as a failed wait or send, not as a signal.
  std::signal(SIGPIPE, SIG_IGN);
  Signal flushed, seen;
  std::fflush(stdout);
  pid_t const solver = fork();
  if (solver < 0) throw std::runtime_error("cannot start the solver process");
  if (solver == 0) {
    flushed.KeepSendingEnd();
    seen.KeepWaitingEnd();
    int status = 0;
    try {
      Solve(path, flushed, seen);
    } catch (std::exception const& e) {
      std::fprintf(stderr, "%s: solver: %s\n", path, e.what());
      status = 1;
    }
    std::fflush(nullptr);
    _exit(status);
  }
  flushed.KeepWaitingEnd();
  seen.KeepSendingEnd();
  int viewed = 1;
  try {
    viewed = View(path, flushed, seen);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s: viewer: %s\n", path, e.what());
  }
  // A solver still waiting for the viewer ends.
  flushed.Close();
  seen.Close();
  int status = 0;
  if (waitpid(solver, &status, 0) != solver || !WIFEXITED(status) || WEXITSTATUS(status) != 0) return 1;
  return viewed;
}
