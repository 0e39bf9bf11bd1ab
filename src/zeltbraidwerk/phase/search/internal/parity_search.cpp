#include "zeltbraidwerk/phase/search/internal/parity_search.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <optional>

#include "zeltbraidwerk/phase/search/internal/parity_bound.h"
#include "zeltbraidwerk/phase/search/internal/parity_growing.h"
#include "zeltbraidwerk/phase/search/internal/parity_rewriter.h"
#include "zeltbraidwerk/phase/search/internal/parity_start.h"
#include "zeltbraidwerk/phase/search/internal/parity_terms.h"
#include "zeltbraidwerk/phase/search/internal/small_networks.h"
#include "zeltbraidwerk/phase/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr const ParityTuning& tuning = parity_tuning;

/// In turns a beam of four times the width and a walk from what it has found that takes about as
/// long, or longer; where that is not the best of all, one from there too. With a budget the last
/// beam is as wide as there is time for.
///
/// Where all pairs of wires are joined and outputs are to be in their places, circuits are searched
/// with outputs on any wires, each swap that is left counted as a gate, and put in place as they
/// are found.
class ParitySearch : public SearchBase<GateList> {
 public:
  ParitySearch(const BitMatrix& parities, const Task& task, const Effort& effort)
      : SearchBase(task, effort),
        parities_(parities),
        n_(parities.rows()),
        swapping_(task.in_place() && task.device == nullptr),
        rewriter_(parities, swapping_ ? Outputs::anywhere : task.outputs, swapping_, task.device),
        in_place_rewriter_(parities, Outputs::in_place, false, task.device),
        growing_(parities, task, rewriter_, rng_),
        shortest_(Objective::count, Ties::latest) {}

  /// Of the first walk; the later ones go by the beams before them.
  Schedule schedule() const {
    const double steps = first_width() * growing_.beam_microseconds();
    return {.first_steps = std::clamp(steps, tuning.least_walk_steps, 1e18), .most_growths = 0};
  }

  void first() {
    meter_.prove(bound_of_parities(parities_, task_));
    if (parities_.cols() == 0) {
      offer(GateList(n_, {}), Origin::certain);
      return;
    }
    const Effort unlimited;
    Meter own(unlimited);
    const GateList list = growing_.quick(own);
    meter_.charge(own.steps());
    if (task_.start != nullptr) {
      shortest_.offer(*task_.start, {rewriter_.length(*task_.start), 0});
      offer(*task_.start, Origin::certain);
    }
    take(list);
    if (!meter_.ended()) search_small();
  }

  bool finished() const {
    return parities_.cols() == 0 || (n_ < 4 && width_ > tuning.widest_on_three_wires);
  }

  void round(const Round& round) {
    std::optional<int> last_width;
    if (round.number == 0) {
      walk_steps_ = round.steps;
      walk(shortest_.circuit(), walk_steps_);
      width_ = first_width();
    } else {
      last_width = width_of_last_beam();
      if (last_width && *last_width < width_) return walk_on();
      width_ = last_width.value_or(std::min(tuning.width_growth * width_, growing_.widest_beam()));
    }
    if (meter_.ended()) return;
    const std::uint64_t before = meter_.steps();
    const double begun = meter_.seconds();
    const auto list = round.number == 0 ? growing_.grow_at_all_costs(width_, meter_)
                                        : growing_.grow(width_, meter_);
    beam_seconds_ = (meter_.seconds() - begun) / (round.number == 0 ? growing_.costs() : 1);
    const auto spent =
        static_cast<double>(meter_.steps() - before) * walk_steps_of_state() * walks_to_beams();
    walk_steps_ = list ? static_cast<std::uint64_t>(spent) : 2 * walk_steps_;
    if (last_width) walk_steps_ = walk_steps_left();
    if (!list || !walk(*list, walk_steps_)) walk(shortest_.circuit(), walk_steps_);
    if (swapping_) walk_in_place(walk_steps_ / static_cast<std::uint64_t>(tuning.walks_in_place));
  }

 private:
  int first_width() const {
    return static_cast<int>(
        std::clamp(tuning.first_beam_microseconds / growing_.beam_microseconds(), 1.0,
                   tuning.most_first_width));
  }
  /// With a budget that has no time for two more beams, each wider than the one before: the width
  /// of the one that there is time for.
  std::optional<int> width_of_last_beam() const {
    if (n_ < tuning.few_wires || task_.device != nullptr || task_.by_depth()) return std::nullopt;
    const std::optional<double> left = meter_.seconds_left();
    if (!left || beam_seconds_ <= 0) return std::nullopt;
    const double growth = std::max(0.0, tuning.last_beam * *left / beam_seconds_);
    if (growth > tuning.width_growth * (1 + tuning.width_growth)) return std::nullopt;
    return std::min(static_cast<int>(growth * width_), growing_.widest_beam());
  }
  /// Until the time is over.
  void walk_on() {
    walk_steps_ = walk_steps_left();
    walk(shortest_.circuit(), walk_steps_);
    if (swapping_) walk_in_place(walk_steps_ / static_cast<std::uint64_t>(tuning.walks_in_place));
  }
  std::uint64_t walk_steps_left() const {
    const double seconds = std::max(0.0, meter_.seconds_left().value_or(0));
    const double share = swapping_ ? tuning.walks_in_place / (1.0 + tuning.walks_in_place) : 1;
    return static_cast<std::uint64_t>(share * seconds * walk_steps_per_second_) + 1;
  }
  /// About as many steps of the walk take as long as a state of the beam.
  double walk_steps_of_state() const {
    return 1 + static_cast<double>(parities_.cols()) * n_ * n_ / tuning.state_of_walk_step;
  }
  double walks_to_beams() const {
    if (task_.device != nullptr) return 1;
    return n_ < tuning.few_wires  ? tuning.walks_on_few
           : width_ < tuning.wide ? 1
                                  : tuning.walks_after_wide;
  }

  /// Where there are few networks, all of fewer gates than the best one.
  void search_small() {
    const SmallNetwork all =
        search_small_networks(parities_, task_, meter_.bound().count, incumbent_.size().count);
    if (all.shortest) take(*all.shortest);
    meter_.prove({all.least, layers_to_hold(all.least, n_)});
  }

  /// True when it has led to the shortest of all.
  bool walk(GateList list, std::uint64_t steps) {
    walk(list, rewriter_, steps);
    return take(list);
  }
  /// Puts the outputs of the shortest circuit in their places, and walks on with them there.
  void walk_in_place(std::uint64_t steps) {
    if (meter_.ended()) return;
    GateList list = in_place(shortest_.circuit(), rng_);
    walk(list, in_place_rewriter_, steps);
  }
  void walk(GateList& list, ParityRewriter& rewriter, std::uint64_t steps) {
    const std::uint64_t before = meter_.steps();
    const double begun = meter_.seconds();
    rewriter.begin(list);
    const Cooling cooling = task_.device == nullptr ? tuning.cooling : tuning.cooling_on_device;
    walk_to_shallow(list, rewriter, steps, cooling, rng_, meter_,
                    [&](const GateList& other, const CircuitSize&) { offer(other, rewriter); });
    offer(list, rewriter);
    walk_steps_per_second_ =
        static_cast<double>(meter_.steps() - before) / std::max(meter_.seconds() - begun, 1e-6);
  }

  /// True when it is the shortest for the walk; of equally short ones the latest is.
  bool take(const GateList& list) {
    const bool taken = shortest_.offer(list, {rewriter_.length(list), 0});
    offer(list, rewriter_);
    return taken;
  }

  /// A list, or what it becomes when its outputs are put in place: swaps are counted before as one
  /// gate, but can take three, so that not the shortest lists alone are tried by depth.
  void offer(const GateList& list, const ParityRewriter& rewriter) {
    if (!rewriter.counts_swaps()) return offer(list, Origin::lowering_count);
    if (!incumbent_.counts(Origin::derived)) return;
    const bool may_be_better =
        incumbent_.empty() || task_.by_depth() || rewriter.length(list) < incumbent_.size().count;
    if (may_be_better) offer(in_place(list, rng_), Origin::derived);
  }
  void offer(const GateList& list, Origin origin) {
    assert(shows_all(list, parities_, task_));
    incumbent_.offer(list, size_of(list), origin);
  }

  const BitMatrix& parities_;
  int n_;
  bool swapping_;  // outputs are put in place after the walk
  ParityRewriter rewriter_;
  ParityRewriter in_place_rewriter_;
  ParityGrowing growing_;
  Smallest<GateList> shortest_;  // for the walk
  int width_ = 0;                // of the last beam
  std::uint64_t walk_steps_ = 0;
  double beam_seconds_ = 0;           // of the last beam
  double walk_steps_per_second_ = 0;  // of the last walk
};

}  // namespace

Placed<PhaseStep> search_parities(const BitMatrix& parities, const Task& task,
                                  const Effort& effort) {
  const BitMatrix made = parities_to_make(parities);
  ParitySearch search(made, task, effort);
  run_search(search);
  const GateList& list = search.incumbent().circuit();
  const WireFrame frame = task.outputs == Outputs::anywhere ? list.frame : WireFrame(list.wires());
  return {with_phases(list.gates, parities), frame.permutation(), size_of(list)};
}

}  // namespace zelt::braidwerk::internal
