#include "zeltbraidwerk/linear/internal/methods.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/internal/factor_decoding.h"
#include "zeltbraidwerk/linear/internal/greedy.h"
#include "zeltbraidwerk/linear/internal/pair_elimination.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

using structures::CnotCircuit;

namespace {

/// From a circuit that reduces the matrix to the identity, as the eliminations give it.
bool reversed(FreeCircuit& found, CnotCircuit circuit) {
  found.circuit.gates = std::move(circuit.gates);
  found.circuit.reverse();
  return true;
}

bool by_gauss(const BitMatrix& m, FreeCircuit& found, const LinearMethodOptions&, const Draw&,
              const Control&) {
  return reversed(found, eliminate_gauss(m));
}

bool by_pmh(const BitMatrix& m, FreeCircuit& found, const LinearMethodOptions& options, const Draw&,
            const Control&) {
  return reversed(found, options.section ? pmh(m, *options.section) : optimized_pmh(m));
}

bool by_row_pairs(const BitMatrix& m, FreeCircuit& found, const LinearMethodOptions&, const Draw&,
                  const Control&) {
  BitMatrix work = m;
  return reversed(found, CnotCircuit(m.rows(), pair_elimination(work)));
}

bool by_blocks(const BitMatrix& m, FreeCircuit& found, const LinearMethodOptions&, const Draw&,
               const Control& control) {
  BlockRecursion recursion(found.circuit.gates, control);
  if (!recursion.reduce(m, found.perm.data())) return false;
  found.circuit.reverse();
  found.outputs_from_inputs();
  return true;
}

bool by_syndrome(const BitMatrix& m, FreeCircuit& found, const LinearMethodOptions& options,
                 const Draw&, const Control& control) {
  auto decoded = decode_factors(m, found.perm, options.width, options.lookahead, control);
  return reversed(found, CnotCircuit(m.rows(), decoded.gates)) && decoded.finished;
}

template <GreedyCost cost>
bool greedily(const BitMatrix& m, FreeCircuit& found, const LinearMethodOptions& options,
              const Draw& draw, const Control& control) {
  const GreedyOptions greedy{.cost = cost, .beam = {options.width, options.lookahead}};
  GreedyResult result = greedy_synthesis(m, found.perm, greedy, draw, control);
  found.circuit = std::move(result.circuit);
  return result.reduced;
}

double states(const LinearMethodOptions& options, int levels) {
  return std::pow(options.width, std::max(levels, 0));
}

double greedy_memory(int n, const LinearMethodOptions& options) {
  const double kept = states(options, options.lookahead - 2);
  return 16 * kept * options.width + kept * 12 * n * n;
}

double syndrome_memory(int n, const LinearMethodOptions& options) {
  return 2 * states(options, options.lookahead) * (12 + 4 * options.lookahead + n / 8);
}

constexpr LinearMethod greedy_method(std::string_view name, decltype(LinearMethod::make) make) {
  return {.name = name,
          .make = make,
          .draws = true,
          .takes_beam = true,
          .most_qubits = 16383,
          .memory = greedy_memory};
}

constexpr LinearMethod table[] = {
    {.name = "gauss", .make = by_gauss, .quick = true},
    {.name = "pmh", .make = by_pmh, .quick = true, .takes_section = true},
    {.name = "pairs", .make = by_row_pairs, .quick = true},
    {.name = "blocks", .make = by_blocks},
    {.name = "syndrome", .make = by_syndrome, .takes_beam = true, .memory = syndrome_memory},
    greedy_method("greedy", greedily<GreedyCost::Ones>),
    greedy_method("greedy_inverse", greedily<GreedyCost::OnesWithInverse>),
    greedy_method("greedy_escape", greedily<GreedyCost::OnesWithEscape>),
    greedy_method("greedy_log", greedily<GreedyCost::Log>),
};

}  // namespace

std::span<const LinearMethod> linear_method_table() {
  return table;
}

const LinearMethod* linear_method(std::string_view name) {
  const LinearMethod* entry = std::ranges::find(table, name, &LinearMethod::name);
  return entry == std::end(table) ? nullptr : entry;
}

std::optional<FreeCircuit> LinearRuns::make(int run, const Control& control) const {
  SeededDraw engine(seed, static_cast<std::uint32_t>(run));
  const Draw draw = std::ref(engine);
  const auto facing = static_cast<Facing>(run % plain_runs);
  BitMatrix faced = face(m, facing);
  std::optional<Renaming> renaming;
  if (run >= plain_runs) {
    const std::vector<int> rows = shuffled(m.rows(), draw);
    // Where the outputs must be in place, the same names on both sides keep them there.
    renaming = {rows, in_place ? rows : shuffled(m.rows(), draw)};
    faced = (*renaming)(faced);
  }
  FreeCircuit found(m.rows());
  if (!method.make(faced, found, options, draw, control)) return std::nullopt;
  if (renaming) found.rename_back(*renaming);
  found.face_back(facing);
  return in_place ? closed(std::move(found), objective, draw) : std::move(found);
}

}  // namespace zelt::braidwerk::internal
