#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/search/objective.h"

/// \file
/// The methods of linear synthesis beside the search engine, all in one form: a run with a number
/// gives a circuit of the matrix.
namespace zelt::braidwerk::internal {

struct LinearMethodOptions {
  std::optional<int> section;  ///< columns that "pmh" clears together
  int width = 1;               ///< continuations that a beam keeps of each state
  int lookahead = 1;           ///< steps that a beam looks ahead
};

struct LinearMethod {
  std::string_view name;
  /// Writes a circuit of m into `found`, outputs on any wires. False: not finished.
  bool (*make)(const BitMatrix& m, FreeCircuit& found, const LinearMethodOptions& options,
               const Draw& draw, const Control& control);
  bool draws = false;  ///< itself, beside the names of wires of later runs
  bool quick = false;  ///< too short to be stopped
  bool takes_section = false;
  bool takes_beam = false;
  int most_qubits = 1 << 30;
  /// Bytes of the states of a beam; a double has room for any number.
  double (*memory)(int n, const LinearMethodOptions& options) = nullptr;
};

/// In the order in which their names are listed.
std::span<const LinearMethod> linear_method_table();
/// The method with this name; null where there is none.
const LinearMethod* linear_method(std::string_view name);

/// The first runs differ without a draw: by the facing of the matrix.
constexpr int plain_runs = 4;
/// Those of "sorting".
constexpr int plain_sorting_runs = 4 * plain_runs;

/// The runs of a method. Run 0 is the method as it stands; the next three turn the matrix to its
/// other facings; all later ones rename wires at random as well.
struct LinearRuns {
  const LinearMethod& method;
  const BitMatrix& m;
  LinearMethodOptions options;
  synthesis::Objective objective;
  bool in_place;  ///< outputs; otherwise on any wires
  std::uint64_t seed;

  /// Nothing when the run did not finish.
  std::optional<FreeCircuit> make(int run, const Control& control) const;
};

/// The runs of the methods on a device. Run 0 is the method as it stands; the next three turn the
/// matrix to its other facings; later ones take another Hamiltonian path, or rename the vertices
/// and blur the costs. Runs of "sorting" also go along the path from its other end, and begin at
/// its second place, before they take another one.
struct DeviceRuns {
  enum class Method { row_column, steiner, sorting };

  const BitMatrix& m;
  const BitGraph& device;
  Method method;
  std::vector<int> path;  ///< a Hamiltonian one; none for row_column
  bool in_place;
  std::uint64_t seed;

  std::optional<FreeCircuit> make(int run, const Control& control) const;

 private:
  std::optional<FreeCircuit> by_rows_and_columns(const BitMatrix& faced, const BitGraph& on,
                                                 Facing facing, int slack, const Draw& draw,
                                                 const Control& control) const;
  FreeCircuit along_path(int run, const Draw& draw) const;
  std::optional<FreeCircuit> by_sorting(int run, const Draw& draw, const Control& control) const;
};

}  // namespace zelt::braidwerk::internal
