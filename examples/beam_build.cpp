// The beam the example writes.
#include "beam_model.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

namespace {

// Elements along the beam.
constexpr int kLength = 8;
// Corners of the beam's section at each station.
constexpr int kSection = 4;
constexpr double kTipLoad = -250;
// The tip's deflection under the beam's own weight, and under the load.
constexpr double kSag = -0.0002;
constexpr double kBend = -0.0125;

cow_COW<Material> MakeMaterial(char const* name, double young, double poisson,
                               std::map<cow_String, double> parameters) {
  cow_COW<Material> material(new Material);
  material.Get()->name = name;
  material.Get()->young = young;
  material.Get()->poisson = poisson;
  material.Get()->parameters = std::move(parameters);
  return material;
}

cow_COW<NodeSet> MakeNodeSet(std::vector<cow_COW<Node>> nodes) {
  cow_COW<NodeSet> set(new NodeSet);
  set.Get()->nodes = std::move(nodes);
  return set;
}

cow_COW<ElementSet> MakeElementSet(std::vector<cow_COW<Hex8>> solids, std::vector<cow_COW<Quad4>> shells) {
  cow_COW<ElementSet> set(new ElementSet);
  set.Get()->solids = std::move(solids);
  set.Get()->shells = std::move(shells);
  return set;
}

cow_COW<Step> MakeStep(char const* name, std::vector<double> loads, std::vector<bool> active,
                       std::vector<cow_String> outputs, cow_COW<StepResults> results) {
  cow_COW<Step> step(new Step);
  step.Get()->name = name;
  step.Get()->loads = std::move(loads);
  step.Get()->active = std::move(active);
  step.Get()->outputs = std::move(outputs);
  step.Get()->results = cls_Lazy<StepResults>(std::move(results));
  return step;
}

// The displacements of a cantilever whose tip goes down by tip: the
// deflection of a beam under a tip load, or close to that of one under its
// own weight, and the section's rotation with it. The clamped station does
// not move and has no row.
cow_COW<StepResults> Deflection(double time, double tip) {
  std::vector<double> displacements;
  std::map<int, int> nodeRows;
  double largest = 0;
  for (int station = 1; station <= kLength; ++station) {
    double const s = static_cast<double>(station) / kLength;
    double const uz = tip * s * s * (3 - s) / 2;
    double const slope = tip * 3 * s * (2 - s) / (2 * kLength);
    for (int corner = 0; corner < kSection; ++corner) {
      double const ux = -(corner / 2 - 0.5) * slope;
      nodeRows[kSection * station + corner + 1] =
          static_cast<int>(displacements.size()) / StepResults::kDisplacementColumns;
      displacements.insert(displacements.end(), {ux, 0.0, uz});
      largest = std::max(largest, std::sqrt(ux * ux + uz * uz));
    }
  }
  std::map<cow_String, double> extremes = {{"max |u|", largest}, {"tip uz", tip}};
  return cow_COW<StepResults>(
      new StepResults(time, std::move(displacements), std::move(nodeRows), std::move(extremes)));
}

// The input deck the beam is built from, as its user wrote it.
std::string Deck() {
  std::string deck = "# hex elements along x, 1 x 1 in section, a shell on each top face\n";
  deck += "beam length " + std::to_string(kLength) + " section 1 1\n";
  deck += "material Steel young 210e9 poisson 0.3 density 7850 yield 250e6\n";
  deck += "material Aluminium young 70e9 poisson 0.33 density 2700 yield 95e6 ultimate 110e6\n";
  deck += "clamp station 0\n";
  deck += "step Settle\n";
  deck += "step Bend load Tip 0 0 " + std::to_string(static_cast<int>(kTipLoad)) + "\n";
  deck += "step Release shells off\n";
  return deck;
}

}  // namespace

cow_COW<Model> BuildBeam() {
  cow_COW<Model> made(new Model);
  Model& model = *made.Get();
  model.title = "Cantilever beam";
  model.materials = {MakeMaterial("Steel", 210e9, 0.3, {{"density", 7850}, {"yield", 250e6}}),
                     MakeMaterial("Aluminium", 70e9, 0.33, {{"density", 2700}, {"yield", 95e6}, {"ultimate", 110e6}})};
  // Nodes by station along the beam, then the corners of the section.
  for (int station = 0; station <= kLength; ++station)
    for (int corner = 0; corner < kSection; ++corner)
      model.nodes.emplace_back(new Node(kSection * station + corner + 1, station, corner % 2, corner / 2));
  auto const node = [&](int station, int corner) {
    return model.nodes[static_cast<std::size_t>(kSection * station + corner)];
  };
  auto const id = [&](int station, int corner) { return node(station, corner).ConstGet()->Id(); };
  for (int e = 0; e < kLength; ++e) {
    model.solids.emplace_back(
        new Hex8(e + 1, model.materials[0],
                 {id(e, 0), id(e, 1), id(e, 3), id(e, 2), id(e + 1, 0), id(e + 1, 1), id(e + 1, 3), id(e + 1, 2)}));
    // Only the tip's shell is offset, to the tip's first node.
    cow_COW<Node> const offset = e == kLength - 1 ? node(kLength, 0) : cow_COW<Node>();
    model.shells.emplace_back(
        new Quad4(kLength + e + 1, model.materials[1], {id(e, 2), id(e, 3), id(e + 1, 3), id(e + 1, 2)}, offset));
  }

  std::vector<cow_COW<Node>> clamped, tip;
  for (int corner = 0; corner < kSection; ++corner) {
    clamped.push_back(node(0, corner));
    tip.push_back(node(kLength, corner));
  }
  // Sensor channel 2 has no node; nothing is in contact yet, and no element
  // has yielded, so the analysis has not made that set.
  std::vector<cow_COW<Node>> const sensors = {node(kLength, 0), cow_COW<Node>(), node(kLength / 2, 2)};
  model.nodeSets = {{"Clamped", MakeNodeSet(clamped)},
                    {"Tip", MakeNodeSet(tip)},
                    {"Sensors", MakeNodeSet(sensors)},
                    {"Contact", MakeNodeSet({})}};
  model.elementSets = {{"Core", MakeElementSet(model.solids, {})},
                       {"Skin", MakeElementSet({}, model.shells)},
                       {"TipElements", MakeElementSet({model.solids.back()}, {model.shells.back()})},
                       {"Yielded", cow_COW<ElementSet>()}};

  std::vector<double> bend, release;
  for (int corner = 0; corner < kSection; ++corner) {
    bend.insert(bend.end(), {0, 0, kTipLoad});
    release.insert(release.end(), {0, 0, 0});
  }
  std::size_t const elements = model.solids.size() + model.shells.size();
  std::vector<bool> everyElement(elements, true), solidsOnly(elements, true);
  for (std::size_t e = model.solids.size(); e < elements; ++e) solidsOnly[e] = false;
  // Settling under its own weight needs no loads, flags or outputs; the
  // last step has not run, and has no results.
  model.steps = {MakeStep("Settle", {}, {}, {}, Deflection(1, kSag)),
                 MakeStep("Bend", bend, everyElement, {"displacement", "stress"}, Deflection(2, kBend)),
                 MakeStep("Release", release, solidsOnly, {"displacement", "reaction force"}, cow_COW<StepResults>())};

  std::string const deck = Deck();
  model.deck.assign(deck.begin(), deck.end());
  return made;
}
