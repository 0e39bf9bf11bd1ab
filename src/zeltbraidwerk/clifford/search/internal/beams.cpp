#include "zeltbraidwerk/clifford/search/internal/beams.h"

#include <algorithm>

#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const CliffordTuning& tuning = clifford_tuning;

}  // namespace

CliffordBeams::CliffordBeams(const PauliFrame& images)
    : wires_(images.qubits()),
      problem_(wires_, operator_cost(wires_)),
      one_sided_(wires_),
      start_(problem_.start(OperatorRows(images))),
      sparse_(start_.rows.weight() < 3 * wires_ * wires_ / tuning.sparse_part) {}

Side CliffordBeams::side_for(int round) const {
  if (wires_ <= tuning.two_sided_wires || (sparse_ && round % 2 == 1)) return Side::both;
  return (sparse_ ? round / 2 : round) % 2 == 0 ? Side::after : Side::before;
}

int CliffordBeams::width_for(Side side, std::uint64_t steps) const {
  const auto n = static_cast<std::uint64_t>(wires_);
  const auto limit = static_cast<double>(steps);
  if (side == Side::both) {
    const std::uint64_t price = n * n * n * n / tuning.two_sided_steps;
    return widest_within(tuning.two_sided_widths, static_cast<double>(price), limit);
  }
  const std::uint64_t price = n * n * std::min(n, tuning.one_sided_wires) / tuning.one_sided_steps;
  return widest_within(tuning.one_sided_widths, static_cast<double>(price), limit);
}

std::optional<GateList> CliffordBeams::run(Side side, int width, Rng& rng, Meter& meter) {
  BeamOptions options;
  options.width = width;
  options.patience = tuning.patience + wires_;
  if (side == Side::both) {
    options.noise = tuning.tie_noise * problem_.small_change();
    BeamSearch<OperatorReduction> search(problem_, options, rng, meter);
    const auto found = search.run(start_);
    if (found.empty()) return std::nullopt;
    return circuit_of(found[0].state.rows, found[0].moves);
  }
  const int number = side == Side::after ? 0 : 1;
  options.noise = tuning.tie_noise * one_sided_.small_change();
  BeamSearch<OneSidedReduction> search(one_sided_, options, rng, meter);
  const auto found = search.run(one_sided_.start(start_.rows, number));
  if (found.empty()) return std::nullopt;
  return one_sided_.circuit(found[0].state, found[0].moves, number);
}

}  // namespace zelt::braidwerk::internal
