#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <iostream>
#include <streambuf>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/linear/greedy_escape.h"
#include "zeltbraidwerk/linear/greedy_inverse.h"
#include "zeltbraidwerk/linear/greedy_log.h"
#include "zeltbraidwerk/linear/greedy_ones.h"
#include "zeltbraidwerk/linear/pathfinding.h"

namespace zelt::braidwerk::python {

using namespace synthesis;
using nb::literals::operator""_a;
using structures::CnotCircuit;

namespace {

/// Keeps what the library writes to standard output from the terminal, while it lives.
class Muted {
 public:
  explicit Muted(bool mute) : kept_(mute ? std::cout.rdbuf(&nowhere_) : nullptr) {}
  ~Muted() {
    if (kept_ != nullptr) std::cout.rdbuf(kept_);
  }
  Muted(const Muted&) = delete;
  Muted& operator=(const Muted&) = delete;

 private:
  struct Nowhere : std::streambuf {
    int overflow(int c) override { return traits_type::not_eof(c); }
  };

  Nowhere nowhere_;
  std::streambuf* kept_;
};

/// A matrix of a search: small enough for it.
BoolMatrix search_matrix(const ArrayLike& value, int n, const char* name) {
  check_at_most(n, 16383, "n");
  return to_bool_matrix(value, n, n, name);
}

/// The states of a beam on n lines. The last level has scores alone, the one before it positions:
/// matrices and tables of savings. A score takes more bytes as an object of Python.
void check_search(int n, int width, int depth, double score_bytes = 16) {
  check_size(n, "n");
  const double choices = 2.0 * n * n;
  const int level = std::max(depth, 2);
  check_beam(width, depth, level - 1, choices, score_bytes);
  check_beam(width, depth, level - 2, choices, 48.0 * n * n);
}

/// A table of savings. A line of 16383 saves less than 2^15.
template <class T>
TableOf<T> to_savings(const ArrayLike& value, int n, const char* name) {
  return to_table<T>(value, n, name, 32767);
}

template <class T>
TableOf<T> square_table(int n) {
  const auto size = static_cast<std::size_t>(n);
  return TableOf<T>(size, std::vector<T>(size));
}

template <class T>
auto both(const TableOf<T>& R, const TableOf<T>& C) {
  return std::tuple(to_numpy(R), to_numpy(C));
}

template <class T, auto create>
auto created(int n, const ArrayLike& A) {
  BoolMatrix a = search_matrix(A, n, "A");
  TableOf<T> R = square_table<T>(n);
  TableOf<T> C = square_table<T>(n);
  unlocked([&] { create(n, a, R, C); });
  return both(R, C);
}

template <class T, auto update>
auto updated(int n, int i, int j, bool row, const ArrayLike& A, const ArrayLike& R,
             const ArrayLike& C) {
  check_two_qubits(i, j, n);
  BoolMatrix a = search_matrix(A, n, "A");
  TableOf<T> rows = to_savings<T>(R, n, "R");
  TableOf<T> columns = to_savings<T>(C, n, "C");
  update(n, i, j, row, a, rows, columns);
  return both(rows, columns);
}

template <class T, class Scored, auto compute>
std::vector<Scored> available(int n, int width, int depth, const ArrayLike& A, const ArrayLike& R,
                              const ArrayLike& C) {
  check_search(n, width, depth, 200);
  const BoolMatrix a = search_matrix(A, n, "A");
  const TableOf<T> rows = to_savings<T>(R, n, "R");
  const TableOf<T> columns = to_savings<T>(C, n, "C");
  return unlocked([&] {
    std::vector<Scored> out;
    out.resize(static_cast<std::size_t>(compute(n, width, depth, a, rows, columns, out)));
    return out;
  });
}

template <class T, auto compute>
Operation next(int n, int width, int depth, const ArrayLike& A, const ArrayLike& R,
               const ArrayLike& C) {
  check_search(n, width, depth);
  const BoolMatrix a = search_matrix(A, n, "A");
  const TableOf<T> rows = to_savings<T>(R, n, "R");
  const TableOf<T> columns = to_savings<T>(C, n, "C");
  return unlocked_alone([&] { return compute(n, width, depth, a, rows, columns); });
}

using Circuit = std::tuple<CnotCircuit, std::vector<int>>;

template <class Run>
Circuit searched(int n, const ArrayLike& A, int width, int depth, bool mute, Run run) {
  check_search(n, width, depth);
  BoolMatrix a = search_matrix(A, n, "A");
  std::vector<int> perm(a.size(), -1);
  CnotCircuit circuit = unlocked_alone([&] {
    const Muted muted(mute);
    return run(std::move(a), perm);
  });
  return {std::move(circuit), std::move(perm)};
}

template <auto synthesise>
Circuit whole(int n, const ArrayLike& A, int width, int depth) {
  return searched(n, A, width, depth, false, [&](BoolMatrix a, std::vector<int>& perm) {
    return synthesise(n, std::move(a), perm, width, depth);
  });
}

constexpr auto whole_text = "(circuit, perm): row perm[r] of the circuit's matrix is row r of A.";
constexpr auto create_text = "(R, C): the savings of all row and of all column operations.";
constexpr auto update_text = "(R, C) from before the operation to after it; A is after it.";
constexpr auto available_text = "The candidates for the next operation, as (cost, (i, j, row)).";
constexpr auto next_text = "One of the best candidates, drawn from the shared generator.";

void bind_ones(nb::module_& m) {
  m.def("create_cost_matrix_ones", created<int, create_cost_matrix_ones>, "n"_a, "A"_a,
        create_text);
  m.def("update_cost_matrix_ones", updated<int, update_cost_matrix_ones>, "n"_a, "i"_a, "j"_a,
        "row"_a, "A"_a, "R"_a, "C"_a, update_text);
  m.def("compute_available_operation_ones",
        available<int, ScoredOperation, compute_available_operation_ones>, "n"_a, "width"_a,
        "depth"_a, "A"_a, "R"_a, "C"_a, available_text);
  m.def("compute_next_operation_ones", next<int, compute_next_operation_ones>, "n"_a, "width"_a,
        "depth"_a, "A"_a, "R"_a, "C"_a, next_text);
  m.def("greedy_synthesis_ones", whole<greedy_synthesis_ones>, "n"_a, "A"_a, "width"_a, "depth"_a,
        whole_text);
  m.def(
      "conversion",
      [](const CnotCircuit& row_circuit, const CnotCircuit& column_circuit,
         const std::vector<int>& perm) {
        check_permutation(perm, column_circuit.nbqbits, "perm");
        check_gates(row_circuit.gates, column_circuit.nbqbits);
        return conversion(row_circuit, column_circuit, perm);
      },
      "row_circuit"_a, "column_circuit"_a, "perm"_a,
      "The column circuit, then the row circuit backward on wires relabelled by perm.");
}

void bind_log(nb::module_& m) {
  m.def("create_cost_matrix_log", created<double, create_cost_matrix_log>, "n"_a, "A"_a,
        create_text);
  m.def("update_cost_matrix_log", updated<double, update_cost_matrix_log>, "n"_a, "i"_a, "j"_a,
        "row"_a, "A"_a, "R"_a, "C"_a, update_text);
  m.def("compute_available_operation_log",
        available<double, LogScoredOperation, compute_available_operation_log>, "n"_a, "width"_a,
        "depth"_a, "A"_a, "R"_a, "C"_a, available_text);
  m.def("compute_next_operation_log", next<double, compute_next_operation_log>, "n"_a, "width"_a,
        "depth"_a, "A"_a, "R"_a, "C"_a, next_text);
  m.def("greedy_synthesis_log", whole<greedy_synthesis_log>, "n"_a, "A"_a, "width"_a, "depth"_a,
        whole_text);
}

void bind_inverse(nb::module_& m) {
  struct State {
    State(int n, const ArrayLike& A_, const ArrayLike& B_, const ArrayLike& R_, const ArrayLike& C_,
          const ArrayLike& Ri_, const ArrayLike& Ci_)
        : A(search_matrix(A_, n, "A")),
          B(search_matrix(B_, n, "B")),
          R(to_savings<int>(R_, n, "R")),
          C(to_savings<int>(C_, n, "C")),
          Ri(to_savings<int>(Ri_, n, "Ri")),
          Ci(to_savings<int>(Ci_, n, "Ci")) {}
    BoolMatrix A, B;
    TableOf<int> R, C, Ri, Ci;
  };
  m.def(
      "compute_available_operation_ones_with_inv",
      [](int n, int width, int depth, const ArrayLike& A, const ArrayLike& B, const ArrayLike& R,
         const ArrayLike& C, const ArrayLike& Ri, const ArrayLike& Ci) {
        check_search(n, width, depth, 200);
        const State s(n, A, B, R, C, Ri, Ci);
        return unlocked([&] {
          std::vector<ScoredOperation> out;
          out.resize(static_cast<std::size_t>(compute_available_operation_ones_with_inv(
              n, width, depth, s.A, s.B, s.R, s.C, s.Ri, s.Ci, out)));
          return out;
        });
      },
      "n"_a, "width"_a, "depth"_a, "A"_a, "B"_a, "R"_a, "C"_a, "Ri"_a, "Ci"_a, available_text);
  m.def(
      "compute_next_operation_ones_with_inv",
      [](int n, int width, int depth, const ArrayLike& A, const ArrayLike& B, const ArrayLike& R,
         const ArrayLike& C, const ArrayLike& Ri, const ArrayLike& Ci) {
        check_search(n, width, depth);
        const State s(n, A, B, R, C, Ri, Ci);
        return unlocked_alone([&] {
          return compute_next_operation_ones_with_inv(n, width, depth, s.A, s.B, s.R, s.C, s.Ri,
                                                      s.Ci);
        });
      },
      "n"_a, "width"_a, "depth"_a, "A"_a, "B"_a, "R"_a, "C"_a, "Ri"_a, "Ci"_a, next_text);
  m.def("greedy_synthesis_ones_with_inv", whole<greedy_synthesis_ones_with_inv>, "n"_a, "A"_a,
        "width"_a, "depth"_a, whole_text);
}

}  // namespace

void bind_greedy(nb::module_& m) {
  bind_ones(m);
  bind_inverse(m);
  bind_log(m);
  m.def("compute_next_operation_ones_with_escape",
        next<int, compute_next_operation_ones_with_escape>, "n"_a, "width"_a, "depth"_a, "A"_a,
        "R"_a, "C"_a, "The same, or (-1, -1, False) when no candidate lowers the ones of A.");
  m.def(
      "greedy_synthesis_ones_with_escape",
      [](int n, const ArrayLike& A, int width, int depth, int level, bool text) {
        return searched(n, A, width, depth, !text, [&](BoolMatrix a, std::vector<int>& perm) {
          return greedy_synthesis_ones_with_escape(n, std::move(a), perm, width, depth, level);
        });
      },
      "n"_a, "A"_a, "width"_a, "depth"_a, "level"_a, nb::kw_only(), "text"_a = false,
      "(circuit, perm), as the other searches. With text, each escape writes a line to standard "
      "output.");
  m.def(
      "pathfinding_synthesis",
      [](int n, const ArrayLike& A, std::string cost, bool with_inverse, int width, int depth,
         int restarts, bool escape, bool text) {
        return searched(n, A, width, depth, !text,
                        [&](const BoolMatrix& a, std::vector<int>& perm) {
                          return pathfinding_synthesis(n, a, perm, cost.data(), with_inverse, width,
                                                       depth, restarts, escape);
                        });
      },
      "n"_a, "A"_a, "cost"_a, "with_inverse"_a, "width"_a, "depth"_a, "restarts"_a, "escape"_a,
      nb::kw_only(), "text"_a = false,
      "(circuit, perm): the shortest of several runs of the search that cost, \"ones\" or "
      "\"log\", and the two flags select. With text, each escape writes a line to standard "
      "output.");
}

}  // namespace zelt::braidwerk::python
