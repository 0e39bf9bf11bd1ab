#include "zeltbraidwerk/clifford/clifford_circuit.h"

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/foundations/weyl.h"

namespace zi = zelt::braidwerk::internal;
using structures::OperatorTableau;
using structures::WeylOperator;

namespace {

zi::PauliFrame images_of(const OperatorTableau& tableau) {
  const int n = tableau.nbqbits;
  zi::PauliFrame images(n, 2 * n);
  for (int r = 0; r < 2 * n; ++r) {
    WeylOperator image = r < n ? WeylOperator::pauli_x(r, n) : WeylOperator::pauli_z(r - n, n);
    image.conjugate_with(tableau);
    const auto [negative, letters] = image.to_pauli();
    images.set_negative(r, negative);
    for (int q = 0; q < n; ++q) {
      const char letter = letters[static_cast<std::size_t>(q)];
      images.set_letter(r, q, letter == 'I' ? 0 : static_cast<unsigned char>(letter - 'X' + 1));
    }
  }
  return images;
}

}  // namespace

std::vector<structures::Gate> synthesis::clifford_circuit(const OperatorTableau& tableau) {
  zi::Elimination undone = zi::eliminate_clifford(images_of(tableau), true);
  undone.close();
  return zi::inverted(undone.gates);
}
