#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

struct BeamOptions {
  int width = 1;
  int patience = 30;  ///< levels without a new best score after which the search gives up
  int finishers = 1;  ///< finished states to collect
  int overtime = 0;   ///< levels to go on for more of them after the first
  double noise = 0;   ///< ties: each score is raised by a random part of this
};

/// A finished state and the moves that lead to it.
template <class Problem>
struct Finished {
  typename Problem::State state;
  std::vector<typename Problem::Move> moves;
};

/// Level by level: the children of all states in one pool, the best `width` of those that no level
/// has seen before become the next level. The memory of all levels is also the way out of a local
/// minimum and out of circles. Width 1 is a greedy search.
///
/// A Problem has State (copyable), Move (trivially copyable), and
///   children(state, rng, sink)   calls sink(score, move) for each child, less is better
///   hash(state, move)            of the child that the move makes
///   make(state, move)            moves the state
///   done(state)
/// and may have
///   begin_level(state)           hears, before the children of a level are asked for, of the best
///                                state of the level: scores of a level are compared by one measure
///
/// Children are scored and hashed where they stand; only those kept become states.
///
/// Memory: 2 * width states, and 16 bytes for each state of all levels.
template <class Problem>
class BeamSearch {
 public:
  using State = typename Problem::State;
  using Move = typename Problem::Move;

  BeamSearch(Problem& problem, const BeamOptions& options, Rng& rng, Meter& meter)
      : problem_(problem), options_(options), rng_(rng), meter_(meter) {}

  /// Fewer than wanted, or none, when the search gave up or its effort was spent.
  std::vector<Finished<Problem>> run(const State& start) {
    level_.assign(1, {start, -1});
    double best = std::numeric_limits<double>::infinity();
    int patience = options_.patience;
    int overtime = options_.overtime;
    while (!level_.empty()) {
      collect_finished();
      if (enough() || (!finished_.empty() && overtime-- <= 0)) break;
      gather_candidates();
      if (meter_.ended() || pool_.empty()) break;
      const double lowest = make_level();
      if (lowest < best) {
        best = lowest;
        patience = options_.patience;
      } else if (--patience < 0) {
        break;
      }
    }
    return std::move(finished_);
  }

 private:
  struct Candidate {
    double score;
    std::int32_t parent;
    Move move;
  };
  struct Link {
    std::int32_t parent;
    Move move;
  };
  struct Node {
    State state;
    std::int32_t link;
  };

  bool enough() const { return static_cast<int>(finished_.size()) >= options_.finishers; }

  void collect_finished() {
    std::size_t kept = 0;
    for (std::size_t k = 0; k < level_.size(); ++k) {
      if (problem_.done(level_[k].state)) {
        if (!enough()) finished_.push_back({level_[k].state, moves_to(level_[k].link)});
        continue;
      }
      if (kept != k) std::swap(level_[kept], level_[k]);
      ++kept;
    }
    level_.resize(kept);
  }

  std::vector<Move> moves_to(std::int32_t link) const {
    std::vector<Move> moves;
    for (; link >= 0; link = links_[static_cast<std::size_t>(link)].parent) {
      moves.push_back(links_[static_cast<std::size_t>(link)].move);
    }
    std::reverse(moves.begin(), moves.end());
    return moves;
  }

  static bool before(const Candidate& a, const Candidate& b) { return a.score < b.score; }

  /// Twice the width is kept, as some will turn out to be seen before.
  void gather_candidates() {
    const auto wanted = static_cast<std::size_t>(options_.width) * 2 + 2;
    double threshold = std::numeric_limits<double>::infinity();
    pool_.clear();
    if constexpr (requires { problem_.begin_level(level_[0].state); }) {
      if (!level_.empty()) problem_.begin_level(level_[0].state);
    }
    for (std::size_t k = 0; k < level_.size(); ++k) {
      if (meter_.ended()) return;
      stop_point();
      problem_.children(level_[k].state, rng_, [&](double score, const Move& move) {
        if (score >= threshold) return;
        if (options_.noise > 0) score += options_.noise * static_cast<double>(rng_.unit());
        pool_.push_back({score, static_cast<std::int32_t>(k), move});
        if (pool_.size() >= 4 * wanted) threshold = cut(wanted);
      });
    }
  }

  double cut(std::size_t wanted) {
    const auto last = pool_.begin() + static_cast<std::ptrdiff_t>(wanted);
    std::nth_element(pool_.begin(), last, pool_.end(), before);
    pool_.resize(wanted);
    return last->score;
  }

  /// Returns the lowest score of the new level.
  double make_level() {
    choose_children();
    double lowest = std::numeric_limits<double>::infinity();
    for (std::size_t k = 0; k < pool_.size(); ++k) {
      const Candidate& candidate = pool_[k];
      const auto p = static_cast<std::size_t>(candidate.parent);
      Node& parent = level_[p];
      if (k == next_.size()) next_.emplace_back();
      Node& child = next_[k];
      if (last_child_[p] == k) {  // nobody reads the parent's state any more
        std::swap(child.state, parent.state);
      } else {
        child.state = parent.state;
      }
      problem_.make(child.state, candidate.move);
      child.link = static_cast<std::int32_t>(links_.size());
      links_.push_back({parent.link, candidate.move});
      lowest = std::min(lowest, candidate.score);
      meter_.step();
    }
    next_.resize(pool_.size());
    std::swap(level_, next_);
    return lowest;
  }

  /// Keeps in the pool the best children that no level has seen before.
  void choose_children() {
    std::sort(pool_.begin(), pool_.end(), before);
    last_child_.resize(level_.size());
    std::size_t kept = 0;
    for (const Candidate& candidate : pool_) {
      if (kept == static_cast<std::size_t>(options_.width)) break;
      const auto p = static_cast<std::size_t>(candidate.parent);
      if (!seen_.insert(problem_.hash(level_[p].state, candidate.move)).second) continue;
      last_child_[p] = kept;
      pool_[kept++] = candidate;
    }
    pool_.resize(kept);
  }

  Problem& problem_;
  BeamOptions options_;
  Rng& rng_;
  Meter& meter_;
  std::vector<Node> level_;
  std::vector<Node> next_;
  std::vector<Candidate> pool_;
  std::vector<std::size_t> last_child_;  // by state of the level: its last child in the pool
  std::vector<Link> links_;
  std::unordered_set<std::uint64_t> seen_;
  std::vector<Finished<Problem>> finished_;
};

}  // namespace zelt::braidwerk::internal
