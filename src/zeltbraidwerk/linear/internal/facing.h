#pragma once

#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// A circuit of one of these is a circuit of all: backward it implements the inverse, with controls
/// and targets exchanged the inverse of the transpose. A search can find a shorter one on another
/// facing than on the matrix itself.
enum class Facing { plain, inverse, transpose, inverse_transpose };

BitMatrix face(const BitMatrix& m, Facing facing);

/// Other names for the outputs and inputs of a map: output r takes the place of output rows[r],
/// input c that of input cols[c]. Every method breaks its ties by place, so other names give other
/// circuits.
struct Renaming {
  std::vector<int> rows;
  std::vector<int> cols;

  /// Entry (r, c) of the result is entry (rows[r], cols[c]) of m.
  BitMatrix operator()(const BitMatrix& m) const;
};

/// A circuit that implements a map with its outputs on other wires: row perm[r] of its matrix is
/// row r of the map.
struct FreeCircuit {
  structures::CnotCircuit circuit;
  std::vector<int> perm;

  explicit FreeCircuit(int n);  ///< no gates, every output in its place
  FreeCircuit(structures::CnotCircuit gates, std::vector<int> wires)
      : circuit(std::move(gates)), perm(std::move(wires)) {}

  /// From a circuit that has the inputs on other wires instead: column r of the map is column
  /// perm[r] of its matrix.
  void outputs_from_inputs();

  /// From a circuit of face(m, facing) to one of m.
  void face_back(Facing facing);

  /// From a circuit of renaming(m) to one of m.
  void rename_back(const Renaming& renaming);

 private:
  void move_gates(const std::vector<int>& to);
};

}  // namespace zelt::braidwerk::internal
