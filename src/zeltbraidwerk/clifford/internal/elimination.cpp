#include "zeltbraidwerk/clifford/internal/elimination.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <numeric>
#include <ranges>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/turns.h"
#include "zeltbraidwerk/foundations/weyl.h"

namespace zelt::braidwerk::internal {
namespace {

using Kind = CliffordGate::Kind;

/// The wires on which one qubit's two images have letters, by what the letters are.
struct Split {
  std::vector<int> anticommuting, equal, only_x, only_z;
};

/// How many wires of each kind: those where only one image has a letter count together.
struct Kinds {
  int anticommuting = 0;
  int equal = 0;
  int one = 0;

  int cnots() const { return 3 * (anticommuting / 2) + equal + (equal > 0 ? 1 : 0) + one; }
};

/// The kinds of all qubits at once, 64 in a word.
class KindCounts {
 public:
  KindCounts(const PauliFrame& images, const std::vector<int>& wires)
      : digits_(static_cast<int>(std::bit_width(wires.size()))),
        words_(words_for(images.qubits())),
        numbers_{
            {{digits_, images.qubits()}, {digits_, images.qubits()}, {digits_, images.qubits()}}},
        own_(1, images.qubits()) {
    for (const int wire : wires) add(images, wire);
  }

  Kinds of(int q) const { return {number(0, q), number(1, q), number(2, q)}; }
  /// Whether its images anticommute on its own wire.
  bool stays(int q) const { return own_.get(0, q); }

 private:
  void add(const PauliFrame& images, int wire) {
    const int n = images.qubits();
    for (int w = 0; w < words_; ++w) {
      const Word x_of_x = images.x(wire)[w];
      const Word z_of_x = images.z(wire)[w];
      const int left = std::min(n - w * word_bits, word_bits);
      const auto of_z = static_cast<std::size_t>(n + w * word_bits);
      const Word x_of_z = read_bits(images.x(wire), of_z, left);
      const Word z_of_z = read_bits(images.z(wire), of_z, left);
      const Word anticommuting = (x_of_x & z_of_z) ^ (z_of_x & x_of_z);
      const Word some_x = x_of_x | z_of_x;
      const Word some_z = x_of_z | z_of_z;
      count(0, w, anticommuting);
      count(1, w, some_x & some_z & ~anticommuting);
      count(2, w, some_x ^ some_z);
      if (w == wire / word_bits) {
        own_.row(0)[w] |= anticommuting & (Word{1} << wire % word_bits);
      }
    }
  }
  void count(std::size_t kind, int w, Word places) {
    BitMatrix& digits = numbers_[kind];
    add_ones(digits.row(0) + w, static_cast<std::size_t>(digits.stride()), places);
  }
  int number(std::size_t kind, int q) const {
    int number = 0;
    for (int k = 0; k < digits_; ++k) number |= int{numbers_[kind].get(k, q)} << k;
    return number;
  }

  int digits_;
  int words_;
  std::array<BitMatrix, 3> numbers_;
  BitMatrix own_;
};

class Eliminator {
 public:
  Eliminator(PauliFrame images, bool in_place, bool in_order)
      : frame_(std::move(images)),
        in_place_(in_place),
        in_order_(in_order),
        left_(all()),
        free_(all()) {
    found_.wires.resize(left_.size());
  }

  /// Nothing where it takes more gates.
  std::optional<Elimination> run(std::size_t most) {
    while (!left_.empty()) {
      stop_point();
      if (found_.gates.size() > most) return std::nullopt;
      const int q = in_order_ ? left_.front() : cheapest();
      if (in_order_) first_ = q;
      const int wire = gather(q, split(q));
      found_.wires[static_cast<std::size_t>(q)] = wire;
      std::erase(left_, q);
      std::erase(free_, wire);
    }
    return std::move(found_);
  }

 private:
  std::vector<int> all() const {
    std::vector<int> qubits(static_cast<std::size_t>(frame_.qubits()));
    std::iota(qubits.begin(), qubits.end(), 0);
    return qubits;
  }
  unsigned char x_letter(int q, int wire) const { return frame_.letter(q, wire); }
  unsigned char z_letter(int q, int wire) const { return frame_.letter(frame_.qubits() + q, wire); }

  Split split(int q) const {
    Split result;
    for (const int wire : free_) {
      const unsigned char a = x_letter(q, wire);
      const unsigned char b = z_letter(q, wire);
      if (a == 0 && b == 0) continue;
      auto& where = a == 0   ? result.only_z
                    : b == 0 ? result.only_x
                    : a == b ? result.equal
                             : result.anticommuting;
      where.push_back(wire);
    }
    return result;
  }

  int cheapest() const {
    constexpr int swap = 3;
    int best = left_[0];
    int least = std::numeric_limits<int>::max();
    const KindCounts counts(frame_, free_);
    for (const int q : left_) {
      const int cost = counts.of(q).cnots() + (in_place_ && !counts.stays(q) ? swap : 0);
      if (cost < least) best = q;
      least = std::min(cost, least);
    }
    return best;
  }

  void apply(const CliffordGate& gate) {
    const int n = frame_.qubits();
    frame_.apply(gate, first_ / word_bits, words_for(n));
    frame_.apply(gate, std::max((n + first_) / word_bits, words_for(n)), frame_.words());
    found_.gates.push_back(gate);
  }
  void h(int wire) { apply({Kind::h, wire}); }
  void cnot(int control, int target) { apply(CliffordGate::cnot(control, target)); }

  void to_x(int wire, unsigned char letter) {
    if (letter == 2) apply({Kind::s, wire});
    if (letter == 3) h(wire);
  }
  void to_z(int wire, unsigned char letter) {
    if (letter == 1) h(wire);
    if (letter == 2) apply({Kind::rx_plus, wire});
  }

  /// Leaves the images of q with one letter, on the wire returned.
  int gather(int q, Split wires) {
    for (const int wire : wires.anticommuting) {
      to_x(wire, x_letter(q, wire));
      to_z(wire, z_letter(q, wire));  // leaves X as it is
    }
    for (const int wire : wires.equal) to_x(wire, x_letter(q, wire));
    for (const int wire : wires.only_x) to_x(wire, x_letter(q, wire));
    for (const int wire : wires.only_z) to_z(wire, z_letter(q, wire));
    if (wires.anticommuting.empty()) return free_[0];

    const auto own = std::ranges::find(wires.anticommuting, q);
    const auto kept = own == wires.anticommuting.end() ? wires.anticommuting.begin() : own;
    const int wire = *kept;
    wires.anticommuting.erase(kept);
    // X X and Z Z on two wires become X on the one and Z on the other.
    for (std::size_t k = 0; k + 1 < wires.anticommuting.size(); k += 2) {
      const int a = wires.anticommuting[k];
      const int b = wires.anticommuting[k + 1];
      cnot(a, b);
      wires.only_x.push_back(a);
      wires.only_z.push_back(b);
    }
    for (std::size_t k = 1; k < wires.equal.size(); ++k) cnot(wires.equal[0], wires.equal[k]);
    if (!wires.equal.empty()) {
      cnot(wire, wires.equal[0]);
      h(wires.equal[0]);
      wires.only_z.push_back(wires.equal[0]);
    }
    for (const int other : wires.only_x) cnot(wire, other);
    for (const int other : wires.only_z) cnot(other, wire);
    if (frame_.is_negative(q)) apply({Kind::z, wire});
    if (frame_.is_negative(frame_.qubits() + q)) apply({Kind::x, wire});
    return wire;
  }

  PauliFrame frame_;
  bool in_place_;
  bool in_order_;
  std::vector<int> left_;  ///< qubits whose images are not gathered
  std::vector<int> free_;  ///< wires without a qubit
  int first_ = 0;          ///< rows of qubits before it have no letters on these wires
  Elimination found_;
};

}  // namespace

PauliFrame images_under(const structures::OperatorTableau& tableau) {
  const int n = tableau.nbqbits;
  PauliFrame images(n, 2 * n);
  for (int r = 0; r < 2 * n; ++r) {
    structures::WeylOperator image = r < n ? structures::WeylOperator::pauli_x(r, n)
                                           : structures::WeylOperator::pauli_z(r - n, n);
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

PauliFrame identity_images(int qubits) {
  PauliFrame frame(qubits, 2 * qubits);
  for (int q = 0; q < qubits; ++q) {
    frame.set_letter(q, q, 1);
    frame.set_letter(qubits + q, q, 3);
  }
  return frame;
}

void Elimination::close() {
  for (int q = 0; q < static_cast<int>(wires.size()); ++q) {
    int& wire = wires[static_cast<std::size_t>(q)];
    if (wire == q) continue;
    for (const auto& [a, b] : {std::pair{q, wire}, {wire, q}, {q, wire}}) {
      gates.push_back(CliffordGate::cnot(a, b));
    }
    *std::ranges::find(wires, q) = wire;
    wire = q;
  }
}

Elimination eliminate_clifford(PauliFrame images, bool in_place) {
  return *Eliminator(std::move(images), in_place, false).run(no_limit);
}

std::optional<Elimination> eliminate_in_order(PauliFrame images, std::size_t most) {
  std::optional<Elimination> found = Eliminator(std::move(images), true, true).run(most);
  if (found) found->close();
  return found;
}

structures::Gate inverse_of(structures::Gate gate) {
  for (structures::Parameter& angle : gate.params) angle = angle.flip_sign();
  return gate;
}

std::vector<structures::Gate> inverted(const std::vector<structures::Gate>& gates) {
  std::vector<structures::Gate> inverse;
  inverse.reserve(gates.size());
  for (const structures::Gate& gate : std::views::reverse(gates)) {
    inverse.push_back(inverse_of(gate));
  }
  return inverse;
}

}  // namespace zelt::braidwerk::internal
