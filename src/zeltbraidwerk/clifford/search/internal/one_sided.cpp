#include "zeltbraidwerk/clifford/search/internal/one_sided.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/clifford/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

LightRows WireLines::light_rows() const {
  constexpr int finished_letters = 3;
  return {3 * wires_, row_ratio(wires_), finished_letters};
}

int WireLines::label_at(const Word* line, int label, int place) const {
  const int plane = 2 * label - 2;
  return static_cast<int>(bit(line, plane, place)) * label_x |
         static_cast<int>(bit(line, plane + 1, place)) * label_z;
}

void WireLines::weigh(const Word* line, int sign, LightRows::Weights& weights) const {
  for (int label = 1; label < 4; ++label, line += 2 * words_) {
    for (int w = 0; w < words_; ++w) {
      for (Word rest = line[w] | line[words_ + w]; rest != 0; rest &= rest - 1) {
        auto& weight = weights[static_cast<std::size_t>(w * word_bits + std::countr_zero(rest))];
        weight = static_cast<std::uint16_t>(weight + sign);
      }
    }
  }
}

void WireLines::change(const Gate& gate, Word* a, Word* b) const {
  const auto row = [this](Word* line, int label) { return line + (label - 1) * 2 * words_; };
  const int of_a = label_of(gate.a);
  const int of_b = label_of(gate.b);
  for (int w = 0; w < 2 * words_; ++w) {
    const Word sum = row(a, of_a)[w] ^ row(b, of_b)[w];
    for (const int label : other_labels[of_a]) row(a, label)[w] ^= sum;
    for (const int label : other_labels[of_b]) row(b, label)[w] ^= sum;
  }
}

std::uint64_t WireLines::hash_of(const Word* line) const {
  std::uint64_t sum = 0;
  for (int label = 1; label < 4; ++label) {
    std::uint64_t of_row = 0;
    for (int w = 0; w < 2 * words_; ++w, ++line) {
      of_row = Rng::mixed(of_row + *line + 0x9e3779b97f4a7c15U);
    }
    sum += of_row;
  }
  return Rng::mixed(sum);
}

WireLines::Entries WireLines::entries_of(int wire, const Word* line, const LightRows& light) const {
  Entries entries;
  entries.wire = wire;
  for (std::size_t t = 0; t < light.chosen().size(); ++t) {
    const int place = light.chosen()[t];
    for (std::size_t label = 1; label < 3; ++label) {
      const int plane = 2 * static_cast<int>(label) - 2;
      entries.x[label] = static_cast<std::uint8_t>(entries.x[label] | bit(line, plane, place) << t);
      entries.z[label] =
          static_cast<std::uint8_t>(entries.z[label] | bit(line, plane + 1, place) << t);
    }
  }
  entries.x[3] = entries.x[1] ^ entries.x[2];
  entries.z[3] = entries.z[1] ^ entries.z[2];
  for (std::size_t label = 1; label < 4; ++label) {
    entries.price[label] = light.price(entries.x[label] | entries.z[label]);
    entries.price[0] += entries.price[label];
  }
  return entries;
}

/// A wire keeps one of its rows, and each of the others becomes the product of the third with the
/// other wire's.
std::array<double, 9> WireLines::changes_of(const Entries& k, const Entries& l,
                                            const LightRows& light) {
  std::array<double, 9> products;
  std::array<double, 3> of_k{}, of_l{};
  for (std::size_t a = 0; a < 3; ++a) {
    for (std::size_t b = 0; b < 3; ++b) {
      const double price = light.price(
          static_cast<std::size_t>((k.x[a + 1] ^ l.x[b + 1]) | (k.z[a + 1] ^ l.z[b + 1])));
      products[3 * a + b] = price;
      of_k[a] += price;
      of_l[b] += price;
    }
  }
  std::array<double, 9> changes;
  for (std::size_t a = 0; a < 3; ++a) {
    const double own = k.price[a + 1] - k.price[0] - l.price[0] + of_k[a];
    for (std::size_t b = 0; b < 3; ++b) {
      changes[3 * a + b] = own + l.price[b + 1] + of_l[b] - 2 * products[3 * a + b];
    }
  }
  return changes;
}

OneSidedReduction::State OneSidedReduction::start(const OperatorRows& rows, int side) const {
  const int wires = lines().size();
  if (wires == 0) return {};
  const Word* first = rows.row(side, 0, 1);
  return LineReduction::start({first, first + wires * lines().words()});
}

/// On side 1 the gates are the first of the circuit, in order. On side 0 they come after the
/// operator: the last comes first, carried to before what is left.
GateList OneSidedReduction::circuit(const State& left, const std::vector<Gate>& gates,
                                    int side) const {
  const int wires = lines().size();
  GateList list(wires, {});
  WireFrame before(wires);
  for (int wire = 0; wire < wires; ++wire) {
    const auto label_at = [&](int label, int place) {
      return lines().label_at(line(left, wire), label, place);
    };
    int place = 0;
    while (place + 1 < wires && label_at(label_x, place) == 0) ++place;
    for (int label = 0; label < 4; ++label) {
      const End here = end_of(wire, label);
      const End there = end_of(place, label == label_wire ? label_wire : label_at(label, place));
      before[here] = there;
      (side == 0 ? list.frame[there] : list.frame[here]) = side == 0 ? here : there;
    }
  }
  list.gates = gates;
  if (side == 0) {
    std::reverse(list.gates.begin(), list.gates.end());
    for (Gate& gate : list.gates) gate = {before[gate.a], before[gate.b]};
  }
  return list;
}

}  // namespace zelt::braidwerk::internal
