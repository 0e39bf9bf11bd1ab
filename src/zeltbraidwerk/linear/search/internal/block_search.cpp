#include "zeltbraidwerk/linear/search/internal/block_search.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/linear/search/internal/block_layers.h"
#include "zeltbraidwerk/linear/search/internal/depth_schedule.h"
#include "zeltbraidwerk/linear/search/internal/light_halves.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

using Additions = std::vector<std::pair<int, int>>;  // from control to target

/// A matrix in the order of its halves, and what clears both blocks off its diagonal.
struct Cleared {
  Halves halves;
  Additions below;   // row additions
  Additions beside;  // of the other end of the circuit
  int layers = 0;
};

class BlockClearing {
 public:
  BlockClearing(int width, Rng& rng, Meter& meter) : width_(width), rng_(rng), meter_(meter) {}

  /// Row a of the quotient is line first_row + a; column b, with the opposite direction, line
  /// first_col + b.
  bool clear(BitMatrix quotient, int first_row, int first_col, Additions& additions) {
    first_row_ = first_row;
    first_col_ = first_col;
    additions_ = &additions;
    return clear(quotient, {0, quotient.rows()}, {0, quotient.cols()});
  }

 private:
  struct Lines {
    int first, count;
    Lines head() const { return {first, count / 2}; }
    Lines tail() const { return {first + count / 2, count - count / 2}; }
  };

  /// A large block by its quarters, those on a diagonal of it side by side: additions within the
  /// lines of a quarter leave a cleared one next to it clear. Two random blocks of 64 lines take
  /// fewer layers one after the other than one of 128.
  bool clear(BitMatrix& q, Lines rows, Lines cols) {
    if (std::max(rows.count, cols.count) > block_tuning.most_lines) {
      return clear(q, rows.head(), cols.head()) && clear(q, rows.tail(), cols.tail()) &&
             clear(q, rows.head(), cols.tail()) && clear(q, rows.tail(), cols.head());
    }
    BlockReduction problem(rows.count, cols.count);
    const auto found =
        BeamSearch<BlockReduction>(problem, {.width = width_}, rng_, meter_)
            .run(problem.start(q.block(rows.first, cols.first, rows.count, cols.count)));
    if (found.empty()) return false;
    for (const BlockReduction::Move& number : found[0].moves) {
      for (const BlockMove& move : problem.layer(number)) {
        make(q, move, (move.kind == BlockMove::columns ? cols : rows).first + move.to,
             (move.kind == BlockMove::rows ? rows : cols).first + move.from);
      }
    }
    return true;
  }

  void make(BitMatrix& q, const BlockMove& move, int to, int from) {
    switch (move.kind) {
      case BlockMove::rows:
        q.add_row(from, to);
        additions_->emplace_back(first_row_ + from, first_row_ + to);
        break;
      case BlockMove::columns:
        q.add_col(from, to);
        additions_->emplace_back(first_col_ + to, first_col_ + from);
        break;
      case BlockMove::entry:
        q.flip(to, from);
        additions_->emplace_back(first_col_ + from, first_row_ + to);
        break;
    }
  }

  int width_;
  Rng& rng_;
  Meter& meter_;
  int first_row_ = 0;
  int first_col_ = 0;
  Additions* additions_ = nullptr;
};

int layers_of(const Additions& additions, int n) {
  std::vector<Gate> gates;
  gates.reserve(additions.size());
  for (const auto& [control, target] : additions) gates.push_back(cnot(control, target));
  return Scheduler(n).settle(gates);
}

/// The best of some choices, in about that number of steps: half of them for states of beams, of
/// which two blocks take about n / 3 levels each, half for exchanges.
std::optional<Cleared> clear_halves(const BitMatrix& m, std::uint64_t steps, Rng& rng,
                                    Meter& meter) {
  const int n = m.rows();
  const int h = n / 2;
  const auto levels = static_cast<std::uint64_t>(n) * 2 / 3;
  const auto level_steps = static_cast<double>(steps) / static_cast<double>(2 * levels);
  const int width = static_cast<int>(std::clamp(level_steps, 1.0, 1.0 * most_block_width(n)));
  const int choices =
      static_cast<int>(std::clamp(level_steps / width, 1.0, 1.0 * block_tuning.most_choices));
  std::optional<Cleared> best;
  for (int k = 0; k < choices; ++k) {
    Cleared found{light_halves(m, levels * static_cast<std::uint64_t>(width), rng, meter), {}, {}};
    BlockClearing clearing(width, rng, meter);
    if (!clearing.clear(found.halves.below, h, 0, found.below)) break;
    if (!clearing.clear(found.halves.beside, 0, h, found.beside)) break;
    found.layers = layers_of(found.below, n) + layers_of(found.beside, n);
    if (!best || found.layers < best->layers) best = std::move(found);
  }
  return best;
}

/// The circuit of a half makes it, so that it clears it backwards.
void reduce_by(const GateList& list, int* labels, BlockRecursion::Gates& gates) {
  std::vector<int> on(static_cast<std::size_t>(list.wires()));
  for (int w = 0; w < list.wires(); ++w)
    on[static_cast<std::size_t>(w)] = labels[list.frame.output_on(w)];
  for (auto gate = list.gates.rbegin(); gate != list.gates.rend(); ++gate) {
    gates.emplace_back(on[static_cast<std::size_t>(wire_of(gate->a))],
                       on[static_cast<std::size_t>(wire_of(gate->b))]);
  }
  std::copy(on.begin(), on.end(), labels);
}

}  // namespace

std::optional<GateList> search_by_blocks(const BitMatrix& m, std::uint64_t steps,
                                         const HalfSearch& half, Rng& rng, Meter& meter) {
  const int n = m.rows();
  const int h = n / 2;
  const int r = n - h;
  const std::optional<Cleared> cleared = clear_halves(m, steps, rng, meter);
  if (!cleared) return std::nullopt;
  const Halves& halves = cleared->halves;
  BitMatrix rest(n, n);
  for (int row = 0; row < n; ++row) {
    for (int col = 0; col < n; ++col) {
      if (m.get(halves.rows[static_cast<std::size_t>(row)],
                halves.cols[static_cast<std::size_t>(col)])) {
        rest.set(row, col);
      }
    }
  }
  FreeCircuit found(n);
  BlockRecursion::Gates& gates = found.circuit.gates;
  std::vector<int> labels = halves.rows;  // the wires of the rows in work
  for (const auto& [control, target] : cleared->below) {
    rest.add_row(control, target);
    gates.emplace_back(labels[static_cast<std::size_t>(control)],
                       labels[static_cast<std::size_t>(target)]);
  }
  for (const auto& [control, target] : cleared->beside) rest.add_col(target, control);
  reduce_by(half(rest.block(0, 0, h, h)), labels.data(), gates);
  reduce_by(half(rest.block(h, h, r, r)), labels.data() + h, gates);
  if (meter.ended()) return std::nullopt;
  for (auto gate = cleared->beside.rbegin(); gate != cleared->beside.rend(); ++gate) {
    gates.emplace_back(labels[static_cast<std::size_t>(gate->first)],
                       labels[static_cast<std::size_t>(gate->second)]);
  }
  for (int k = 0; k < n; ++k) {
    found.perm[static_cast<std::size_t>(halves.cols[static_cast<std::size_t>(k)])] =
        labels[static_cast<std::size_t>(k)];
  }
  found.circuit.reverse();
  found.outputs_from_inputs();
  return gate_list(found);
}

}  // namespace zelt::braidwerk::internal
