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
//   model_file transfer FILE OTHER
//                            reads the model of FILE and writes it into a
//                            new file OTHER through a second transporter
//
// Materials, nodes and elements are shared by the model's lists and sets:
// the file holds each once, and reading gives one object per row.

#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZQARomCore.h"
#include "beam_model.h"
#include "cls_CollectionClass.h"
#include "model_follow.h"
#include "rfm_File.h"
#include "rom_Objects.h"
#include "rom_PtrBarn.h"
#include "rom_Transporter.h"
#include "rom_UtlCopy.h"
#include "rom_UtlDatabaseRom.h"
#include "rom_WriteRecord.h"

namespace {

// The rows of every class the model uses, collections included.
int Rows(rom_Transporter& file) {
  int rows = 0;
  for (unsigned int cid : {Material::kClassId, Node::kClassId, Element::kClassId, Hex8::kClassId, Quad4::kClassId,
                           NodeSet::kClassId, ElementSet::kClassId, Step::kClassId, StepResults::kClassId,
                           Model::kClassId, cls_kListClass, cls_kMapClass, cls_kBlobClass})
    rows += file.GetTableSize(cid);
  return rows;
}

void Write(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  cow_COW<Model> const beam = BuildBeam();
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessCreate, false), kModelMagic,
                       "Model of a cantilever beam", static_cast<long>(std::time(nullptr)), -1);
  // The root, and with it everything it refers to.
  rom_WriteObject(file, beam);
  file.Flush();
  Model const& model = *beam.ConstGet();
  std::printf(
      "wrote %s: %zu materials, %zu nodes, %zu Hex8, %zu Quad4, %zu node sets, %zu element sets, %zu steps, a "
      "deck of %zu bytes; %d rows, %d of them lists and %d maps\n",
      path, model.materials.size(), model.nodes.size(), model.solids.size(), model.shells.size(), model.nodeSets.size(),
      model.elementSets.size(), model.steps.size(), model.deck.size(), Rows(file), file.GetTableSize(cls_kListClass),
      file.GetTableSize(cls_kMapClass));

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
  std::set<Element const*> elements;

  void Add(Element const& element) {
    elements.insert(&element);
    materials.insert(element.GetMaterial().ConstGet());
  }
};

SharedObjects Reached(Model const& model) {
  SharedObjects reached;
  for (auto const& material : model.materials) reached.materials.insert(material.ConstGet());
  for (auto const& node : model.nodes) reached.nodes.insert(node.ConstGet());
  for (auto const& solid : model.solids) reached.Add(*solid.ConstGet());
  for (auto const& shell : model.shells) {
    reached.Add(*shell.ConstGet());
    if (shell.ConstGet()->Offset().HasValue()) reached.nodes.insert(shell.ConstGet()->Offset().ConstGet());
  }
  for (auto const& [name, set] : model.nodeSets)
    if (set.HasValue())
      for (auto const& node : set.ConstGet()->nodes)
        if (node.HasValue()) reached.nodes.insert(node.ConstGet());
  for (auto const& [name, set] : model.elementSets) {
    if (!set.HasValue()) continue;
    for (auto const& solid : set.ConstGet()->solids) reached.Add(*solid.ConstGet());
    for (auto const& shell : set.ConstGet()->shells) reached.Add(*shell.ConstGet());
  }
  return reached;
}

// The root and all it reaches, copied at the level of rows: the copy knows
// no C++ class, it follows the references the class tables' columns name.
// Objects the root does not reach (the second copy of the tip node that
// Write made) stay behind.
void Copy(char const* path, char const* copyPath, bool compressed) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  rom_Transporter source(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kModelMagic, -1);
  rfm_File const target =
      compressed ? rfm_File::CreateCompressed(copyPath) : rfm_File::Open(copyPath, utl_FileAccessCreate, false);
  rom_Transporter copy(registrar, target, kModelMagic, "Copy of a cantilever beam",
                       static_cast<long>(std::time(nullptr)), -1);
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

// The model in the root row of file, which must hold one.
cow_COW<Model> ReadModel(rom_Transporter& file) {
  if (file.GetTableSize(Model::kClassId) != 1)
    throw std::runtime_error("holds " + std::to_string(file.GetTableSize(Model::kClassId)) + " models, not one");
  return rom_ReadObject<Model>(file, 0);
}

// The steps of model that have results.
std::vector<Step const*> StepsWithResults(Model const& model) {
  std::vector<Step const*> steps;
  for (auto const& step : model.steps)
    if (step.ConstGet()->results.HasValue()) steps.push_back(step.ConstGet());
  return steps;
}

// Reading the model read no step's results; the first Get of one step's
// results reads them, once: a second Get, and a Get through a copy of the
// member, read nothing more, and the identity the member gave before
// reading is the object's. Answers what it counted; raises where that does
// not hold.
std::string CheckResultsReadWhenAsked(Model const& model) {
  std::vector<Step const*> const steps = StepsWithResults(model);
  if (steps.empty()) throw std::runtime_error("no step has results");
  int const withModel = StepResults::ReadCount();
  if (withModel != 0) throw std::runtime_error(std::to_string(withModel) + " step results were read with the model");
  for (Step const* step : steps)
    if (step->results.IsLoaded())
      throw std::runtime_error(std::string("the results of ") + step->name.CStr() + " are in memory unasked");
  Step const& first = *steps.front();
  std::string const name = first.name.CStr();
  cls_Uid const uid = first.results.Uid();
  if (StepResults::ReadCount() != 0)
    throw std::runtime_error("asking for the identity of " + name + "'s results read them");
  cow_COW<StepResults> const& results = first.results.Get();
  int const atFirstGet = StepResults::ReadCount();
  first.results.Get();
  cls_Lazy<StepResults> const copy = first.results;
  if (!copy.IsLoaded()) throw std::runtime_error("a copy of " + name + "'s results does not share what was read");
  copy.Get();
  int const more = StepResults::ReadCount() - atFirstGet;
  if (atFirstGet != 1 || more != 0)
    throw std::runtime_error("the first Get of " + name + "'s results read " + std::to_string(atFirstGet) +
                             ", the next ones " + std::to_string(more));
  if (!(results.ConstGet()->Uid() == uid))
    throw std::runtime_error(name + "'s results have another identity than the one promised");
  for (Step const* step : steps)
    if (step != &first && step->results.IsLoaded())
      throw std::runtime_error(std::string("reading ") + name + "'s results read those of " + step->name.CStr());
  return std::to_string(withModel) + " step results read with the model, " + std::to_string(atFirstGet) +
         " at the first Get of " + name + "'s, " + std::to_string(more) + " more at a second Get and through a copy";
}

int Read(char const* path) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  cow_COW<Model> const beam = BuildBeam();
  Model const& expected = *beam.ConstGet();
  rom_Transporter file(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kModelMagic, -1);
  // The root, and with it everything it refers to.
  cow_COW<Model> const read = ReadModel(file);
  std::string const lazily = CheckResultsReadWhenAsked(*read.ConstGet());
  std::string const difference = FirstDifference(expected, *read.ConstGet());
  if (!difference.empty()) {
    std::fprintf(stderr, "%s: the model read differs from the one written: %s\n", path, difference.c_str());
    return 1;
  }
  std::printf("read %s: %s, %d once every step was compared\n", path, lazily.c_str(), StepResults::ReadCount());
  SharedObjects const reached = Reached(*read.ConstGet());
  std::printf("read %s: the model equals the one written; %zu Material, %zu Node and %zu element objects in memory\n",
              path, reached.materials.size(), reached.nodes.size(), reached.elements.size());
  if (reached.materials.size() != expected.materials.size() || reached.nodes.size() != expected.nodes.size() ||
      reached.elements.size() != expected.solids.size() + expected.shells.size()) {
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

// The model read from one file and written into another through a second
// transporter. Step results never read go there as copies of their rows,
// and are not read for it.
void Transfer(char const* path, char const* otherPath) {
  cls_ClassRegistrar registrar;
  RegisterModel(registrar);
  rom_Transporter source(registrar, rfm_File::Open(path, utl_FileAccessRead, false), kModelMagic, -1);
  cow_COW<Model> const model = ReadModel(source);
  std::size_t const unread = StepsWithResults(*model.ConstGet()).size();
  rom_Transporter other(registrar, rfm_File::Open(otherPath, utl_FileAccessCreate, false), kModelMagic,
                        "Model of a cantilever beam, transferred", static_cast<long>(std::time(nullptr)), -1);
  rom_WriteObject(other, model);
  other.Flush();
  if (StepResults::ReadCount() != 0)
    throw std::runtime_error("writing the model into " + std::string(otherPath) + " read " +
                             std::to_string(StepResults::ReadCount()) + " step results");
  std::printf("transferred the model of %s into %s: %d rows; the results of %zu steps copied, %d step results read\n",
              path, otherPath, Rows(other), unread, StepResults::ReadCount());
}

}  // namespace

int main(int argc, char** argv) {
  char const* const command = argc >= 3 ? argv[1] : "";
  bool const copying =
      std::strcmp(command, "copy") == 0 && (argc == 4 || (argc == 5 && std::strcmp(argv[4], "compressed") == 0));
  bool const transferring = std::strcmp(command, "transfer") == 0 && argc == 4;
  bool const oneFile = argc == 3 && (std::strcmp(command, "write") == 0 || std::strcmp(command, "read") == 0 ||
                                     std::strcmp(command, "follow") == 0);
  if (!copying && !transferring && !oneFile) {
    std::fprintf(stderr,
                 "usage: %s write|read|follow MODEL-FILE\n       %s copy MODEL-FILE COPY [compressed]\n"
                 "       %s transfer MODEL-FILE OTHER\n",
                 argv[0], argv[0], argv[0]);
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
    else if (transferring)
      Transfer(argv[2], argv[3]);
    else
      status = Follow(argv[2]);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s: %s\n", argv[2], e.what());
    status = 1;
  }
  ZQARomCore_finalize(modules);
  return status;
}
