#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/graphs.h"
#include "support/pauli.h"
#include "zeltbraidwerk/foundations/structures.h"
#include "zeltbraidwerk/graphs/routines.h"
#include "zeltbraidwerk/routing/ion_nnizer.h"
#include "zeltbraidwerk/routing/linear_nnizer.h"

/// \file
/// Normal form and routing as one would write them down: each rotation a string, read through the
/// whole frame whenever it is looked at; block lists and frames copied at every step.

namespace plain {

using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;
using structures::Parameter;
using synthesis::RotationSequence;
using Blocks = std::vector<RotationSequence>;

inline Parameter signed_angle(const Parameter& angle, bool flip) {
  return flip ? angle.flip_sign() : angle;
}

inline RotationSequence merged(const RotationSequence& rotations) {
  RotationSequence result;
  for (const auto& r : rotations) {
    bool joined = false;
    for (auto other = result.rbegin(); other != result.rend(); ++other) {
      if (other->first == r.first) {
        other->second += r.second;
        joined = true;
      }
      if (!synthesis::commute(other->first, r.first)) break;
    }
    if (!joined) result.push_back(r);
  }
  return result;
}

inline void fold(RotationSequence& rotations, OperatorTableau& tableau) {
  RotationSequence rest;
  for (auto& r : rotations) {
    if (synthesis::is_clifford_angle(r.second)) {
      synthesis::update_clifford(r, tableau);
    } else {
      const auto [minus, letters] = support::carried(r.first, tableau);
      rest.emplace_back(letters, signed_angle(r.second, minus));
    }
  }
  rotations = rest;
}

inline Blocks cut(const RotationSequence& rotations, bool commuting) {
  Blocks blocks;
  RotationSequence current;
  for (const auto& r : rotations) {
    bool fits = commuting;
    for (const auto& member : current) fits = fits && synthesis::commute(member.first, r.first);
    if (!fits) {
      blocks.push_back(std::exchange(current, {r}));
      continue;
    }
    bool joined = false;
    for (auto& member : current) {
      if (member.first != r.first) continue;
      member.second += r.second;
      joined = true;
      break;
    }
    if (!joined) current.push_back(r);
  }
  blocks.push_back(current);
  return blocks;
}

inline std::pair<Blocks, OperatorTableau> normal_form(const std::vector<Gate>& circuit,
                                                      const OperatorTableau& tableau,
                                                      bool commuting, bool merge) {
  OperatorTableau frame = tableau;
  RotationSequence rotations;
  for (const Gate& gate : circuit) {
    if (synthesis::is_clifford(gate)) {
      frame.apply_right(gate);
      continue;
    }
    const auto [minus, letters] = support::carried(synthesis::get_axis(gate, frame.nbqbits), frame);
    rotations.emplace_back(letters, signed_angle(gate.params[0], minus));
  }
  if (merge) {
    rotations = merged(rotations);
    OperatorTableau extra(frame.nbqbits);
    fold(rotations, extra);
    extra.multiply_right(frame);
    frame = extra;
  }
  return {cut(rotations, commuting), frame};
}

struct Choice {
  double cost = 0;
  std::vector<Gate> gates;
  int qubit = -1;
  std::size_t index = 0;
  bool flip = false;
};

inline std::vector<int> support_of(const std::string& letters) {
  std::vector<int> support;
  for (std::size_t q = 0; q < letters.size(); ++q) {
    if (letters[q] != 'I') support.push_back(static_cast<int>(q));
  }
  return support;
}

inline void append(std::vector<Gate>& gates, const std::vector<Gate>& more) {
  gates.insert(gates.end(), more.begin(), more.end());
}

/// The frame behind the gates, the blocks without the rotation, and the block that comes next.
struct Next {
  OperatorTableau frame;
  Blocks blocks;
  std::size_t block;

  Next(const OperatorTableau& f, const std::vector<Gate>& gates, const Blocks& all,
       std::size_t current, std::size_t index)
      : frame(f), blocks(all), block(current) {
    for (const Gate& gate : gates) frame.apply_left(gate);
    blocks[block].erase(blocks[block].begin() + static_cast<std::ptrdiff_t>(index));
    if (blocks[block].empty()) ++block;
  }
};

inline Choice choose(std::size_t block, const Blocks& blocks, const OperatorTableau& frame,
                     Graph& graph, int depth, bool by_depth) {
  Choice choice;
  if (block == blocks.size() || blocks[block].empty()) return choice;
  std::string letters;
  std::optional<int> cheapest;
  for (std::size_t k = 0; k < blocks[block].size(); ++k) {
    const auto [minus, string] = support::carried(blocks[block][k].first, frame);
    std::vector<int> s = support_of(string);
    const int cost = 2 * graph.steiner_tree(s).nb_vertices() - static_cast<int>(s.size()) - 1;
    if (cheapest && cost >= *cheapest) continue;
    cheapest = cost;
    letters = string;
    choice.index = k;
    choice.flip = minus;
  }
  std::vector<int> s = support_of(letters);
  const Graph tree = graph.steiner_tree(s);
  std::optional<double> best;
  for (const int q : s) {
    const std::vector<Gate> fan = routines::fan_in_on_tree(tree, s, q);
    std::vector<Gate> plan = synthesis::get_basis_change(letters, frame.nbqbits);
    append(plan, fan);
    double cost = by_depth ? structures::cnot_depth(fan) : static_cast<double>(fan.size());
    if (depth >= 1) {
      const Next next(frame, plan, blocks, block, choice.index);
      cost += choose(next.block, next.blocks, next.frame, graph, depth - 1, by_depth).cost;
    }
    if (best && cost >= *best) continue;
    best = choice.cost = cost;
    choice.qubit = q;
    choice.gates = plan;
  }
  return choice;
}

template <class Metric>
Choice choose_ions(std::size_t block, const Blocks& blocks, const OperatorTableau& frame, int depth,
                   Metric& metric) {
  Choice choice;
  if (block == blocks.size() || blocks[block].empty()) return choice;
  std::string letters;
  double best = -1;
  for (std::size_t k = 0; k < blocks[block].size(); ++k) {
    const auto [minus, string] = support::carried(blocks[block][k].first, frame);
    std::vector<int> ions = support_of(string);
    if (!metric.compare(metric.get_score(ions), best)) continue;
    best = metric.get_score(ions);
    letters = string;
    choice.index = k;
    choice.flip = minus;
  }
  std::vector<int> ions = support_of(letters);
  choice.cost = -1;
  for (const int q : ions) {
    std::vector<Gate> plan = synthesis::get_basis_change(letters, frame.nbqbits);
    if (ions.size() > 1) {
      const auto turns = static_cast<double>((ions.size() - 1) % 4);
      plan.emplace_back("RX", std::vector{q},
                        std::vector<Parameter>{Parameter(turns * -1.5707963267948966)}, false);
      for (const int other : ions) {
        if (other != q) plan.push_back(Gate::H(other));
      }
      plan.emplace_back(
          "XX", ions, std::vector<Parameter>{1.5707963267948966, static_cast<double>(ions.size())},
          false);
    }
    double score = metric.get_score(ions);
    if (depth >= 1) {
      const Next next(frame, plan, blocks, block, choice.index);
      Metric next_metric = metric;
      next_metric.update(ions);
      score = metric.compose(
          score, choose_ions(next.block, next.blocks, next.frame, depth - 1, next_metric).cost);
    }
    if (metric.compare(score, choice.cost)) {
      choice.cost = score;
      choice.qubit = q;
      choice.gates = plan;
    }
    if (depth == 0) break;
  }
  metric.update(ions);
  return choice;
}

/// The loop of all routings, over a chooser of (block, blocks, frame).
template <class Choose>
std::vector<Gate> route(const std::vector<Gate>& circuit, bool commuting, bool merge,
                        OperatorTableau& frame, Choose&& next_choice) {
  auto [blocks, clifford] = normal_form(circuit, frame, commuting, merge);
  std::vector<Gate> out;
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    while (!blocks[b].empty()) {
      const Choice choice = next_choice(b, blocks, frame);
      for (const Gate& gate : choice.gates) frame.apply_left(gate);
      append(out, choice.gates);
      const auto chosen = blocks[b].begin() + static_cast<std::ptrdiff_t>(choice.index);
      out.emplace_back("RZ", std::vector{choice.qubit},
                       std::vector{signed_angle(chosen->second, choice.flip)}, true);
      blocks[b].erase(chosen);
    }
  }
  frame.multiply_right(clifford);
  return out;
}

}  // namespace plain
