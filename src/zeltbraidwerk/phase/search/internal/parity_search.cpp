#include "zeltbraidwerk/phase/search/internal/parity_search.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <optional>
#include <utility>

#include "zeltbraidwerk/phase/search/internal/parity_bound.h"
#include "zeltbraidwerk/phase/search/internal/parity_rewriter.h"
#include "zeltbraidwerk/phase/search/internal/parity_start.h"
#include "zeltbraidwerk/phase/search/internal/parity_terms.h"
#include "zeltbraidwerk/phase/search/internal/small_networks.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr double tie_noise = 1e-3;

class ParitySearch {
 public:
  ParitySearch(const BitMatrix& parities, const Task& task, const Effort& effort)
      : parities_(parities),
        n_(parities.rows()),
        graph_(task.device),
        outputs_(task.outputs),
        by_depth_(task.by_depth()),
        rng_(task.seed, task.stream),
        meter_(effort, task.objective),
        rewriter_(parities, walked_end(), graph_),
        settler_(parities, ParityEnd::exact, graph_) {
    meter_.prove(bound_of_parities(parities, task));
    choose_costs();
  }

  GateList run() {
    best_ = found_ = GateList(n_, {});
    if (parities_.cols() == 0) {
      meter_.better(0, 0);
      return best_;
    }
    take(first());
    look_at_all();
    search();
    return std::move(best_);
  }

 private:
  ParityEnd walked_end() const {
    if (outputs_ == Outputs::left_open) return ParityEnd::open;
    if (outputs_ == Outputs::anywhere) return ParityEnd::free;
    return graph_ == nullptr ? ParityEnd::swaps : ParityEnd::exact;
  }

  /// Light parities count the more the fewer wires there are. The first costs are the best for
  /// random sets of 8 n to 10 n parities; each set finds its own among them.
  void choose_costs() {
    if (graph_ != nullptr) {
      costs_ = {{0.65, 0.1, -1}, {0.65, 0, -1}, {0.75, 0.1, -1}, {0.5, 0.1, -1}};
      return;
    }
    const double decay = std::clamp(1 - 8.0 / std::max(n_, 1), 0.2, 0.9);
    const double share = n_ < 12 ? 0.05 : 0.1;
    const double exponent = n_ < 12 ? 0.0 : n_ < 18 ? -0.5 : -1.0;
    costs_ = {{decay, share, exponent},
              {decay, 0, exponent},
              {decay + 0.1, share, exponent},
              {decay - 0.15, share, exponent}};
  }

  /// An answer, whatever the effort.
  GateList first() {
    const Effort unlimited;
    Meter own(unlimited);
    GateList list = quick_start(own);
    for (std::uint64_t k = 0; k < own.steps(); ++k) meter_.step();
    return list;
  }

  /// Where there are few networks, up to the best one's number of gates.
  void look_at_all() {
    if (meter_.ended()) return;
    const SmallNetwork all = search_small_networks(
        parities_, {.outputs = outputs_, .device = graph_}, meter_.bound().count, best_.count());
    if (all.shortest) take(*all.shortest);
    meter_.prove({all.least, layers_to_hold(all.least, n_)});
  }

  GateList quick_start(Meter& own) {
    // The beam weighs all CNOTs at each step, the plain methods only some.
    const bool small = beam_microseconds() < (graph_ != nullptr && n_ > 20 ? 0 : 2e5);
    Network network;
    if (small) {
      const GrowthCost cost{costs_[0].decay, 0, -1};
      const auto networks =
          grow_networks(parities_, graph_, cost, {.width = 2, .noise = tie_noise}, rng_, own);
      if (!networks.empty()) network = networks[0];
    }
    if (network.empty()) network = plain_network(parities_, graph_, rng_);
    if (outputs_ == Outputs::left_open) return GateList(n_, network);
    if (small) {
      if (auto list = closed(network, n_, graph_, n_ <= 32 ? 10 : 1, rng_, own)) return *list;
    }
    return closed_plainly(network, n_, graph_, rng_);
  }

  /// In turns a beam of four times the width and a walk from what it has found that takes about as
  /// long, or longer; where that is not the best of all, one from there too.
  void search() {
    const double narrow = beam_microseconds();
    const int first = static_cast<int>(std::clamp(5e3 / narrow, 1.0, 2.0));
    auto steps = static_cast<std::uint64_t>(std::clamp(first * narrow, 5e3, 1e18));
    walk(found_, steps);
    for (int width = first; !meter_.ended(); width = std::min(4 * width, widest())) {
      const std::uint64_t before = meter_.steps();
      const auto list = width == first ? grown_at_all_costs(width) : grown(width);
      const auto spent = static_cast<double>(meter_.steps() - before) * walk_steps_of_state() *
                         walks_to_beams(width);
      steps = list ? static_cast<std::uint64_t>(spent) : 2 * steps;
      if (!list || !walk(*list, steps)) walk(found_, steps);
      if (swapping()) settle(steps / 4);
      if (n_ < 4 && width > 30) break;  // there is nothing more to find
    }
  }

  /// About what a beam of width 1 takes; a step of the walk takes one or less. Not measured, so
  /// that the same is done everywhere.
  double beam_microseconds() const {
    const double terms = parities_.cols();
    return 1 + 8e-6 * terms * terms * n_ * n_ * n_ * (graph_ == nullptr ? 1 : 4);
  }

  /// About as many steps of the walk take as long as a state of the beam.
  double walk_steps_of_state() const {
    return 1 + static_cast<double>(parities_.cols()) * n_ * n_ / 20000;
  }

  /// On few wires a walk makes up for a narrow beam, on many what a wide one has left undone.
  double walks_to_beams(int width) const {
    if (graph_ != nullptr) return 1;
    return n_ < 12 ? 16 : width < 200 ? 1 : 3;
  }

  int widest() const {
    const double bytes = 16.0 * (parities_.cols() + 2 * n_) * words_for(n_);
    return static_cast<int>(std::clamp(1e9 / bytes, 10.0, 1e5));
  }

  /// The shortest of all costs, which then goes first.
  std::optional<GateList> grown_at_all_costs(int width) {
    std::vector<std::pair<int, GrowthCost>> ranked;
    std::optional<GateList> best;
    for (const GrowthCost& cost : costs_) {
      const std::optional<GateList> list = grown(width, cost);
      const int length = list ? rewriter_.length(*list) : std::numeric_limits<int>::max();
      ranked.emplace_back(length, cost);
      if (list && (!best || length < rewriter_.length(*best))) best = list;
    }
    std::ranges::stable_sort(ranked, {}, [](const auto& entry) { return entry.first; });
    std::ranges::transform(ranked, costs_.begin(), [](const auto& entry) { return entry.second; });
    return best;
  }

  /// By the first cost by which the beam comes to an end.
  std::optional<GateList> grown(int width) {
    for (const GrowthCost& cost : costs_) {
      if (auto list = grown(width, cost)) return list;
    }
    return std::nullopt;
  }

  std::optional<GateList> grown(int width, const GrowthCost& cost) {
    if (n_ > SteinerWeights::most_vertices) return std::nullopt;
    const BeamOptions options{.width = width, .finishers = 10, .overtime = 5, .noise = tie_noise};
    std::optional<GateList> best;
    for (const Network& network : grow_networks(parities_, graph_, cost, options, rng_, meter_)) {
      std::optional<GateList> list;
      if (outputs_ == Outputs::left_open) {
        list.emplace(n_, network);
      } else {
        list = closed(network, n_, graph_, std::clamp(width / 3, 1, 100), rng_, meter_);
      }
      if (list && (!best || rewriter_.length(*list) < rewriter_.length(*best))) best = list;
    }
    return best;
  }

  bool swapping() const { return walked_end() == ParityEnd::swaps; }

  /// True when it has led to the best of all.
  bool walk(GateList list, std::uint64_t steps) {
    walked(rewriter_, list, steps);
    return take(list);
  }

  /// Puts the outputs of the best circuit in their places, and walks on with them there.
  void settle(std::uint64_t steps) {
    if (meter_.ended()) return;
    GateList list = in_place(found_, rng_);
    walked(settler_, list, steps);
  }

  /// Of equally short lists the one of fewest layers.
  void walked(ParityRewriter& rewriter, GateList& list, std::uint64_t steps) {
    rewriter.begin(list);
    int depth = depth_of(list.gates, n_);
    const Cooling cooling = graph_ == nullptr ? Cooling{0.3F, 0.003F} : Cooling{1.0F, 0.1F};
    walk_round(list, rewriter, steps, cooling, rng_, meter_,
               [&](const GateList& other, bool shorter) {
                 const int its = depth_of(other.gates, n_);
                 if (!shorter && its >= depth) return false;
                 depth = its;
                 offer(other, rewriter);
                 return true;
               });
    offer(list, rewriter);
  }

  /// Keeps what is the shortest for the walk, and the answer that can be had from it. True when it
  /// is the shortest.
  bool take(const GateList& list) {
    const bool shortest =
        found_.gates.empty() || rewriter_.length(list) <= rewriter_.length(found_);
    if (shortest) found_ = list;
    offer(list, rewriter_);
    return shortest;
  }

  /// What there is when the effort ends is only an answer where, had the search gone on, one as
  /// good would have come of it: more effort is never worse.
  void offer(const GateList& list, const ParityRewriter& rewriter) {
    const bool swaps = rewriter.end() == ParityEnd::swaps;
    const bool first = best_.gates.empty();
    if (!first && meter_.ended() && (swaps || by_depth_)) return;
    if (!swaps) return answer(list);
    if (first || by_depth_ || rewriter.length(list) < best_.count()) answer(in_place(list, rng_));
  }

  void answer(const GateList& list) {
    const int depth = depth_of(list.gates, n_);
    const auto key = [this](int count, int layers) {
      return by_depth_ ? std::pair(layers, count) : std::pair(count, layers);
    };
    if (!best_.gates.empty() && key(list.count(), depth) >= key(best_.count(), depth_)) return;
    assert(right(list));
    best_ = list;
    depth_ = depth;
    meter_.better(best_.count(), depth_);
  }

  /// Whether every parity comes up, and outputs are where the list says or in their places.
  bool right(const GateList& list) const {
    const std::vector<PhaseStep> steps = with_phases(list.gates, parities_);
    if (steps.size() != list.gates.size() + static_cast<std::size_t>(parities_.cols()))
      return false;
    if (outputs_ == Outputs::left_open) return true;
    const BitMatrix map = linear_map(steps, n_);
    for (int wire = 0; wire < n_; ++wire) {
      const int output = list.frame.output_on(wire);
      if (outputs_ == Outputs::in_place && output != wire) return false;
      if (map.row_weight(wire) != 1 || !map.get(wire, output)) return false;
    }
    return true;
  }

  const BitMatrix& parities_;
  int n_;
  const BitGraph* graph_;
  Outputs outputs_;
  bool by_depth_;
  Rng rng_;
  Meter meter_;
  ParityRewriter rewriter_;
  ParityRewriter settler_;
  std::vector<GrowthCost> costs_;
  GateList found_;  // the shortest for the walk
  GateList best_;   // the answer
  int depth_ = 0;
};

}  // namespace

ParitySearchResult search_parities(const BitMatrix& parities, const Task& task,
                                   const Effort& effort) {
  const BitMatrix made = parities_to_make(parities);
  const GateList list = ParitySearch(made, task, effort).run();
  ParitySearchResult result{with_phases(list.gates, parities), {}};
  result.permutation =
      (task.outputs == Outputs::anywhere ? list.frame : WireFrame(list.wires())).permutation();
  return result;
}

}  // namespace zelt::braidwerk::internal
