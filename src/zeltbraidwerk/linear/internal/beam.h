#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/candidate.h"

namespace zelt::braidwerk::internal {

/// A search that looks `depth` additions ahead and keeps the best `width` children of every state.
struct Beam {
  int width = 1;
  int depth = 1;
};

/// Looks depth - 1 levels ahead (depth at least 2) and returns the states of the last level, each
/// as its score and the first addition of its path, in beam order: parents one after the other,
/// the children of each by score. The cut is per parent, so the number of states can grow by
/// `width` a level. An addition that completes the reduction ends the search: the first addition
/// of its path, with score 0, is then the only result.
///
/// Children are scored where they stand; only the kept ones become states, and those of the last
/// level not even that. Memory is that of width^(depth - 2) positions.
///
/// A Position has lines(), apply(addition), and score_children(out), which lists the scores of all
/// additions in any order.
template <typename Position>
std::vector<Candidate> look_ahead(const Position& root, Beam beam, const Control& control) {
  struct State {
    Position position;
    LineAddition first;
  };
  std::vector<State> states{{root, no_addition}};
  std::vector<Candidate> children;
  std::vector<Candidate> found;
  for (int level = 1; level < beam.depth && !states.empty(); ++level) {
    std::vector<State> next;
    found.clear();
    for (const State& state : states) {
      if (control.stop_requested()) return {};
      const auto first_of = [&](LineAddition addition) {
        return level == 1 ? addition : state.first;
      };
      if (const auto last = state.position.lines().completion(); last != no_addition) {
        return {Candidate(0, first_of(last))};
      }
      children.clear();
      state.position.score_children(children);
      const auto kept =
          std::clamp<std::ptrdiff_t>(beam.width, 0, static_cast<std::ptrdiff_t>(children.size()));
      std::partial_sort(children.begin(), children.begin() + kept, children.end());
      for (auto child = children.begin(); child != children.begin() + kept; ++child) {
        if (level == beam.depth - 1) {
          found.emplace_back(child->score(), first_of(child->addition()));
        } else {
          next.push_back({state.position, first_of(child->addition())});
          next.back().position.apply(child->addition());
        }
      }
    }
    states = std::move(next);
  }
  return found;
}

/// The addition to make next, drawn with one draw from the best candidates. no_addition, without a
/// draw, when there is no candidate, when the search was stopped, or when only gains are wanted and
/// the best candidate has no fewer ones than the matrix.
///
/// A Position also has draw_best(only_gains, draw), which chooses without looking ahead.
template <typename Position>
LineAddition next_addition(Position& position, Beam beam, bool only_gains, const Draw& draw,
                           const Control& control) {
  if (beam.depth <= 1) return position.draw_best(only_gains, draw);
  std::vector<Candidate> found = look_ahead(position, beam, control);
  if (found.empty()) return no_addition;
  std::sort(found.begin(), found.end());
  const int best = found.front().score();
  if (only_gains && best >= position.lines().ones()) return no_addition;
  const auto worse = [best](const Candidate& c) { return c.score() != best; };
  const auto ties = std::find_if(found.begin(), found.end(), worse) - found.begin();
  return found[static_cast<std::size_t>(draw(0, static_cast<int>(ties) - 1))].addition();
}

}  // namespace zelt::braidwerk::internal
