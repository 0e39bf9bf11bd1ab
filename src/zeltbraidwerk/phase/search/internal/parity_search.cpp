#include "zeltbraidwerk/phase/search/internal/parity_search.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <utility>

#include "zeltbraidwerk/phase/search/internal/parity_rewriter.h"
#include "zeltbraidwerk/phase/search/internal/parity_start.h"

namespace zelt::braidwerk::internal {

namespace {

/// The columns that are to come up, each once.
BitMatrix different_parities(const BitMatrix& parities) {
  const BitMatrix by_term = parities.transposed();
  std::set<std::vector<Word>> seen{std::vector<Word>(static_cast<std::size_t>(by_term.stride()))};
  std::vector<int> kept;
  for (int p = 0; p < by_term.rows(); ++p) {
    const Word* words = by_term.row(p);
    if (seen.emplace(words, words + by_term.stride()).second) kept.push_back(p);
  }
  BitMatrix result(static_cast<int>(kept.size()), parities.rows());
  for (std::size_t k = 0; k < kept.size(); ++k) {
    std::copy_n(by_term.row(kept[k]), by_term.stride(), result.row(static_cast<int>(k)));
  }
  return result.transposed();
}

class ParitySearch {
 public:
  ParitySearch(const BitMatrix& parities, const ParitySearchOptions& options, const Effort& effort)
      : parities_(parities),
        n_(parities.rows()),
        graph_(options.graph),
        leftover_(options.leftover),
        rng_(options.seed, options.stream),
        meter_(effort),
        rewriter_(parities, walked_end(), graph_),
        settler_(parities, ParityEnd::exact, graph_) {
    // Lighter parities count the more the fewer wires there are. Tuned on random sets of 8 n to
    // 10 n parities.
    const double decay = std::clamp(1 - 8.0 / std::max(n_, 1), 0.2, 0.9);
    costs_[0] = {decay, 0, -1};
    costs_[1] = {decay, n_ < 12 ? 0.05 : 0.1, n_ < 12 ? 0.0 : n_ < 18 ? -0.5 : -1.0};
  }

  GateList run() {
    best_ = found_ = GateList(n_, {});
    if (!anything_to_show()) return best_;
    take(first());
    if (n_ >= 4) search();
    return std::move(best_);
  }

 private:
  ParityEnd walked_end() const {
    switch (leftover_) {
      case Leftover::returned:
        return ParityEnd::open;
      case Leftover::closed_freely:
        return ParityEnd::free;
      case Leftover::closed:
        break;
    }
    return graph_ == nullptr ? ParityEnd::swaps : ParityEnd::exact;
  }

  bool anything_to_show() const {
    int ones = 0;
    for (int q = 0; q < n_; ++q) ones += parities_.row_weight(q);
    return ones > parities_.cols();
  }

  /// An answer, whatever the effort.
  GateList first() {
    const Effort unlimited;
    Meter own(unlimited);
    GateList list = quick_start(own);
    for (std::uint64_t k = 0; k < own.steps(); ++k) meter_.step();
    return list;
  }

  GateList quick_start(Meter& own) {
    // The beam weighs all CNOTs at each step, the plain method only some.
    const bool small = n_ <= 128 && parities_.cols() <= 4096;
    if (graph_ == nullptr && small) {
      const auto networks =
          grow_networks(parities_, costs_[0], {.width = 2, .noise = 1e-3}, rng_, own);
      if (!networks.empty()) {
        if (leftover_ == Leftover::returned) return GateList(n_, networks[0]);
        if (auto list = closed_freely(networks[0], n_, n_ <= 32 ? 10 : 1, rng_, own)) return *list;
        return closed_plainly(networks[0], n_, nullptr, false, rng_);
      }
    }
    const Network network = plain_network(parities_, graph_, rng_);
    if (leftover_ == Leftover::returned) return GateList(n_, network);
    return closed_plainly(network, n_, graph_, leftover_ == Leftover::closed_freely, rng_);
  }

  /// In turns a wider beam and walks that take as long: from what the beam has found, and from the
  /// best of all.
  void search() {
    std::uint64_t steps = 20000;
    for (int width = 8; !meter_.ended(); width = std::min(4 * width, widest())) {
      if (graph_ == nullptr) {
        const std::uint64_t before = meter_.steps();
        std::optional<GateList> list = grown(width);
        steps = static_cast<std::uint64_t>(static_cast<double>(meter_.steps() - before) *
                                           walk_steps_of_state());
        if (list) walk(std::move(*list), steps);
      } else {
        steps *= 2;
      }
      walk(found_, steps);
      if (swapping()) settle(steps / 4);
    }
  }

  /// About as many steps of the walk take as long as a state of the beam.
  double walk_steps_of_state() const {
    return 1 + static_cast<double>(parities_.cols()) * n_ * n_ / 20000;
  }

  int widest() const {
    const double bytes = 16.0 * (parities_.cols() + 2 * n_) * words_for(n_);
    return static_cast<int>(std::clamp(1e9 / bytes, 10.0, 1e5));
  }

  std::optional<GateList> grown(int width) {
    const BeamOptions options{.width = width, .finishers = 10, .overtime = 5, .noise = 1e-3};
    std::optional<GateList> best;
    for (const Network& network : grow_networks(parities_, costs_[1], options, rng_, meter_)) {
      std::optional<GateList> list;
      if (leftover_ == Leftover::returned) {
        list.emplace(n_, network);
      } else {
        list = closed_freely(network, n_, std::clamp(width / 3, 1, 100), rng_, meter_);
      }
      if (list && (!best || rewriter_.length(*list) < rewriter_.length(*best))) best = list;
    }
    return best;
  }

  bool swapping() const { return walked_end() == ParityEnd::swaps; }

  void walk(GateList list, std::uint64_t steps) {
    walked(rewriter_, list, steps);
    take(list);
  }

  /// Puts the outputs of the best circuit in their places, and walks on with them there.
  void settle(std::uint64_t steps) {
    GateList list = in_place(found_, rng_);
    walked(settler_, list, steps);
    answer(list);
  }

  void walked(ParityRewriter& rewriter, GateList& list, std::uint64_t steps) {
    rewriter.begin(list);
    int depth = depth_of(list.gates, n_);
    walk_round(list, rewriter, steps, {}, rng_, meter_, [&](const GateList& other, bool shorter) {
      const int its = depth_of(other.gates, n_);
      if (!shorter && its >= depth) return false;
      depth = its;
      if (shorter && rewriter.end() == walked_end() && !swapping()) take(other);
      return true;
    });
  }

  /// Keeps what is the shortest for the walk, and the answer that can be had from it.
  void take(const GateList& list) {
    const bool none = best_.gates.empty();
    if (none || rewriter_.length(list) <= rewriter_.length(found_)) found_ = list;
    answer(swapping() ? in_place(list, rng_) : list);
  }

  void answer(const GateList& list) {
    const int depth = depth_of(list.gates, n_);
    if (!best_.gates.empty() &&
        std::pair(list.count(), depth) >= std::pair(best_.count(), depth_)) {
      return;
    }
    best_ = list;
    depth_ = depth;
    meter_.better(best_.count(), depth_);
  }

  const BitMatrix& parities_;
  int n_;
  const BitGraph* graph_;
  Leftover leftover_;
  Rng rng_;
  Meter meter_;
  ParityRewriter rewriter_;
  ParityRewriter settler_;
  std::array<GrowthCost, 2> costs_;
  GateList found_;  // the shortest for the walk
  GateList best_;   // the answer
  int depth_ = 0;
};

/// Gives every parity its phase where it first comes up.
std::vector<PhaseStep> with_phases(const GateList& list, const BitMatrix& parities) {
  const BitMatrix by_term = parities.transposed();
  std::set<std::pair<std::vector<Word>, int>> left;
  const auto words = [](const BitMatrix& m, int row) {
    return std::vector<Word>(m.row(row), m.row(row) + m.stride());
  };
  for (int p = 0; p < by_term.rows(); ++p) left.emplace(words(by_term, p), p);
  std::vector<PhaseStep> steps;
  BitMatrix map = BitMatrix::identity(parities.rows());
  const auto show = [&](int wire) {
    const auto value = words(map, wire);
    for (auto term = left.lower_bound({value, -1}); term != left.end() && term->first == value;
         term = left.erase(term)) {
      steps.push_back(PhaseStep::phase(wire, term->second));
    }
  };
  for (int wire = 0; wire < parities.rows(); ++wire) show(wire);
  for (const Gate& gate : list.gates) {
    map.add_row(wire_of(gate.a), wire_of(gate.b));
    steps.push_back(PhaseStep::cnot(wire_of(gate.a), wire_of(gate.b)));
    show(wire_of(gate.b));
  }
  return steps;
}

}  // namespace

ParitySearchResult search_parities(const BitMatrix& parities, const ParitySearchOptions& options,
                                   const Effort& effort) {
  const BitMatrix different = different_parities(parities);
  const GateList list = ParitySearch(different, options, effort).run();
  ParitySearchResult result{with_phases(list, parities), {}};
  result.permutation.resize(static_cast<std::size_t>(list.wires()));
  for (int wire = 0; wire < list.wires(); ++wire) {
    const int qubit =
        options.leftover == Leftover::returned ? wire : wire_of(list.origin[end_of(wire, 0)]);
    result.permutation[static_cast<std::size_t>(qubit)] = wire;
  }
  return result;
}

}  // namespace zelt::braidwerk::internal
