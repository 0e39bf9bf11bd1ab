#include "zeltbraidwerk/circuit/two_wire/internal/block.h"

#include <array>
#include <utility>

#include "zeltbraidwerk/circuit/two_wire/internal/one_wire.h"

namespace zelt::braidwerk::internal {

namespace {

/// Puts a run of one-wire gates at the end of `out`, in its shortest form where that is shorter.
void put_run(const std::vector<PlaceGate>& run, int place, std::vector<PlaceGate>& out) {
  Quaternion turn = Quaternion::Identity();
  for (const PlaceGate& gate : run) turn = quaternion_of(gate) * turn;
  const OneWireForm form = one_wire_form(turn.normalized(), place);
  const std::vector<PlaceGate> shortest(form.begin(), form.end());
  const auto& put = counts_of(shortest).better_than(counts_of(run)) ? shortest : run;
  out.insert(out.end(), put.begin(), put.end());
}

/// The same circuit with the one-wire gates between two-wire gates put together.
std::vector<PlaceGate> fused(const std::vector<PlaceGate>& block) {
  std::vector<PlaceGate> out;
  std::array<std::vector<PlaceGate>, 2> runs;
  const auto flush = [&] {
    for (const int place : {0, 1}) {
      std::vector<PlaceGate>& run = runs[static_cast<std::size_t>(place)];
      if (!run.empty()) put_run(run, place, out);
      run.clear();
    }
  };
  for (const PlaceGate& gate : block) {
    if (gate.two_wire()) {
      flush();
      out.push_back(gate);
    } else {
      runs[gate.place].push_back(gate);
    }
  }
  flush();
  return out;
}

}  // namespace

std::optional<TwoWireCircuit> fused_block(const std::vector<PlaceGate>& block) {
  std::vector<PlaceGate> runs = fused(block);
  if (!counts_of(runs).better_than(counts_of(block))) return std::nullopt;
  const auto phase = relative_phase(matrix_of(runs), matrix_of(block), most_error);
  if (!phase) return std::nullopt;
  return TwoWireCircuit{std::move(runs), *phase};
}

std::optional<TwoWireCircuit> better_block(const std::vector<PlaceGate>& block,
                                           bool keep_rotations) {
  const GateCounts given = counts_of(block);
  std::optional<TwoWireCircuit> best = fused_block(block);
  if (given.two_wire == 0) return best;
  const GateCounts fewest = best ? counts_of(best->gates) : given;
  std::optional<TwoWireCircuit> made = two_wire_circuit(matrix_of(block), fewest);
  if (!made || (keep_rotations && counts_of(made->gates).rotations > given.rotations)) return best;
  return made;
}

}  // namespace zelt::braidwerk::internal
