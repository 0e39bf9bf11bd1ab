#include "zeltbraidwerk/phase/search/internal/parity_terms.h"

#include <algorithm>
#include <set>
#include <utility>

namespace zelt::braidwerk::internal {

namespace {

std::vector<Word> words_of(const BitMatrix& m, int row) {
  return {m.row(row), m.row(row) + m.stride()};
}

}  // namespace

BitMatrix parities_to_make(const BitMatrix& parities) {
  const BitMatrix by_term = parities.transposed();
  std::set<std::vector<Word>> seen;
  std::vector<int> kept;
  for (int term = 0; term < by_term.rows(); ++term) {
    if (by_term.row_weight(term) < 2) continue;
    if (seen.insert(words_of(by_term, term)).second) kept.push_back(term);
  }
  BitMatrix result(static_cast<int>(kept.size()), parities.rows());
  for (int k = 0; k < result.rows(); ++k) {
    std::copy_n(by_term.row(kept[static_cast<std::size_t>(k)]), by_term.stride(), result.row(k));
  }
  return result.transposed();
}

std::vector<PhaseStep> with_phases(const std::vector<Gate>& gates, const BitMatrix& parities) {
  const BitMatrix by_term = parities.transposed();
  std::set<std::pair<std::vector<Word>, int>> left;
  for (int term = 0; term < by_term.rows(); ++term) left.emplace(words_of(by_term, term), term);
  std::vector<PhaseStep> steps;
  BitMatrix map = BitMatrix::identity(parities.rows());
  const auto serve = [&](int wire) {
    const std::vector<Word> value = words_of(map, wire);
    auto entry = left.lower_bound({value, -1});
    while (entry != left.end() && entry->first == value) {
      steps.push_back(PhaseStep::phase(wire, entry->second));
      entry = left.erase(entry);
    }
  };
  for (int wire = 0; wire < parities.rows(); ++wire) serve(wire);
  for (const Gate& gate : gates) {
    steps.push_back(PhaseStep::cnot(wire_of(gate.a), wire_of(gate.b)));
    map.add_row(wire_of(gate.a), wire_of(gate.b));
    serve(wire_of(gate.b));
  }
  return steps;
}

bool shows_all(const GateList& list, const BitMatrix& parities, const Task& task) {
  const std::vector<PhaseStep> steps = with_phases(list.gates, parities);
  if (steps.size() != list.gates.size() + static_cast<std::size_t>(parities.cols())) return false;
  if (!task.closes()) return true;
  const BitMatrix map = linear_map(steps, parities.rows());
  for (int wire = 0; wire < parities.rows(); ++wire) {
    const int output = list.frame.output_on(wire);
    if (task.in_place() && output != wire) return false;
    if (map.row_weight(wire) != 1 || !map.get(wire, output)) return false;
  }
  return true;
}

}  // namespace zelt::braidwerk::internal
