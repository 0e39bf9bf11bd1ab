#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/linear/divide_and_conquer.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/syndrome_decoding.h"
#include "zeltbraidwerk/linear/syndrome_synthesis.h"
#include "zeltbraidwerk/linear/triangular_pairs.h"

namespace zelt::braidwerk::python {

using namespace synthesis;
using nb::literals::operator""_a;
using structures::CnotCircuit;

namespace {

CnotCircuit pmh(int n, const ArrayLike& m, int section) {
  check_at_least(section, 1, "section");
  if (section > 30 && n > 30) raise_value_error("section: got %d, wanted at most 30", section);
  BitMatrix bits = to_bits(m, n, n, "m");
  return unlocked([&] { return internal::pmh(std::move(bits), section); });
}

CnotCircuit gauss(int n, const ArrayLike& m) {
  BitMatrix bits = to_bits(m, n, n, "m");
  return unlocked([&] { return internal::eliminate_gauss(std::move(bits)); });
}

CnotCircuit optimized_pmh(int n, const ArrayLike& m) {
  const BitMatrix bits = to_bits(m, n, n, "m");
  return unlocked([&] { return internal::optimized_pmh(bits); });
}

void bind_eliminations(nb::module_& m) {
  m.def("GaussianElimination", gauss, "n"_a, "m"_a,
        "The circuit of the inverse of m, by plain elimination.");
  m.def("PMH_Algorithm", pmh, "n"_a, "m"_a, "section"_a,
        "The circuit of the inverse of m, by elimination in sections of columns.");
  m.def("optimized_PMH_Algorithm", optimized_pmh, "n"_a, "m"_a,
        "The shortest PMH_Algorithm circuit over the useful sections.");
}

using RowPairs = std::vector<std::tuple<int, int>>;

template <RowPairs (*pairs)(int, const BoolMatrix&, int)>
RowPairs column_pairs(int n, const ArrayLike& m, int column) {
  check_index(column, n, "column");
  return pairs(n, to_bool_matrix(m, n, n, "m"), column);
}

template <RowPairs (*pairs)(int, const BoolMatrix&, int, std::vector<int>&)>
std::tuple<RowPairs, std::vector<int>> row_pairs(int n, const ArrayLike& m, int column,
                                                 std::vector<int> rows) {
  check_index(column, n, "column");
  check_indices(rows, n, "rows");
  RowPairs found = pairs(n, to_bool_matrix(m, n, n, "m"), column, rows);
  return {std::move(found), std::move(rows)};
}

template <std::tuple<int, int> (*choose)(int, const BoolMatrix&, int)>
std::tuple<int, int> one_pair(int n, const ArrayLike& m, int start) {
  check_size(start, "start");
  return choose(n, to_bool_matrix(m, n, n, "m"), start);
}

void bind_pairs(nb::module_& m) {
  m.def(
      "GreedyGaussianElimination_faster",
      [](int n, const ArrayLike& m_) {
        BoolMatrix matrix = to_bool_matrix(m_, n, n, "m");
        CnotCircuit circuit = unlocked([&] { return GreedyGaussianElimination_faster(n, matrix); });
        return std::tuple(std::move(circuit), to_numpy(matrix));
      },
      "n"_a, "m"_a,
      "(circuit, m): the circuit of the inverse of m, by pairs of similar rows, and what m became: "
      "the identity.");
  m.def("get_pairs_lower", column_pairs<get_pairs_lower>, "n"_a, "m"_a, "col"_a,
        "The pairs that clear a column below the diagonal.");
  m.def("get_pairs_upper", column_pairs<get_pairs_upper>, "n"_a, "m"_a, "k"_a,
        "The pairs that clear column n-1-k above the diagonal.");
  m.def("recursive_get_pairs_lower", row_pairs<recursive_get_pairs_lower>, "n"_a, "m"_a, "col"_a,
        "rows"_a, "(pairs, rows): the pairs among the rows, and the row that is left.");
  m.def("recursive_get_pairs_upper", row_pairs<recursive_get_pairs_upper>, "n"_a, "m"_a, "k"_a,
        "rows"_a, "(pairs, rows): the same from column n-1-k backward.");
  m.def("choose_best_pair_trig_lower", one_pair<choose_best_pair_trig_lower>, "n"_a, "m"_a,
        "start"_a, "One pair of similar rows among those from start on.");
  m.def("choose_best_pair_trig_upper", one_pair<choose_best_pair_trig_upper>, "n"_a, "m"_a,
        "start"_a, "One pair of similar rows among those from n-1-start down.");
}

using ClearBlock = void (*)(BoolMatrix&, BoolMatrix&, CnotCircuit&, int, int, int, int*);

template <ClearBlock clear, bool west_south>
std::tuple<BoolArray2, BoolArray2> cleared(const ArrayLike& quotient, const ArrayLike& m,
                                           CnotCircuit& c, int n, int h, int r,
                                           std::vector<int> perm) {
  check_size(h, "h");
  check_size(r, "r");
  check_same(static_cast<std::size_t>(h) + static_cast<std::size_t>(r),
             static_cast<std::size_t>(std::max(n, 0)), "h, r", "rows");
  check_permutation(perm, n, "perm");
  check_at_least(c.nbqbits, n, "c: qubits");
  BoolMatrix q =
      west_south ? to_bool_matrix(quotient, r, h, "X") : to_bool_matrix(quotient, h, r, "Y");
  BoolMatrix matrix = to_bool_matrix(m, n, n, "m");
  unlocked([&] { clear(q, matrix, c, n, h, r, perm.data()); });
  return {to_numpy(q), to_numpy(matrix)};
}

void bind_blocks(nb::module_& m) {
  m.def(
      "divide_and_conquer_synthesis",
      [](int n, const ArrayLike& m_) {
        const BoolMatrix matrix = to_bool_matrix(m_, n, n, "m");
        return unlocked([&] { return divide_and_conquer_synthesis(n, matrix); });
      },
      "n"_a, "m"_a, "The circuit of the inverse of m, by blocks and matchings: shallow.");
  m.def(
      "divide_and_conquer_synthesis_with_permutation",
      [](int n, const ArrayLike& m_, std::vector<int> perm) {
        check_permutation(perm, n, "perm");
        BoolMatrix matrix = to_bool_matrix(m_, n, n, "m");
        CnotCircuit circuit = unlocked([&] {
          return divide_and_conquer_synthesis_with_permutation(n, std::move(matrix), perm.data());
        });
        return std::tuple(std::move(circuit), std::move(perm));
      },
      "n"_a, "m"_a, "perm"_a, "(circuit, perm): the same without the swaps at the end.");
  m.def(
      "setup",
      [](int n, const ArrayLike& m_, std::vector<int> perm) {
        check_permutation(perm, n, "perm");
        BoolMatrix matrix = to_bool_matrix(m_, n, n, "m");
        unlocked([&] { setup(n, matrix, perm.data()); });
        return std::tuple(to_numpy(matrix), std::move(perm));
      },
      "n"_a, "m"_a, "perm"_a, "(m, perm) with rows swapped so that the leading blocks invert.");
  m.def(
      "addPermutation",
      [](int n, CnotCircuit& c, const std::vector<int>& perm) {
        check_permutation(perm, n, "perm");
        check_at_least(c.nbqbits, n, "c: qubits");
        addPermutation(n, c, perm.data());
      },
      "n"_a, "c"_a, "perm"_a, "Appends swaps to the circuit.");
  m.def("SynthesizeWestSouthBlock", cleared<SynthesizeWestSouthBlock, true>, "X"_a, "m"_a, "c"_a,
        "n"_a, "h"_a, "r"_a, "perm"_a,
        "(X, m) with the lower left block cleared; the gates are appended to c.");
  m.def("SynthesizeEastNorthBlock", cleared<SynthesizeEastNorthBlock, false>, "Y"_a, "m"_a, "c"_a,
        "n"_a, "h"_a, "r"_a, "perm"_a,
        "(Y, m) with the upper right block cleared; the gates are appended to c.");
}

/// The arguments that all decoding functions share.
struct Decoding {
  BoolMatrix h;
  BoolRow s;
  std::vector<int> idx;
};

Decoding decoding(const ArrayLike& h, const ArrayLike& s, int length, int depth, int width,
                  std::vector<int> idx) {
  const BitMatrix bits = to_bits(h, "H");
  check_beam(width, depth, std::max(depth, 1), bits.rows(),
             length / 8.0 + 4.0 * std::max(depth, 1) + 16);
  check_indices(idx, bits.cols(), "idx");
  check_size(length, "length");
  check_at_most(length, static_cast<int>(idx.size()), "length");
  return {bits.unpack(), to_bool_row(s, length, "s"), std::move(idx)};
}

using Solver = std::vector<int> (*)(const BoolMatrix&, BoolRow, int, int, int, std::vector<int>&);

template <Solver solve>
std::vector<int> solved(const ArrayLike& h, const ArrayLike& s, int length, int depth, int width,
                        std::vector<int> idx) {
  Decoding d = decoding(h, s, length, depth, width, std::move(idx));
  return unlocked([&] { return solve(d.h, d.s, length, depth, width, d.idx); });
}

/// (solved, states, result), the states as (weight, residual, path).
using Queues = std::tuple<bool, std::vector<DecodingEntry>, std::vector<int>>;

Queues first_queues(const ArrayLike& h, const ArrayLike& s, int length, int depth, int width,
                    std::vector<int> idx) {
  Decoding d = decoding(h, s, length, depth, width, std::move(idx));
  const int levels = std::max(depth, 1);
  // As objects of Python.
  check_beam(width, depth, levels, static_cast<double>(d.h.size()), 8.0 * length + 12.0 * levels);
  std::vector<DecodingEntry> current, next, scratch;
  std::vector<int> result;
  const auto [done, count] = unlocked([&] {
    return create_queues(d.h, d.s, length, depth, width, d.idx, current, next, scratch, result);
  });
  current.resize(static_cast<std::size_t>(count));
  return {done, std::move(current), std::move(result)};
}

Queues next_queues(const ArrayLike& h, const ArrayLike& s, int length, int depth, int width,
                   std::vector<int> idx, std::vector<DecodingEntry> current) {
  Decoding d = decoding(h, s, length, depth, width, std::move(idx));
  for (const auto& [weight, residual, path] : current) {
    check_same(residual.size(), static_cast<std::size_t>(length), "current: residual", "bits");
    check_same(path.size(), std::get<2>(current.front()).size(), "current: path", "entries");
  }
  std::vector<DecodingEntry> next, scratch;
  std::vector<int> result;
  const auto [done, count] = unlocked([&] {
    return update_queues(d.h, d.s, length, depth, width, d.idx, current, next, scratch, result,
                         static_cast<int>(current.size()));
  });
  current.resize(static_cast<std::size_t>(count));
  return {done, std::move(current), std::move(result)};
}

void bind_syndromes(nb::module_& m) {
  m.def("SyndromeDecodingSolver_heuristic", solved<SyndromeDecodingSolver_heuristic>, "H"_a, "s"_a,
        "length"_a, "depth"_a, "width"_a, "idx"_a,
        "Rows of H whose XOR is s at the places idx; RuntimeError where the search has no end.");
  m.def("SyndromeDecodingSolver_heuristic_bis", solved<SyndromeDecodingSolver_heuristic_bis>, "H"_a,
        "s"_a, "length"_a, "depth"_a, "width"_a, "idx"_a,
        "The same with the search started afresh after each commitment.");
  m.def("create_queues", first_queues, "H"_a, "s"_a, "length"_a, "depth"_a, "width"_a, "idx"_a,
        "(solved, states, result): the states depth steps from s.");
  m.def("update_queues", next_queues, "H"_a, "s"_a, "length"_a, "depth"_a, "width"_a, "idx"_a,
        "current"_a, "(solved, states, result): the states one step from those given.");
  m.def("Compare", &Compare, "a"_a, "b"_a, "True if the first field of a has fewer ones.");
  m.def(
      "SyndromeSynthesis",
      [](int n, const ArrayLike& A, int width, int depth) {
        const BoolMatrix matrix = to_bool_matrix(A, n, n, "A");
        check_beam(width, depth, std::max(depth, 1), width,
                   n / 8.0 + 4.0 * std::max(depth, 1) + 16);
        std::vector<int> perm(matrix.size(), -1);
        CnotCircuit circuit =
            unlocked([&] { return SyndromeSynthesis(n, matrix, perm, width, depth); });
        return std::tuple(std::move(circuit), std::move(perm));
      },
      "n"_a, "A"_a, "width"_a, "depth"_a,
      "(circuit, perm): A times the circuit's matrix has its ones at (r, perm[r]).");
}

}  // namespace

void bind_linear(nb::module_& m) {
  bind_eliminations(m);
  bind_pairs(m);
  bind_blocks(m);
  bind_syndromes(m);
}

}  // namespace zelt::braidwerk::python
