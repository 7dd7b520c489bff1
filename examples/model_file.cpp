// The model file of a preprocessor, written by one process and read by
// another, as the preprocessor and the viewer do.
//
//   model_file write FILE    builds a cantilever beam (beam_model.h) and
//                            writes it as objects under one root
//   model_file read FILE     opens the file read-only, reads the whole model
//                            back and compares it with the one it would
//                            build; exits with 1 on any difference
//   model_file follow FILE   writes the beam, then a solver process appends
//                            the increments of the last step to the step's
//                            history while a viewer process beside it
//                            follows, each after every flush
//   model_file copy FILE COPY [compressed]
//                            copies the root object of FILE, and everything
//                            it reaches, row by row into a new file COPY,
//                            compressed if asked; each object once
//
// Materials and nodes are shared by many elements and node sets: the file
// holds each once, and reading gives one object per material and node.

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZQARomCore.h"
#include "beam_model.h"
#include "cls_CollectionClass.h"
#include "rfm_File.h"
#include "rom_Objects.h"
#include "rom_PtrBarn.h"
#include "rom_Transporter.h"
#include "rom_UtlCopy.h"
#include "rom_UtlDatabaseRom.h"
#include "rom_WriteRecord.h"

namespace {

char const kMagic[] = "MDL";

// The rows of every class the model uses, lists and blobs included.
int Rows(rom_Transporter& file) {
  int rows = 0;
  for (unsigned int cid : {Material::kClassId, Node::kClassId, Element::kClassId, Hex8::kClassId, Quad4::kClassId,
                           NodeSet::kClassId, Step::kClassId, Model::kClassId, cls_kListClass, cls_kBlobClass})
    rows += file.GetTableSize(cid);
  return rows;
}

void Write(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  cow_COW<Model> const beam = BuildBeam();
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kMagic,
                       "Model of a cantilever beam", static_cast<long>(std::time(nullptr)), -1);
  // The root, and with it everything it refers to.
  rom_WriteObject(file, beam);
  file.Flush();
  Model const& model = *beam.ConstGet();
  std::printf(
      "wrote %s: %zu materials, %zu nodes, %zu Hex8, %zu Quad4, %zu node sets, %zu steps, a deck of %zu "
      "bytes; %d rows, %d of them lists\n",
      path, model.materials.size(), model.nodes.size(), model.solids.size(), model.shells.size(), model.sets.size(),
      model.steps.size(), model.deck.size(), Rows(file), file.GetTableSize(cls_kListClass));

  // The same objects again: each is known, and stored already.
  int const rows = Rows(file);
  rom_WriteObject(file, beam);
  std::printf("wrote the unchanged model again: %d rows added\n", Rows(file) - rows);

  // Within one write record an identity stands for one object: of two
  // changed copies of the tip node, the first is written over the node's
  // row, the second becomes a new object.
  cow_COW<Node> const& tip = beam.ConstGet()->nodes.back();
  cow_COW<Node> first = tip, second = tip;
  first.Get();  // private copies, with the tip's identity
  second.Get();
  {
    rom_WriteRecord const record(&file);
    rom_CidOid const firstRow = rom_WriteObject(file, first);
    rom_CidOid const secondRow = rom_WriteObject(file, second);
    std::printf("in one write record, two copies of one node went to rows %d and %d, the second with %s identity\n",
                firstRow.m_Oid, secondRow.m_Oid,
                second.ConstGet()->Uid() == tip.ConstGet()->Uid() ? "the same" : "a new");
  }

  // An identity belongs to one class.
  cow_COW<Material> impostor(new Material);
  impostor.Get()->uid = tip.ConstGet()->Uid();
  try {
    rom_WriteObject(file, impostor);
    std::printf("an identity changed its class\n");
  } catch (std::exception const& e) {
    std::printf("refused: %s\n", e.what());
  }
  file.Flush();
}

// The distinct objects that the model's references reach, by class.
struct SharedObjects {
  std::set<Material const*> materials;
  std::set<Node const*> nodes;
};

SharedObjects Reached(Model const& model) {
  SharedObjects reached;
  for (auto const& material : model.materials) reached.materials.insert(material.ConstGet());
  for (auto const& solid : model.solids) reached.materials.insert(solid.ConstGet()->GetMaterial().ConstGet());
  for (auto const& node : model.nodes) reached.nodes.insert(node.ConstGet());
  for (auto const& shell : model.shells) {
    reached.materials.insert(shell.ConstGet()->GetMaterial().ConstGet());
    if (shell.ConstGet()->Offset().HasValue()) reached.nodes.insert(shell.ConstGet()->Offset().ConstGet());
  }
  for (auto const& set : model.sets)
    for (auto const& node : set.ConstGet()->nodes)
      if (node.HasValue()) reached.nodes.insert(node.ConstGet());
  return reached;
}

// The root and all it reaches, copied at the level of rows: the copy knows
// no C++ class, it follows the references the class tables' columns name.
// Objects the root does not reach (the second copy of the tip node that
// Write made) stay behind.
void Copy(char const* path, char const* copyPath, bool compressed) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  rom_Transporter source(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kMagic, -1);
  rfm_File const target =
      compressed ? rfm_File::CreateCompressed(copyPath) : rfm_File::Open(copyPath, utl_FileAccessCreate, false);
  rom_Transporter copy(registrar, target, kMagic, "Copy of a cantilever beam", static_cast<long>(std::time(nullptr)),
                       -1);
  rom_UtlDatabaseRom const from(source);
  rom_UtlDatabaseRom to(copy);
  rom_UtlCopy rows(to);
  int const root = rows.CopyObject(Model::kClassId, 0, from, false);
  // Copying the root again finds it copied.
  bool const once = rows.CopyObject(Model::kClassId, 0, from, false) == root;
  copy.Flush();
  std::printf("copied the root of %s into %s%s: %d of %d rows, the root at row %d%s\n", path, copyPath,
              compressed ? " (compressed)" : "", Rows(copy), Rows(source), root, once ? ", copied once" : "");
}

int Read(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  cow_COW<Model> const beam = BuildBeam();
  Model const& expected = *beam.ConstGet();
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kMagic, -1);
  if (file.GetTableSize(Model::kClassId) != 1) {
    std::fprintf(stderr, "%s: holds %d models, not one\n", path, file.GetTableSize(Model::kClassId));
    return 1;
  }
  // The root, and with it everything it refers to.
  cow_COW<Model> const read = rom_ReadObject<Model>(file, 0);
  std::string const difference = FirstDifference(expected, *read.ConstGet());
  if (!difference.empty()) {
    std::fprintf(stderr, "%s: the model read differs from the one written: %s\n", path, difference.c_str());
    return 1;
  }
  SharedObjects const reached = Reached(*read.ConstGet());
  std::printf("read %s: the model equals the one written; %zu Material objects and %zu Node objects in memory\n", path,
              reached.materials.size(), reached.nodes.size());
  if (reached.materials.size() != expected.materials.size() || reached.nodes.size() != expected.nodes.size()) {
    std::fprintf(stderr, "%s: a shared object was read as more than one\n", path);
    return 1;
  }

  // Objects held by plain pointer: within a pointer barn, a row read twice
  // is one object; without one, each read builds another.
  int const nodeRows = file.GetTableSize(Node::kClassId);
  std::set<void const*> addresses;
  std::vector<Node*> built;
  {
    rom_PtrBarn const barn(file);
    for (int round = 0; round < 2; ++round)
      for (int oid = 0; oid < nodeRows; ++oid) {
        void* node = file.CheckReadObjPtr(oid, Node::kClassId, Node::kClassId);
        if (addresses.insert(node).second) built.push_back(static_cast<Node*>(node));
      }
  }
  std::printf("read %d node rows twice by pointer in one barn: %zu addresses\n", nodeRows, addresses.size());
  for (Node* node : built) delete node;
  return addresses.size() == static_cast<std::size_t>(nodeRows) ? 0 : 1;
}

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
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kMagic,
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
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kMagic, -1);
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

}  // namespace

int main(int argc, char** argv) {
  char const* const command = argc >= 3 ? argv[1] : "";
  bool const copying =
      std::strcmp(command, "copy") == 0 && (argc == 4 || (argc == 5 && std::strcmp(argv[4], "compressed") == 0));
  bool const oneFile = argc == 3 && (std::strcmp(command, "write") == 0 || std::strcmp(command, "read") == 0 ||
                                     std::strcmp(command, "follow") == 0);
  if (!copying && !oneFile) {
    std::fprintf(stderr, "usage: %s write|read|follow MODEL-FILE\n       %s copy MODEL-FILE COPY [compressed]\n",
                 argv[0], argv[0]);
    return 2;
  }
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = 0;
  try {
    if (std::strcmp(command, "write") == 0)
      Write(argv[2]);
    else if (std::strcmp(command, "read") == 0)
      status = Read(argv[2]);
    else if (copying)
      Copy(argv[2], argv[3], argc == 5);
    else
      status = Follow(argv[2]);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s: %s\n", argv[2], e.what());
    status = 1;
  }
  ZQARomCore_finalize(modules);
  return status;
}
