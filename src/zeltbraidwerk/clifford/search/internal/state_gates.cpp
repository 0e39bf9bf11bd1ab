#include "zeltbraidwerk/clifford/search/internal/state_gates.h"

#include <algorithm>

namespace zelt::braidwerk::internal {

void StateGates::fill(const StateGroup& group, const std::vector<char>& taken) {
  const int n = group.qubits();
  qubits_.clear();
  place_.assign(static_cast<std::size_t>(n), -1);
  for (int q = 0; q < n; ++q) {
    const auto k = static_cast<std::size_t>(q);
    if (group.label(q) != 0 || (!taken.empty() && taken[k] != 0)) continue;
    place_[k] = static_cast<int>(qubits_.size());
    qubits_.push_back(q);
  }
  pairs_.assign(qubits_.size() * (qubits_.size() + 1) / 2, {});
  single_.assign(qubits_.size(), {});
  for (int k = 0; k < group.generators(); ++k) {
    if (group.weight(k) < 2) continue;
    const double worth = weight_worth(static_cast<std::size_t>(group.weight(k)));
    letters_.clear();
    group.each_letter(k, [&](int q, int label) {
      const int place = place_[static_cast<std::size_t>(q)];
      if (place < 0) return;
      const auto [b, y] = letters_.emplace_back(place, label - 1);
      for (std::size_t i = 0; i + 1 < letters_.size(); ++i) {
        pair(letters_[i].first, b)[letters_[i].second][y] += worth;
      }
      single_[static_cast<std::size_t>(b)][y] += worth;
    });
  }
}

/// Under the gate with labels p and q a generator changes that has another label than the gate on
/// one of the wires, and on the other one the gate's own, which it loses, or none, where it gets
/// the gate's. A letter less doubles its worth, one more halves it.
void StateGates::score(int a, int b, std::size_t count, Rng& rng) {
  const std::array<ByLabel, 3>& both = pair(a, b);
  ByLabel of_a{};
  ByLabel of_b{};
  for (std::size_t p = 0; p < 3; ++p) {
    for (std::size_t q = 0; q < 3; ++q) {
      of_a[p] += both[p][q];
      of_b[q] += both[p][q];
    }
  }
  const double all = of_a[0] + of_a[1] + of_a[2];
  const auto before = [](const Scored& s, const Scored& t) { return s.loss < t.loss; };
  if (all == 0 || (best_.size() == count && -all >= best_.front().loss)) return;
  ByLabel only_a = single_[static_cast<std::size_t>(a)];
  ByLabel only_b = single_[static_cast<std::size_t>(b)];
  for (std::size_t k = 0; k < 3; ++k) {
    only_a[k] -= of_a[k];
    only_b[k] -= of_b[k];
  }
  const double only = only_a[0] + only_a[1] + only_a[2] + only_b[0] + only_b[1] + only_b[2];
  for (std::size_t p = 0; p < 3; ++p) {
    for (std::size_t q = 0; q < 3; ++q) {
      const double gain = of_a[p] + of_b[q] - 2 * both[p][q];
      if (gain <= 0) continue;
      const double ties = 1 + 0x1p-20 * static_cast<double>(rng.unit());
      const double loss = ((only - only_a[p] - only_b[q]) / 2 - gain) * ties;
      if (best_.size() == count) {
        if (loss >= best_.front().loss) continue;
        std::pop_heap(best_.begin(), best_.end(), before);
        best_.pop_back();
      }
      const auto end = [&](int place, std::size_t label) {
        return end_of(qubits_[static_cast<std::size_t>(place)], static_cast<int>(label) + 1);
      };
      best_.push_back({loss, {end(a, p), end(b, q)}});
      std::push_heap(best_.begin(), best_.end(), before);
    }
  }
}

const std::vector<StateGates::Scored>& StateGates::best(const StateGroup& group, int count,
                                                        Rng& rng, const std::vector<char>& taken) {
  fill(group, taken);
  best_.clear();
  const int qubits = static_cast<int>(qubits_.size());
  for (int b = 1; b < qubits; ++b) {
    for (int a = 0; a < b; ++a) score(a, b, static_cast<std::size_t>(count), rng);
  }
  return best_;
}

}  // namespace zelt::braidwerk::internal
