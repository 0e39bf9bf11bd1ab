#include "zeltbraidwerk/pauli/search/internal/ladders.h"

#include <algorithm>

namespace zelt::braidwerk::internal {
namespace {

int another(int label) {
  return label % 3 + 1;
}

/// One string on its way to a single letter.
class Gatherer {
 public:
  Gatherer(const RotationList& list, const BitGraph* graph)
      : qubits_(list.qubits()),
        pairs_(GateCosts(list.qubits(), graph).pairs()),
        reach_(graph == nullptr ? Reach() : Reach(*graph)),
        on_graph_(graph != nullptr),
        wires_(static_cast<std::size_t>(list.words())) {}

  void run(const Word* string, std::vector<Gate>& gates) {
    LetterRows row(qubits_, 1);
    row.append(string);
    while (row.weight(0) > 1) {
      gates.push_back(on_graph_ ? nearer(row) : first(row));
      row.play(gates.back());
    }
  }

 private:
  /// Takes the first letter off.
  Gate first(const LetterRows& row) const {
    int a = 0;
    while (row.label(0, a) == 0) ++a;
    int b = a + 1;
    while (row.label(0, b) == 0) ++b;
    return {end_of(a, row.label(0, a)), end_of(b, another(row.label(0, b)))};
  }

  Gate nearer(const LetterRows& row) {
    const int now = reach_with(row, -1);
    for (const auto [a, b] : pairs_) {
      const int on_a = row.label(0, a);
      const int on_b = row.label(0, b);
      if (on_b != 0 && reach_with(row, a) < now) {
        return {end_of(a, on_a == 0 ? label_x : on_a), end_of(b, another(on_b))};
      }
      if (on_a != 0 && reach_with(row, b) < now) {
        return {end_of(a, another(on_a)), end_of(b, on_b == 0 ? label_x : on_b)};
      }
    }
    return {};
  }

  int reach_with(const LetterRows& row, int q) {
    row.wires(0, wires_.data());
    if (q >= 0) wires_[static_cast<std::size_t>(q / word_bits)] ^= Word{1} << (q % word_bits);
    return reach_(wires_.data());
  }

  int qubits_;
  std::vector<GateCosts::Pair> pairs_;
  Reach reach_;
  bool on_graph_;
  std::vector<Word> wires_;
};

bool commute(const Gate& one, const Gate& other) {
  const auto agree = [](End a, End b) { return wire_of(a) != wire_of(b) || a == b; };
  return agree(one.a, other.a) && agree(one.a, other.b) && agree(one.b, other.a) &&
         agree(one.b, other.b);
}

bool are_equal(const Gate& one, const Gate& other) {
  return one == other || one == Gate{other.b, other.a};
}

}  // namespace

std::vector<Gate> ladders(const RotationList& list, const BitGraph* graph) {
  Gatherer gatherer(list, graph);
  std::vector<Gate> gates;
  for (int row = 0; row < list.count(); ++row) {
    const std::size_t before = gates.size();
    gatherer.run(list.string(row), gates);
    for (std::size_t k = gates.size(); k > before; --k) gates.push_back(gates[k - 1]);
  }
  return gates;
}

void cancel_pairs(std::vector<NetworkEvent>& events) {
  std::vector<NetworkEvent> kept;
  for (const NetworkEvent& event : events) {
    bool cancels = false;
    for (std::size_t k = kept.size(); k > 0 && event.row < 0 && !cancels; --k) {
      const NetworkEvent& earlier = kept[k - 1];
      if (earlier.row < 0 && are_equal(earlier.gate, event.gate)) {
        kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(k - 1));
        cancels = true;
      } else if (!commute(earlier.gate, event.gate)) {
        break;
      }
    }
    if (!cancels) kept.push_back(event);
  }
  events = std::move(kept);
}

}  // namespace zelt::braidwerk::internal
