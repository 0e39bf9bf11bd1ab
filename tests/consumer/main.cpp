// Synthesises a small matrix and follows the circuit by hand.
#include <zeltbraidwerk/zeltbraidwerk.h>

#include <cstdio>

int main() {
  const BoolMatrix wanted{{true, false, true}, {true, true, false}, {false, false, true}};
  const auto circuit = synthesis::synthesize_linear(wanted).circuit;

  BoolMatrix reached{{true, false, false}, {false, true, false}, {false, false, true}};
  for (const auto& [control, target] : circuit.gates) {
    for (unsigned column = 0; column < 3; ++column) {
      auto&& bit = reached[static_cast<unsigned>(target)][column];
      bit = bit != reached[static_cast<unsigned>(control)][column];
    }
  }
  std::printf("%zu CNOTs, %s\n", circuit.gates.size(), reached == wanted ? "right" : "wrong");
  return reached == wanted ? 0 : 1;
}
