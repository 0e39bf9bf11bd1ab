// Gates between any qubits, brought to the edges of a device.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/graphs.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/internal/edge_paths.h"

namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;

PauliFrame images_after(const std::vector<Gate>& circuit, int n) {
  PauliFrame images(n, 2 * n);
  for (int q = 0; q < n; ++q) {
    images.set_letter(q, q, 1);
    images.set_letter(n + q, q, 3);
  }
  for (const Gate& gate : circuit) images.apply(gate);
  return images;
}

TEST(AlongEdges, GatesDoTheSameOnEdgesAlone) {
  support::Rng rng(1);
  for (int n = 2; n < 12; ++n) {
    const BitGraph device{n % 2 == 0 ? support::line(n) : support::random_device(n, 20, rng)};
    std::vector<Gate> circuit;
    for (int k = 0; k < 12; ++k) {
      const std::vector<int> qubits = support::shuffled(n, rng);
      circuit.push_back(Gate::H(qubits[0]));
      circuit.push_back(Gate(k % 3 == 0 ? "CSIGN" : "CNOT", {qubits[0], qubits[1]}));
    }
    const std::vector<Gate> near = along_edges(circuit, device);
    EXPECT_TRUE(std::ranges::all_of(near, [&](const Gate& gate) {
      return gate.qbits.size() == 1 || device.joined(gate.qbits[0], gate.qbits[1]);
    }));
    const PauliFrame wanted = images_after(circuit, n);
    const PauliFrame found = images_after(near, n);
    for (int r = 0; r < 2 * n; ++r) {
      EXPECT_EQ(found.letters(r), wanted.letters(r)) << n;
      EXPECT_EQ(found.is_negative(r), wanted.is_negative(r)) << n;
    }
  }
}

}  // namespace
