#include "zeltbraidwerk/foundations/cnot_circuit.h"

#include <algorithm>
#include <array>
#include <iostream>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace structures {
namespace {

using namespace zelt::braidwerk::internal;

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

/// Time at which each qubit is free, grown as qubits turn up.
class Clock {
 public:
  /// Places one layer on the qubits, as soon as all of them are free.
  template <typename Qubits>
  void place(const Qubits& qubits) {
    int start = 0;
    for (const int q : qubits) {
      if (at(q) >= free_.size()) free_.resize(at(q) + 1);
      start = std::max(start, free_[at(q)]);
    }
    for (const int q : qubits) free_[at(q)] = start + 1;
    depth_ = std::max(depth_, start + 1);
  }
  int depth() const { return depth_; }

 private:
  std::vector<int> free_;
  int depth_ = 0;
};

/// Row p holds the first p wires of `idx`.
BitMatrix prefixes(const std::vector<int>& idx, int n) {
  BitMatrix masks(static_cast<int>(idx.size()) + 1, n);
  for (int p = 1; p < masks.rows(); ++p) {
    masks.add_row(p - 1, p);
    masks.set(p, idx[at(p - 1)]);
  }
  return masks;
}

}  // namespace

CnotCircuit::CnotCircuit(int n) : nbqbits(n) {}

CnotCircuit::CnotCircuit(int n, const std::vector<std::tuple<int, int>>& list)
    : nbqbits(n), gates(list) {}

int CnotCircuit::get_number_of_qubits() const {
  return nbqbits;
}

std::vector<std::tuple<int, int>> CnotCircuit::getGates() const {
  return gates;
}

void CnotCircuit::addGate(int control, int target) {
  gates.emplace_back(control, target);
}

void CnotCircuit::insertGate(int control, int target, int position) {
  gates.emplace(gates.begin() + position, control, target);
}

void CnotCircuit::reverse() {
  std::reverse(gates.begin(), gates.end());
}

BoolMatrix CnotCircuit::Simulate() const {
  BitMatrix m = BitMatrix::identity(nbqbits);
  for (const auto& [control, target] : gates) m.add_row(control, target);
  return m.unpack();
}

std::vector<Gate> CnotCircuit::to_circuit() const {
  std::vector<Gate> circuit;
  circuit.reserve(gates.size());
  for (const auto& [control, target] : gates) circuit.push_back(Gate::CNOT(control, target));
  return circuit;
}

void CnotCircuit::get_parities(BoolMatrix& H, int n, std::vector<int>& positions,
                               std::vector<int>& wires, int w, std::vector<int>& idx) {
  const BitMatrix masks = prefixes(idx, n);
  std::vector<int> rank(at(std::max(n, 0)), 0);
  for (int p = 1; p < masks.rows(); ++p) rank[at(idx[at(p - 1)])] = p;

  // Wire w starts as one of idx and only wires of idx are ever added to it.
  BitMatrix state = BitMatrix::identity(n);
  const auto record = [&](int position) {
    H.emplace_back(at(std::max(n, 0)));
    unpack_row(state.row(w), 0, n, H.back());
    positions.push_back(position);
    wires.push_back(w);
  };
  record(0);
  for (int i = 0; i < static_cast<int>(gates.size()); ++i) {
    const auto [control, target] = gates[at(i)];
    const auto* mask = masks.row(rank[at(control)]);
    for (int k = 0; k < state.stride(); ++k) {
      state.row(target)[k] ^= state.row(control)[k] & mask[k];
    }
    if (target == w) record(i + 1);
  }
}

int CnotCircuit::depth() const {
  Clock clock;
  for (const auto& [control, target] : gates) clock.place(std::array{control, target});
  return clock.depth();
}

std::ostream& operator<<(std::ostream& out, const CnotCircuit& circuit) {
  out << "CnotCircuit sur " << circuit.nbqbits << " qubits constitué des portes : \n";
  for (const auto& [control, target] : circuit.gates) {
    out << "CNOT " << control << ' ' << target << '\n';
  }
  return out;
}

int cnot_depth(const std::vector<Gate>& gates) {
  std::cout << gates;
  int size = 0;
  Clock clock;
  for (const Gate& gate : gates) {
    for (const int q : gate.qbits) size = std::max(size, q + 1);
    if (gate.name == "CNOT" && !gate.qbits.empty()) clock.place(gate.qbits);
  }
  std::cout << "Nbqbits: " << size << std::endl;
  return clock.depth();
}

std::ostream& operator<<(std::ostream& out, const BoolRow& row) {
  for (const bool bit : row) out << (bit ? '1' : '0');
  return out;
}

std::ostream& operator<<(std::ostream& out, const std::map<BoolRow, int>& parities) {
  for (const auto& [parity, value] : parities) {
    out << '[' << parity << "] : " << value << std::endl;
  }
  return out;
}

std::ostream& operator<<(std::ostream& out,
                         const std::tuple<std::map<BoolRow, int>, BoolMatrix>& network) {
  const auto& [parities, matrix] = network;
  const auto n = static_cast<std::ptrdiff_t>(matrix.size());
  out << "Parity network on " << n << " qubits with the following parities/phases : " << std::endl;
  for (const auto& [parity, phase] : parities) {
    out << BoolRow(parity.begin(), parity.begin() + n) << " with phase " << phase << std::endl;
  }
  out << " and final linear reversible operator " << std::endl;
  for (const BoolRow& row : matrix) {
    for (auto bit = row.begin(); bit != row.begin() + n; ++bit) out << (*bit ? "1 " : "0 ");
    out << std::endl;
  }
  return out << std::endl;
}

}  // namespace structures

std::ostream& operator<<(std::ostream& out, const std::vector<int>& values) {
  for (const int value : values) out << value << ' ';
  return out;
}
