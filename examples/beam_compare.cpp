// How a model read compares with the one written.
#include "beam_model.h"

#include <cstddef>
#include <string>

namespace {

// Whether two handles hold the same value: both empty, or both holding
// values that same finds equal.
template <class T, class Same>
bool SameHeld(cow_COW<T> const& a, cow_COW<T> const& b, Same same) {
  return a.HasValue() == b.HasValue() && (!a.HasValue() || same(*a.ConstGet(), *b.ConstGet()));
}

// The first element of two lists of objects that differs, as what and the
// label of the element expected; empty when the lists are equal.
template <class T, class Same, class Label>
std::string FirstDifferent(char const* what, std::vector<cow_COW<T>> const& expected,
                           std::vector<cow_COW<T>> const& read, Same same, Label label) {
  if (read.size() != expected.size())
    return std::to_string(read.size()) + " " + what + " read, " + std::to_string(expected.size()) + " written";
  for (std::size_t i = 0; i < expected.size(); ++i)
    if (!SameHeld(expected[i], read[i], same))
      return std::string(what) + " " +
             (expected[i].HasValue() ? label(*expected[i].ConstGet()) : std::to_string(i) + " (none)");
  return std::string();
}

// The same for two maps of objects by name, labelled by the name.
template <class T, class Same>
std::string FirstDifferent(char const* what, std::map<cow_String, cow_COW<T>> const& expected,
                           std::map<cow_String, cow_COW<T>> const& read, Same same) {
  if (read.size() != expected.size())
    return std::to_string(read.size()) + " " + what + "s read, " + std::to_string(expected.size()) + " written";
  for (auto e = expected.begin(), r = read.begin(); e != expected.end(); ++e, ++r)
    if (!(e->first == r->first) || !SameHeld(e->second, r->second, same))
      return std::string(what) + " " + e->first.CStr();
  return std::string();
}

auto const noLabel = [](auto const&) { return std::string(); };

bool SameNode(Node const& a, Node const& b) { return a == b; }

bool SameMaterial(Material const& a, Material const& b) {
  return a.name == b.name && a.young == b.young && a.poisson == b.poisson && a.parameters == b.parameters;
}

bool SameNodeSet(NodeSet const& a, NodeSet const& b) {
  return FirstDifferent("node", a.nodes, b.nodes, SameNode, noLabel).empty();
}

bool SameElementSet(ElementSet const& a, ElementSet const& b) {
  auto const sameElement = [](auto const& x, auto const& y) { return x.SameAs(y); };
  return FirstDifferent("Hex8", a.solids, b.solids, sameElement, noLabel).empty() &&
         FirstDifferent("Quad4", a.shells, b.shells, sameElement, noLabel).empty();
}

bool SameStep(Step const& a, Step const& b) {
  return a.name == b.name && a.loads == b.loads && a.active == b.active && a.outputs == b.outputs &&
         a.history == b.history && a.results.HasValue() == b.results.HasValue() &&
         SameHeld(a.results.Get(), b.results.Get(), [](StepResults const& x, StepResults const& y) { return x == y; });
}

}  // namespace

std::string FirstDifference(Model const& expected, Model const& read) {
  if (!(read.title == expected.title)) return "title";
  std::string difference = FirstDifferent("material", expected.materials, read.materials, SameMaterial,
                                          [](Material const& m) { return std::string(m.name.CStr()); });
  auto const byId = [](auto const& object) { return std::to_string(object.Id()); };
  auto const sameElement = [](auto const& a, auto const& b) { return a.SameAs(b); };
  if (difference.empty()) difference = FirstDifferent("node", expected.nodes, read.nodes, SameNode, byId);
  if (difference.empty()) difference = FirstDifferent("Hex8", expected.solids, read.solids, sameElement, byId);
  if (difference.empty()) difference = FirstDifferent("Quad4", expected.shells, read.shells, sameElement, byId);
  if (difference.empty()) difference = FirstDifferent("node set", expected.nodeSets, read.nodeSets, SameNodeSet);
  if (difference.empty())
    difference = FirstDifferent("element set", expected.elementSets, read.elementSets, SameElementSet);
  if (difference.empty())
    difference = FirstDifferent("step", expected.steps, read.steps, SameStep,
                                [](Step const& s) { return std::string(s.name.CStr()); });
  if (difference.empty() && read.suppressed != expected.suppressed) difference = "suppressed elements";
  if (difference.empty() && read.deck != expected.deck) difference = "deck";
  return difference;
}
