// The beam the example writes, and how a model read compares with it.
#include "beam_model.h"

#include <cstddef>
#include <string>
#include <utility>

namespace {

// Elements along the beam.
constexpr int kLength = 8;
// Corners of the beam's section at each station.
constexpr int kSection = 4;
constexpr double kTipLoad = -250;

cow_COW<Material> MakeMaterial(char const* name, double young, double poisson) {
  cow_COW<Material> material(new Material);
  material.Get()->name = name;
  material.Get()->young = young;
  material.Get()->poisson = poisson;
  return material;
}

cow_COW<NodeSet> MakeSet(char const* name, std::vector<cow_COW<Node>> nodes) {
  cow_COW<NodeSet> set(new NodeSet);
  set.Get()->name = name;
  set.Get()->nodes = std::move(nodes);
  return set;
}

// The input deck the beam is built from, as its user wrote it.
std::string Deck() {
  std::string deck = "# hex elements along x, 1 x 1 in section, a shell on each top face\n";
  deck += "beam length " + std::to_string(kLength) + " section 1 1\n";
  deck += "material Steel young 210e9 poisson 0.3\n";
  deck += "material Aluminium young 70e9 poisson 0.33\n";
  deck += "clamp station 0\n";
  deck += "step Settle\n";
  deck += "step Bend load Tip 0 0 " + std::to_string(static_cast<int>(kTipLoad)) + "\n";
  deck += "step Release shells off\n";
  return deck;
}

// The first element of two lists of objects that differs, as what and the
// label of the element expected; empty when the lists are equal.
template <class T, class Same, class Label>
std::string FirstDifferent(char const* what, std::vector<cow_COW<T>> const& expected,
                           std::vector<cow_COW<T>> const& read, Same same, Label label) {
  if (read.size() != expected.size())
    return std::to_string(read.size()) + " " + what + " read, " + std::to_string(expected.size()) + " written";
  for (std::size_t i = 0; i < expected.size(); ++i) {
    cow_COW<T> const& e = expected[i];
    cow_COW<T> const& r = read[i];
    if (e.HasValue() != r.HasValue() || (e.HasValue() && !same(*e.ConstGet(), *r.ConstGet())))
      return std::string(what) + " " + (e.HasValue() ? label(*e.ConstGet()) : std::to_string(i) + " (none)");
  }
  return std::string();
}

bool SameMaterial(Material const& a, Material const& b) {
  return a.name == b.name && a.young == b.young && a.poisson == b.poisson;
}

bool SameSet(NodeSet const& a, NodeSet const& b) {
  auto const sameNode = [](Node const& x, Node const& y) { return x == y; };
  auto const noLabel = [](Node const&) { return std::string(); };
  return a.name == b.name && FirstDifferent("node", a.nodes, b.nodes, sameNode, noLabel).empty();
}

}  // namespace

cow_COW<Model> BuildBeam() {
  cow_COW<Model> made(new Model);
  Model& model = *made.Get();
  model.title = "Cantilever beam";
  model.materials = {MakeMaterial("Steel", 210e9, 0.3), MakeMaterial("Aluminium", 70e9, 0.33)};
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
  // Sensor channel 2 has no node; nothing is in contact yet.
  std::vector<cow_COW<Node>> const sensors = {node(kLength, 0), cow_COW<Node>(), node(kLength / 2, 2)};
  model.sets = {MakeSet("Clamped", clamped), MakeSet("Tip", tip), MakeSet("Sensors", sensors), MakeSet("Contact", {})};

  std::vector<double> bend, release;
  for (int corner = 0; corner < kSection; ++corner) {
    bend.insert(bend.end(), {0, 0, kTipLoad});
    release.insert(release.end(), {0, 0, 0});
  }
  std::size_t const elements = model.solids.size() + model.shells.size();
  std::vector<bool> everyElement(elements, true), solidsOnly(elements, true);
  for (std::size_t e = model.solids.size(); e < elements; ++e) solidsOnly[e] = false;
  // Settling under its own weight needs no loads, flags or outputs.
  model.steps = {cow_COW<Step>(new Step("Settle", {}, {}, {})),
                 cow_COW<Step>(new Step("Bend", bend, everyElement, {"displacement", "stress"})),
                 cow_COW<Step>(new Step("Release", release, solidsOnly, {"displacement", "reaction force"}))};

  std::string const deck = Deck();
  model.deck.assign(deck.begin(), deck.end());
  return made;
}

std::string FirstDifference(Model const& expected, Model const& read) {
  if (!(read.title == expected.title)) return "title";
  std::string difference = FirstDifferent("material", expected.materials, read.materials, SameMaterial,
                                          [](Material const& m) { return std::string(m.name.CStr()); });
  auto const byId = [](auto const& object) { return std::to_string(object.Id()); };
  if (difference.empty())
    difference = FirstDifferent(
        "node", expected.nodes, read.nodes, [](Node const& a, Node const& b) { return a == b; }, byId);
  if (difference.empty())
    difference = FirstDifferent(
        "Hex8", expected.solids, read.solids, [](Hex8 const& a, Hex8 const& b) { return a.SameAs(b); }, byId);
  if (difference.empty())
    difference = FirstDifferent(
        "Quad4", expected.shells, read.shells, [](Quad4 const& a, Quad4 const& b) { return a.SameAs(b); }, byId);
  if (difference.empty())
    difference = FirstDifferent("node set", expected.sets, read.sets, SameSet,
                                [](NodeSet const& s) { return std::string(s.name.CStr()); });
  if (difference.empty())
    difference = FirstDifferent(
        "step", expected.steps, read.steps, [](Step const& a, Step const& b) { return a == b; },
        [](Step const& s) { return std::string(s.Name().CStr()); });
  if (difference.empty() && read.suppressed != expected.suppressed) difference = "suppressed elements";
  if (difference.empty() && read.deck != expected.deck) difference = "deck";
  return difference;
}
