#pragma once

#include <limits>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// What comes next in a network: a gate, or a rotation about the label of one end.
struct NetworkEvent {
  Gate gate;     // of a rotation, both ends are the same
  int row = -1;  // of a rotation, in the frame that the list was made of
};

/// A way to serve all rotations.
struct Network {
  std::vector<NetworkEvent> events;
  std::vector<int> wires;  // where each qubit stands at the end
  int open = 0;            // gates before the last rotation
  CircuitSize size;
};

/// A Clifford operator that is to follow the rotations, in the place of none.
struct CliffordTarget {
  PauliFrame preimages;                 ///< what becomes X, then Z, on each qubit, signs included
  std::vector<structures::Gate> gates;  ///< a circuit of it
};

struct NetworkTask : Task {
  bool in_order = false;  ///< rotations that anticommute keep their order; otherwise any is right
  const CliffordTarget* target = nullptr;  ///< of a network that closes
  const Network* given = nullptr;          ///< one that is known: the answer is never larger
  int most_layers = std::numeric_limits<int>::max();  ///< of the answer; the given one keeps to it
};

/// The network of these events; where it is not closed, without the gates after the last rotation.
Network network_of(std::vector<NetworkEvent> events, std::vector<int> wires, bool closes);

/// A label other than this one.
constexpr int another(int label) {
  return label % 3 + 1;
}

/// Gates among the events, and the layers that they fill.
int gates_of(const std::vector<NetworkEvent>& events);
int depth_of(const std::vector<NetworkEvent>& events, int qubits);

}  // namespace zelt::braidwerk::internal
