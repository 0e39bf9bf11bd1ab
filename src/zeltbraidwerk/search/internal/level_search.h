#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {

/// Breadth-first searches for the fewest gates, one for each number of gates: states from which too
/// many would be needed are left out. For problems so small that all states can be looked at.
///
/// A Problem has State, Move, Key, Hash (of a key), and
///   start()                  the first state
///   key(state)               equal for states that are the same
///   needed(state)            no fewer gates lead from the state to an end
///   is_done(state)
///   each_child(state, sink)  calls sink(child, move) for each move
///   work_of_child()          what looking at a child counts, against `most_work`
template <class Problem>
class LevelSearch {
 public:
  using State = typename Problem::State;
  using Move = typename Problem::Move;

  struct Result {
    int least;  ///< no sequence of moves to an end is shorter
    std::optional<State> end;
    std::vector<Move> moves;  ///< to the end, in time order
  };

  LevelSearch(const Problem& problem, std::size_t most_work)
      : problem_(problem), most_work_(most_work) {}

  /// Given that an end takes at least `least` and at most `most` moves. There is no end in the
  /// result where `most` is the answer, or the work was too much; then `least` is as far as it got.
  Result run(int least, int most) {
    for (; least < most; ++least) {
      const Answer answer = reaches_end(least);
      if (answer == Answer::yes) return read_out(least);
      if (answer == Answer::unknown) break;
    }
    return {least, {}, {}};
  }

 private:
  struct Node {
    State state;
    std::size_t parent;  // on the level before
    Move move;
  };
  enum class Answer { yes, no, unknown };

  /// Within that number of moves. On yes the last level has the end.
  Answer reaches_end(int moves) {
    const State first = problem_.start();
    levels_.assign(1, {{first, 0, {}}});
    seen_ = {problem_.key(first)};
    if (problem_.needed(first) > moves) return Answer::no;
    for (int left = moves; !levels_.back().empty(); --left) {
      const auto done = [this](const Node& node) { return problem_.is_done(node.state); };
      if (std::ranges::any_of(levels_.back(), done)) return Answer::yes;
      std::vector<Node> next;
      for (std::size_t k = 0; k < levels_.back().size(); ++k) {
        if (work_ > most_work_) return Answer::unknown;
        stop_point();
        add_children(k, left - 1, next);
      }
      levels_.push_back(std::move(next));
    }
    return Answer::no;
  }

  void add_children(std::size_t parent, int moves_left, std::vector<Node>& next) {
    problem_.each_child(levels_.back()[parent].state, [&](const State& child, const Move& move) {
      work_ += problem_.work_of_child();
      if (problem_.needed(child) > moves_left) return;
      if (seen_.insert(problem_.key(child)).second) next.push_back({child, parent, move});
    });
  }

  Result read_out(int least) const {
    const auto done = [this](const Node& node) { return problem_.is_done(node.state); };
    auto node = std::ranges::find_if(levels_.back(), done);
    Result result{least, node->state, {}};
    for (std::size_t level = levels_.size() - 1; level > 0; --level) {
      result.moves.push_back(node->move);
      node = levels_[level - 1].begin() + static_cast<std::ptrdiff_t>(node->parent);
    }
    std::ranges::reverse(result.moves);
    return result;
  }

  const Problem& problem_;
  std::size_t most_work_;
  std::size_t work_ = 0;  // of all searches together
  std::vector<std::vector<Node>> levels_;
  std::unordered_set<typename Problem::Key, typename Problem::Hash> seen_;
};

}  // namespace zelt::braidwerk::internal
