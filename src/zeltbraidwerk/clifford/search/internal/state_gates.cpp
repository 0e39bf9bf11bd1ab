#include "zeltbraidwerk/clifford/search/internal/state_gates.h"

#include <algorithm>

namespace zelt::braidwerk::internal {

void StateGates::fill(const StateGroup& group) {
  const int n = group.qubits();
  qubits_.clear();
  place_.assign(static_cast<std::size_t>(n), 0);
  for (int q = 0; q < n; ++q) {
    if (group.label(q) != 0) continue;
    place_[static_cast<std::size_t>(q)] = static_cast<int>(qubits_.size());
    qubits_.push_back(q);
  }
  const std::size_t count = qubits_.size();
  pairs_.assign(count * (count + 1) / 2, Pair{});
  single_.assign(count, {});
  for (int k = 0; k < n; ++k) {
    const int weight = group.weight(k);
    if (weight < 2) continue;
    const std::int64_t fall = weight_cost(weight - 1) - weight_cost(weight);
    const std::int64_t rise = weight_cost(weight + 1) - weight_cost(weight);
    letters_.clear();
    group.each_letter(k, [&](int q, int label) {
      letters_.push_back({place_[static_cast<std::size_t>(q)], label - 1});
    });
    for (std::size_t j = 0; j < letters_.size(); ++j) {
      const auto [b, y] = letters_[j];
      single_[static_cast<std::size_t>(b)][static_cast<std::size_t>(y)] += rise;
      for (std::size_t i = 0; i < j; ++i) {
        const auto [a, x] = letters_[i];
        Pair& both = pair(a, b);
        both.falls[static_cast<std::size_t>(x)][static_cast<std::size_t>(y)] += fall;
        both.rises[static_cast<std::size_t>(x)][static_cast<std::size_t>(y)] += rise;
      }
    }
  }
}

/// A generator with letters x, y on the pair changes under the gate with labels p, q if one of them
/// is the gate's own or none and the other another one: it loses the first, or gets the gate's.
void StateGates::score(int a, int b, std::size_t count, Rng& rng) {
  const Pair& both = pair(a, b);
  std::array<std::int64_t, 3> rows{};
  std::array<std::int64_t, 3> columns{};
  std::array<std::int64_t, 3> only_a = single_[static_cast<std::size_t>(a)];
  std::array<std::int64_t, 3> only_b = single_[static_cast<std::size_t>(b)];
  std::int64_t all = 0;
  std::int64_t all_a = 0;
  std::int64_t all_b = 0;
  for (std::size_t x = 0; x < 3; ++x) {
    for (std::size_t y = 0; y < 3; ++y) {
      rows[x] += both.falls[x][y];
      columns[y] += both.falls[x][y];
      only_a[x] -= both.rises[x][y];
      only_b[y] -= both.rises[x][y];
      all += both.falls[x][y];
    }
  }
  const auto before = [](const Scored& s, const Scored& t) { return s.change < t.change; };
  if (all == 0 || (best_.size() == count && all >= best_.front().change)) return;
  for (std::size_t k = 0; k < 3; ++k) all_a += only_a[k], all_b += only_b[k];
  for (std::size_t x = 0; x < 3; ++x) {
    for (std::size_t y = 0; y < 3; ++y) {
      const std::int64_t fall = rows[x] + columns[y] - 2 * both.falls[x][y];
      if (fall == 0) continue;
      // The lowest bits break ties.
      const std::int64_t change =
          fall + all_a - only_a[x] + all_b - only_b[y] + static_cast<std::int64_t>(rng.next() & 15);
      if (best_.size() == count) {
        if (change >= best_.front().change) continue;
        std::pop_heap(best_.begin(), best_.end(), before);
        best_.pop_back();
      }
      best_.push_back({change,
                       {end_of(qubits_[static_cast<std::size_t>(a)], static_cast<int>(x) + 1),
                        end_of(qubits_[static_cast<std::size_t>(b)], static_cast<int>(y) + 1)}});
      std::push_heap(best_.begin(), best_.end(), before);
    }
  }
}

const std::vector<StateGates::Scored>& StateGates::best(const StateGroup& group, int count,
                                                        Rng& rng) {
  fill(group);
  best_.clear();
  const int qubits = static_cast<int>(qubits_.size());
  for (int b = 1; b < qubits; ++b) {
    for (int a = 0; a < b; ++a) score(a, b, static_cast<std::size_t>(count), rng);
  }
  return best_;
}

}  // namespace zelt::braidwerk::internal
