#include "beam_model.h"

#include "cls_CollectionClass.h"
#include "cls_MementoRead.h"
#include "cls_MementoWrite.h"
#include "cls_Persistent.h"
#include "cls_PersistentCollection.h"
#include "rom_MementoRead.h"
#include "rom_MementoWrite.h"

#include <stdexcept>

namespace {

// The step's list that the solver appends to, named once for the typed
// helper and for the agents that reach it without the helper.
cls_FieldHandle const kStepHistory(5, "History");

}  // namespace

std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToAppend(rom_Transporter& file, int stepRow) {
  // The step's row, and the list row it refers to, reached as the typed
  // helper reaches it when it writes the step.
  rom_MementoWrite step(file, Step::kClassId, stepRow, cls_MementoWrite::kOwnedByCreator);
  cls_WriteVisitor const owner(&step);
  cls_CollectionWriteRow const list(owner, kStepHistory, cls_kListClass, cls_CollListPrim);
  if (list.Memento() == nullptr) throw std::runtime_error("the step's history has no list row");
  return std::unique_ptr<cls_AgentListPrim<double>>(list.Memento()->MakeAgentListDouble(Step::kHistoryColumns));
}

std::unique_ptr<cls_AgentListPrim<double>> OpenHistoryToFollow(rom_Transporter& file, int stepRow) {
  cls_ReadVisitor const step(new rom_MementoRead(file, Step::kClassId, stepRow, cls_Uid()));
  if (!step.ObjIsPresent(kStepHistory)) throw std::runtime_error("the step has no history");
  cls_ReadVisitor const list = cls_ReadVisitor::Collection(step, kStepHistory, cls_kListClass);
  std::unique_ptr<cls_AgentListPrim<double>> agent(list.Memento() ? list.Memento()->MakeAgentListDouble() : nullptr);
  if (!agent) throw std::runtime_error("the step's history holds no list");
  return agent;
}

void RegisterModel(cls_ClassRegistrar& registrar) {
  cls_Persistent<Material>("Material", Material::kClassId, 1)
      .Identity(&Material::uid)
      .Member(1, "Name", &Material::name)
      .Member(2, "Young", &Material::young)
      .Member(3, "Poisson", &Material::poisson)
      .Member(4, "Parameters", &Material::parameters)
      .Register(registrar);
  Node::Register(registrar);
  Element::Register(registrar);
  Hex8::Register(registrar);
  Quad4::Register(registrar);
  cls_Persistent<NodeSet>("NodeSet", NodeSet::kClassId, 1)
      .Identity(&NodeSet::uid)
      .Member(1, "Nodes", &NodeSet::nodes)
      .Register(registrar);
  cls_Persistent<ElementSet>("ElementSet", ElementSet::kClassId, 1)
      .Identity(&ElementSet::uid)
      .Member(1, "Solids", &ElementSet::solids)
      .Member(2, "Shells", &ElementSet::shells)
      .Register(registrar);
  StepResults::Register(registrar);
  cls_Persistent<Step>("Step", Step::kClassId, 1)
      .Identity(&Step::uid)
      .Member(1, "Name", &Step::name)
      .Member(2, "Loads", &Step::loads, Step::kLoadColumns)
      .Member(3, "Active", &Step::active)
      .Member(4, "Outputs", &Step::outputs)
      .Member(kStepHistory.FieldId(), kStepHistory.Name(), &Step::history, Step::kHistoryColumns)
      .Member(6, "Results", &Step::results)
      .Register(registrar);
  cls_Persistent<Model>("Model", Model::kClassId, 1)
      .Identity(&Model::uid)
      .Member(1, "Title", &Model::title)
      .Member(2, "Materials", &Model::materials)
      .Member(3, "Nodes", &Model::nodes)
      .Member(4, "Solids", &Model::solids)
      .Member(5, "Shells", &Model::shells)
      .Member(6, "NodeSets", &Model::nodeSets)
      .Member(7, "ElementSets", &Model::elementSets)
      .Member(8, "Steps", &Model::steps)
      .Member(9, "Suppressed", &Model::suppressed)
      .Member(10, "Deck", &Model::deck)
      .Register(registrar);
}
