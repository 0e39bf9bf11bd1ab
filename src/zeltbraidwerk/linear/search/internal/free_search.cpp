#include "zeltbraidwerk/linear/search/internal/free_search.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "zeltbraidwerk/linear/internal/pair_elimination.h"
#include "zeltbraidwerk/linear/search/internal/column_reduction.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

namespace {

// Sizes up to which each of these pays.
constexpr int greedy_first = 64;    // a single greedy run takes 20 ms there
constexpr int columns_first = 320;  // one by columns a third of a second
constexpr int small = 20;
constexpr int wide_beam = 40;
constexpr int middle = 110;
constexpr int greedy_wires = 512;
constexpr int whole_greedy = 160;  // above, additions go to few lines
constexpr int whole_sparse = 256;  // the same of sparse matrices

double exponent_of_greedy(int n) {
  return n <= 12 ? 1 : n <= small ? -0.5 : n <= 28 ? -1 : -n / 28.0;
}

ReductionCost greedy_cost(int n) {
  return {.exponent = exponent_of_greedy(n),
          .with_inverse = n <= 36,
          .focus = n > whole_greedy ? 8 : 0};
}

/// Of greedy runs on sparse matrices: few lines change, so that several take no longer than one on
/// a dense matrix does, and none is best for all.
std::vector<ReductionCost> sparse_costs(int n) {
  if (n <= whole_greedy) return {{-0.5, false}, {0, true}};
  if (n <= whole_sparse) return {{-0.5, false}};
  return {{-0.5, false, 8}};
}

constexpr std::array all_facings{Facing::plain, Facing::inverse, Facing::transpose,
                                 Facing::inverse_transpose};

ReductionCost beam_cost(int n) {
  return {.exponent = n <= small       ? 0
                      : n <= wide_beam ? -0.5
                                       : -n / 32.0,
          .with_inverse = n <= small};
}

}  // namespace

GateList relabelled(const BitMatrix& m) {
  GateList list(m.rows(), {});
  for (int r = 0; r < m.rows(); ++r) {
    for_each_bit(m.row(r), m.stride(), [&](int c) { list.frame.put_output(r, c); });
  }
  return list;
}

GateList by_pairs(const BitMatrix& m, Facing facing) {
  BitMatrix work = face(m, facing);
  FreeCircuit found(m.rows());
  found.circuit = structures::CnotCircuit(m.rows(), pair_elimination(work));
  found.circuit.reverse();
  found.face_back(facing);
  return gate_list(found);
}

GateList shortest_circuit(const BitMatrix& m, bool permuted, Rng& rng) {
  const int n = m.rows();
  if (n < 2) return GateList(n, {});
  const MapTable& table = MapTable::of(n, complete_graph(n), permuted);
  SmallMatrix map = 0;
  for (int r = 0; r < n; ++r) map |= static_cast<SmallMatrix>(m.row(r)[0]) << (n * r);
  GateList list(n, {});
  const SmallMatrix left = table.descend(map, 0, rng, list.gates);
  for (int r = 0; r < n; ++r) {
    const int c = std::countr_zero((left >> (n * r)) & ((1U << n) - 1));
    list.frame.put_output(r, c);
  }
  return list;
}

FreeCircuit free_circuit(const GateList& list) {
  FreeCircuit found(list.wires());
  for (const Gate& gate : list.gates) {
    found.circuit.gates.emplace_back(wire_of(gate.a), wire_of(gate.b));
  }
  found.perm = list.frame.permutation();
  return found;
}

GateList gate_list(const FreeCircuit& found) {
  GateList list(found.circuit.nbqbits, {});
  for (const auto& [control, target] : found.circuit.gates) {
    list.gates.push_back(cnot(control, target));
  }
  list.frame = WireFrame(found.perm);
  return list;
}

GateList reduce(const BitMatrix& m, const ReductionCost& cost, int width, Facing facing, Rng& rng,
                Meter& meter) {
  Reduction problem(m.rows(), cost);
  BeamOptions options;
  options.width = width;
  if (width > 1) options.noise = 1e-5;
  const BitMatrix faced = face(m, facing);
  const auto found = BeamSearch<Reduction>(problem, options, rng, meter).run(problem.start(faced));
  if (found.empty()) return {};
  FreeCircuit circuit = free_circuit(problem.circuit(found[0].state, found[0].moves));
  circuit.face_back(facing);
  return gate_list(circuit);
}

FreeSearch::FreeSearch(BitMatrix m, int window, Rng& rng) : m_(std::move(m)), window_(window) {
  const int n = m_.rows();
  const int ones = m_.weight();
  const int ones_back = n <= greedy_wires ? inverse(m_).weight() : n * n;
  const bool may_be_sparse = n > most_window_wires && n <= greedy_wires;
  sparse_ = may_be_sparse && std::min(ones, ones_back) < n * n / 3;
  long_ = !sparse_ && n > 10 && n <= wide_beam;
  if (n <= most_window_wires) {
    best_ = shortest_circuit(m_, true, rng);
    optimal_ = true;
  } else {
    best_ = by_pairs(m_, Facing::plain);
    const auto consider = [&](GateList list) {
      if (list.wires() == n && list.count() < best_.count()) best_ = std::move(list);
    };
    const Effort unbounded;
    Meter meter(unbounded);
    if (n <= (by_columns() ? columns_first : greedy_first)) {
      consider(by_columns() ? reduce_by_columns(m_, 1, Facing::plain, rng, meter)
                            : reduce(m_, greedy_cost(n), 1, Facing::plain, rng, meter));
    }
    if (sparse_) {
      for (const Facing facing : all_facings) consider(by_pairs(m_, facing));
      const Facing lighter = ones <= ones_back ? Facing::plain : Facing::inverse;
      for (const ReductionCost& cost : sparse_costs(n)) {
        consider(reduce(m_, cost, 1, lighter, rng, meter));
      }
    }
  }
  shortest_ = best_.count();
}

Cooling FreeSearch::cooling() const {
  if (!long_) return m_.rows() <= middle ? Cooling{0.15F, 0.01F} : Cooling{0.05F, 0.005F};
  return m_.rows() <= small ? Cooling{0.15F, 0.05F} : Cooling{0.3F, 0.003F};
}

bool FreeSearch::by_columns() const {
  return !sparse_ && m_.rows() > wide_beam;
}

GateList FreeSearch::start(int number, std::uint64_t steps, Rng& rng, Meter& meter) const {
  const int n = m_.rows();
  if (by_columns()) {
    // The widest beam that takes about twice the time of the walks of the round.
    const double price = static_cast<double>(n) * n * n / 400;  // in steps, of width 1
    int width = number == 0 ? 1 : 0;
    for (const int wider : {1, 10, 30, 100, 300, 1000, 3000}) {
      if (wider * price <= static_cast<double>(steps)) width = wider;
    }
    if (width == 0) return {};
    return reduce_by_columns(m_, width, static_cast<Facing>(2 * ((number + 1) % 2)), rng, meter);
  }
  if (sparse_ && n <= middle) {
    // No cost is best for every cipher, and of the four facings each can be.
    constexpr std::array<ReductionCost, 6> costs{
        {{1, true}, {0, true}, {-0.5, false}, {-2, false}, {-1, true}, {0, false}}};
    constexpr std::array<int, 3> widths{10, 100, 300};
    const auto k = static_cast<std::size_t>(number);
    const int width = n <= 48 ? widths[std::min<std::size_t>(k / 8, 2)] : 10;
    return reduce(m_, costs[k % costs.size()], width, static_cast<Facing>(k % 4), rng, meter);
  }
  if (n <= wide_beam) {
    // Small ones walk from many starts, larger ones long from the best.
    if (long_ ? number > 0 : number > 1 && number % 2 == 0) return {};
    const auto facing = static_cast<Facing>(number % 4);
    return reduce(m_, beam_cost(n), number == 0 && !long_ ? 10 : 300, facing, rng, meter);
  }
  if (n <= greedy_wires && number == 0) {
    return reduce(m_, greedy_cost(n), 1, Facing::plain, rng, meter);
  }
  return {};
}

}  // namespace zelt::braidwerk::internal
