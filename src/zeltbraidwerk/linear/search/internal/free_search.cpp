#include "zeltbraidwerk/linear/search/internal/free_search.h"

#include <algorithm>

#include "zeltbraidwerk/linear/search/internal/beams.h"
#include "zeltbraidwerk/linear/search/internal/decoded_elimination.h"
#include "zeltbraidwerk/linear/search/internal/extension.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/search/internal/schedule.h"

namespace zelt::braidwerk::internal {

FreeSearch::FreeSearch(BitMatrix m, int window) : m_(std::move(m)), n_(m_.rows()), window_(window) {
  if (n_ <= most_window_wires || n_ > cnot_tuning.greedy_wires) return;
  const int ones = m_.weight();
  const int ones_of_inverse = inverse(m_).weight();
  if (ones_of_inverse < ones) lighter_ = Facing::inverse;
  sparse_ = std::min(ones, ones_of_inverse) < n_ * n_ / cnot_tuning.sparse_part;
  long_walks_ = !sparse_ && n_ >= cnot_tuning.least_long_walk && n_ <= cnot_tuning.beam_wires;
}

void FreeSearch::first(Rng& rng) {
  optimal_ = n_ <= most_window_wires;
  if (optimal_) {
    best_ = shortest_circuit(m_, true, rng);
  } else {
    make_first_greedily(rng);
  }
  shortest_ = best_.count();
}

void FreeSearch::make_first_greedily(Rng& rng) {
  best_ = by_pairs(m_, Facing::plain);
  const auto offer = [&](GateList list) {
    if (list.wires() == n_ && list.count() < best_.count()) best_ = std::move(list);
  };
  const Effort unlimited;
  Meter meter(unlimited);
  if (!sparse_ && n_ >= cnot_tuning.least_quick_columns) {
    if (n_ <= cnot_tuning.quick_wires_columns) {
      const int width = n_ <= cnot_tuning.beam_wires ? cnot_tuning.narrow : 1;
      offer(reduce_by_columns(m_, width, Facing::plain, rng, meter));
    }
  } else if (n_ <= cnot_tuning.quick_wires) {
    offer(reduce(m_, greedy_cost(n_), 1, Facing::plain, rng, meter));
  }
  if (!sparse_) return;
  for (const Facing facing :
       {Facing::plain, Facing::inverse, Facing::transpose, Facing::inverse_transpose}) {
    offer(by_pairs(m_, facing));
  }
  for (const ReductionCost& cost : greedy_costs_if_sparse(n_)) {
    offer(reduce(m_, cost, 1, lighter_, rng, meter));
  }
}

Cooling FreeSearch::cooling() const {
  if (long_walks_) {
    return n_ <= cnot_tuning.small_wires ? cnot_tuning.cooling_small : cnot_tuning.cooling_long;
  }
  return n_ <= cnot_tuning.middle_wires ? cnot_tuning.cooling : cnot_tuning.cooling_large;
}

bool FreeSearch::by_columns() const {
  return !sparse_ && n_ > cnot_tuning.two_sided_wires;
}

/// The widest beam that takes about twice the time of the walks of the round. Elimination by blocks
/// takes the place of beams after round 0, on fewer wires a circuit made wire by wire that of the
/// widest ones.
GateList FreeSearch::start_by_columns(int number, std::uint64_t steps, Rng& rng, Meter& meter) {
  if (long_walks_) {
    if (number > 0) return {};
    return reduce_by_columns(m_, cnot_tuning.wide, Facing::transpose, rng, meter);
  }
  const bool by_blocks =
      n_ >= elimination_tuning.least_wires && n_ <= elimination_tuning.most_wires && number > 0;
  const bool by_wires = n_ <= extension_tuning.most_wires && steps >= extension_tuning.least_steps;
  if (by_blocks || by_wires) return start_by_decoding(number, steps, rng, meter);
  const double price = static_cast<double>(n_) * n_ * n_ / cnot_tuning.columns_per_step;
  const int affordable =
      widest_within(cnot_tuning.column_widths, price, static_cast<double>(steps));
  const int width = number == 0 ? std::max(affordable, 1) : affordable;
  if (width == 0) return {};
  const Facing facing = number % 2 == 0 ? Facing::transpose : Facing::plain;
  return reduce_by_columns(m_, width, facing, rng, meter);
}

/// In every third round, so each is eight times as long as the one before. Where there is no time
/// for the next one as well, this one takes what is left.
GateList FreeSearch::start_by_decoding(int number, std::uint64_t steps, Rng& rng, Meter& meter) {
  const DecodedStartTuning& tuning = decoded_start_tuning;
  const bool by_blocks = n_ > extension_tuning.most_wires;
  if (number % tuning.period != (by_blocks ? 1 : 0)) return {};
  std::uint64_t effort = tuning.rounds * steps;
  if (by_blocks && number == 1) {
    const auto n = static_cast<std::uint64_t>(n_);
    effort = std::max(elimination_tuning.first_steps * n,
                      elimination_tuning.first_steps_of_pair * n * n);
  }
  if (const auto left = meter.seconds_left(); left && decoding_per_second_ > 0) {
    const double in_time = tuning.part_of_time * *left * decoding_per_second_;
    const auto planned = static_cast<double>(effort);
    if (in_time * tuning.growth < planned) return {};
    if (in_time < planned * tuning.growth) effort = static_cast<std::uint64_t>(in_time);
  }
  const double began = meter.seconds();
  const std::uint64_t steps_before = meter.steps();
  GateList list = by_blocks ? eliminate_by_decoding(m_, effort, window_, rng, meter)
                            : extend_wire_by_wire(m_, effort, window_, rng, meter);
  decoding_per_second_ =
      static_cast<double>(meter.steps() - steps_before) / std::max(meter.seconds() - began, 1e-6);
  return list;
}

GateList FreeSearch::start(int number, std::uint64_t steps, Rng& rng, Meter& meter) {
  if (by_columns()) return start_by_columns(number, steps, rng, meter);
  if (sparse_ && n_ <= cnot_tuning.middle_wires) {
    // No cost is best for every cipher, and of the four facings each can be.
    constexpr auto& costs = beam_costs_if_sparse;
    const auto k = static_cast<std::size_t>(number);
    const auto& widths = cnot_tuning.sparse_widths;
    const std::size_t wider =
        n_ <= cnot_tuning.sparse_beam_wires ? k / cnot_tuning.sparse_rounds : 0;
    return reduce(m_, costs[k % costs.size()], widths[std::min(wider, widths.size() - 1)],
                  static_cast<Facing>(k % 4), rng, meter);
  }
  if (n_ <= cnot_tuning.beam_wires) {
    // Small ones walk from many starts, larger ones long from the best.
    if (long_walks_ ? number > 0 : number > 1 && number % 2 == 0) return {};
    const int width = number == 0 && !long_walks_ ? cnot_tuning.narrow : cnot_tuning.wide;
    return reduce(m_, beam_cost(n_), width, static_cast<Facing>(number % 4), rng, meter);
  }
  if (n_ <= cnot_tuning.greedy_wires && number == 0) {
    return reduce(m_, greedy_cost(n_), 1, Facing::plain, rng, meter);
  }
  return {};
}

}  // namespace zelt::braidwerk::internal
