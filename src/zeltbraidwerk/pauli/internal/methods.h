#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"

namespace zelt::braidwerk::internal {

/// The angle that stands for a row on its way through a synthesis, which may turn its sign.
structures::Parameter row_label(int row);

struct LabelledRow {
  int row = -1;  ///< -1: the angle is no label
  bool negative = false;
};
LabelledRow labelled_row(const structures::Gate& gate);

/// Rotations of a table, labelled by their rows.
struct LabelledTable {
  PauliFrame frame;
  std::vector<structures::Parameter> labels;

  explicit LabelledTable(PauliFrame rows);
};

/// A circuit whose rotations have labels for angles.
struct PauliNetwork {
  std::vector<structures::Gate> gates;
  std::vector<int> wires;  ///< where each qubit stands at the end
  bool in_order = true;
};

struct PauliMethod {
  std::string_view name;
  std::vector<structures::Gate> (*make)(Rotations rotations, structures::Graph* device,
                                        const Draw& draw);
  bool closes = false;  ///< leaves no Clifford gates, and takes the rows in their order
};

/// In the order in which their names are listed.
std::span<const PauliMethod> pauli_method_table();
const PauliMethod* pauli_method(std::string_view name);

/// The runs of a method. Run 0 takes the rotations in the order of their strings; later ones rename
/// the qubits, or on a device shuffle the rotations.
struct PauliRuns {
  const PauliMethod& method;
  const LabelledTable& table;
  bool in_order;
  synthesis::Objective objective;
  synthesis::Outputs outputs;
  const structures::Graph* device;  ///< with its shortest paths; null: any two qubits may meet
  const BitGraph* edges;            ///< of the device
  std::uint64_t seed;
  const CliffordTarget* target = nullptr;  ///< to follow the rotations, in the place of none

  PauliNetwork make(int run) const;

 private:
  int qubits() const { return table.frame.qubits(); }
  Rotations renamed(const std::vector<int>& names) const;
  Rotations arranged(Rotations rotations, int run, const Draw& draw) const;
  void close(PauliNetwork& network, int run, const std::vector<int>& names) const;
};

}  // namespace zelt::braidwerk::internal
