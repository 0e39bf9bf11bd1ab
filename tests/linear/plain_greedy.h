#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/oracles.h"
#include "zeltbraidwerk/linear/synthesis.h"

/// \file
/// The greedy searches a bit at a time: every cost from scratch, every child a state, full sorts.

namespace plain {

using support::at;
using synthesis::Operation;

enum class Cost { Ones, Inverse, Escape, Log };

struct Beam {
  int width;
  int depth;
};

struct State {
  BoolMatrix a;
  BoolMatrix inverse;  ///< only where it counts
  std::vector<Operation> path;
};

inline void add_line(BoolMatrix& m, int from, int to, bool row) {
  if (row) return support::add_row(m, from, to);
  for (BoolRow& r : m) r[at(to)] = r[at(to)] != r[at(from)];
}

inline State after(State s, Operation o) {
  const auto [i, j, row] = o;
  add_line(s.a, i, j, row);
  if (!s.inverse.empty()) add_line(s.inverse, j, i, !row);
  s.path.push_back(o);
  return s;
}

inline int weight(const BoolRow& row) {
  return static_cast<int>(std::count(row.begin(), row.end(), true));
}

inline int ones(const BoolMatrix& m) {
  int sum = 0;
  for (const BoolRow& row : m) sum += weight(row);
  return sum;
}

inline bool reduced(const BoolMatrix& m) {
  return std::ranges::all_of(m, [](const BoolRow& row) { return weight(row) < 2; });
}

inline double potential(const BoolMatrix& m) {
  double sum = 0.0;
  for (const BoolRow& row : m) sum += std::log(weight(row));
  return sum;
}

inline std::vector<Operation> operations(int n) {
  std::vector<Operation> all;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      if (i == j) continue;
      all.emplace_back(i, j, true);
      all.emplace_back(i, j, false);
    }
  }
  return all;
}

/// What the operation saves, as the cost tables hold it.
inline double saving(Cost cost, const State& s, Operation o) {
  const State child = after(s, o);
  if (cost != Cost::Log) return ones(s.a) - ones(child.a) + ones(s.inverse) - ones(child.inverse);
  double left = potential(s.a);
  for (const BoolRow& row : child.a) left -= std::log(weight(row));
  return left;
}

inline double cost_of(Cost cost, const State& s) {
  return cost == Cost::Log ? potential(s.a) : ones(s.a) + ones(s.inverse);
}

inline double best_saving(Cost cost, const State& s) {
  double best = -1e9;
  for (const Operation& o : operations(static_cast<int>(s.a.size()))) {
    best = std::max(best, saving(cost, s, o));
  }
  return best;
}

/// The largest sum of the savings of a row operation and the column operation that goes back.
inline double discount(const BoolMatrix& a) {
  double best = -1e9;
  for (const auto& [i, j, row] : operations(static_cast<int>(a.size()))) {
    const State s{a, {}, {}};
    best =
        std::max(best, saving(Cost::Ones, s, {i, j, true}) + saving(Cost::Ones, s, {j, i, false}));
  }
  return best;
}

inline double score(Cost cost, const State& s, double discounted) {
  switch (cost) {
    case Cost::Inverse:
      return cost_of(cost, s) - discounted;
    case Cost::Log:
      return std::trunc(potential(s.a) - std::trunc(best_saving(cost, s)));
    default:
      return ones(s.a) - best_saving(cost, s);
  }
}

using Scored = synthesis::LogScoredOperation;

inline std::vector<Scored> candidates(Cost cost, Beam beam, const State& root) {
  const int n = static_cast<int>(root.a.size());
  std::vector<Scored> found;
  if (beam.depth <= 1) {
    for (const Operation& o : operations(n)) {
      found.emplace_back(cost_of(cost, root) - saving(cost, root, o), o);
    }
    return found;
  }
  const double discounted = cost == Cost::Inverse ? discount(root.a) : 0;
  std::vector<State> states{root};
  for (int level = 1; level < beam.depth; ++level) {
    std::vector<State> next;
    found.clear();
    for (const State& state : states) {
      std::vector<std::tuple<double, std::vector<Operation>, State*>> children;
      std::vector<State> made;
      made.reserve(at(2 * n * n));
      for (const Operation& o : operations(n)) {
        State& child = made.emplace_back(after(state, o));
        if (reduced(child.a)) return {{0.0, child.path.front()}};
        children.emplace_back(score(cost, child, discounted), child.path, &child);
      }
      std::ranges::sort(children);
      for (std::size_t k = 0; k < std::min(children.size(), at(beam.width)); ++k) {
        const auto& [value, path, child] = children[k];
        found.emplace_back(value, path.front());
        next.push_back(*child);
      }
    }
    states = std::move(next);
  }
  return found;
}

using Draw = std::function<int(int, int)>;

inline constexpr Operation none{-1, -1, false};

inline Operation next(Cost cost, Beam beam, const State& root, const Draw& draw) {
  std::vector<Scored> found = candidates(cost, beam, root);
  std::ranges::sort(found);
  const double best = std::get<0>(found.front());
  if (cost == Cost::Escape && !(best < ones(root.a))) return none;
  int ties = 0;
  while (at(ties) < found.size() && std::abs(std::get<0>(found[at(ties)]) - best) < 1e-5) ++ties;
  return std::get<1>(found[at(draw(0, ties - 1))]);
}

/// `said` receives what the escapes write.
inline structures::CnotCircuit synthesize(Cost cost, Beam beam, const BoolMatrix& a,
                                          std::vector<int>& perm, const Draw& draw,
                                          std::string& said, int level = 0) {
  const int n = static_cast<int>(a.size());
  State s{a, cost == Cost::Inverse ? boolean_matrix_inverse(n, a) : BoolMatrix{}, {}};
  structures::CnotCircuit rows(n);
  structures::CnotCircuit columns(n);
  for (int count = 0; count < 1000 && !reduced(s.a); ++count) {
    const Operation o = next(cost, beam, s, draw);
    if (o == none && level >= 20) break;
    if (o == none) {
      said += "On rentre au niveau " + std::to_string(level + 1) + "\n";
      const auto inner =
          synthesize(cost, beam, boolean_matrix_inverse(n, s.a), perm, draw, said, level + 1);
      for (const auto& [from, to] : inner.gates) {
        rows.addGate(from, to);
        support::add_row(s.a, from, to);
      }
      break;
    }
    s = after(s, o);
    s.path.clear();
    const auto [i, j, row] = o;
    row ? rows.addGate(i, j) : columns.addGate(j, i);
  }
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < n; ++c) {
      if (s.a[at(r)][at(c)]) perm[at(r)] = c;
    }
  }
  for (auto gate = rows.gates.rbegin(); gate != rows.gates.rend(); ++gate) {
    columns.addGate(perm[at(std::get<0>(*gate))], perm[at(std::get<1>(*gate))]);
  }
  return columns;
}

}  // namespace plain
