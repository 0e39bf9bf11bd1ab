#include "zeltbraidwerk/pauli/search/internal/ladders.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/search/internal/network_block.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/wire_frame.h"

namespace zelt::braidwerk::internal {
namespace {

/// The strings of a group on their way to single letters.
class Gatherer {
 public:
  Gatherer(const RotationList& list, bool in_order, const BitGraph* graph, bool shallow)
      : list_(list),
        in_order_(in_order),
        pairs_(GateCosts(list.qubits(), graph).pairs()),
        reach_(graph == nullptr ? Reach() : Reach(*graph)),
        on_graph_(graph != nullptr),
        shallow_(shallow),
        wires_(static_cast<std::size_t>(list.words())) {}

  /// Each string alone, and undone before the next.
  std::vector<Gate> apart(const RotationGroup& group) {
    std::vector<Gate> gates;
    for (const int row : group) append(gathered({row}), gates);
    return gates;
  }

  /// The same, or all of them undone at the end, whichever takes fewer gates.
  std::vector<Gate> run(const RotationGroup& group) {
    std::vector<Gate> apart = this->apart(group);
    if (group.size() == 1) return apart;
    std::vector<Gate> together;
    append(gathered(group), together);
    return together.size() < apart.size() ? together : apart;
  }

  /// The gates with the rotations that they serve.
  std::vector<NetworkEvent> events(const RotationGroup& group, const std::vector<Gate>& gates) {
    LetterRows rows(list_.qubits(), static_cast<int>(group.size()));
    for (const int row : group) rows.append(list_.string(row));
    std::vector<int> left = group;
    std::vector<NetworkEvent> events;
    serve(rows, left, &events);
    for (const Gate& gate : gates) {
      events.push_back({gate, -1});
      rows.play(gate);
      serve(rows, left, &events);
    }
    return events;
  }

 private:
  static void append(const std::vector<Gate>& gates, std::vector<Gate>& sequence) {
    sequence.insert(sequence.end(), gates.begin(), gates.end());
    sequence.insert(sequence.end(), gates.rbegin(), gates.rend());
  }

  std::vector<Gate> gathered(const RotationGroup& group) {
    LetterRows rows(list_.qubits(), static_cast<int>(group.size()));
    for (const int row : group) rows.append(list_.string(row));
    std::vector<int> left = group;  // the first of them has nothing before it
    std::vector<Gate> gates;
    turn_ = 0;
    for (serve(rows, left); !left.empty(); serve(rows, left)) {
      stop_point();
      gates.push_back(on_graph_ ? nearer(rows) : next(rows));
      rows.play(gates.back());
    }
    return gates;
  }

  /// Takes out single letters before which nothing is left that clashes.
  void serve(LetterRows& rows, std::vector<int>& left,
             std::vector<NetworkEvent>* events = nullptr) const {
    std::vector<int> kept;
    int letters[3];
    rows.keep_if([&](int place) {
      const int row = left[static_cast<std::size_t>(place)];
      const bool waits = in_order_ && std::ranges::any_of(kept, [&](int other) {
                           return list_.clash(list_.string(other), list_.string(row));
                         });
      const bool stays = rows.weight(place) > 1 || waits;
      if (stays) kept.push_back(row);
      if (!stays && events != nullptr) {
        rows.letters(place, letters);
        const End end = end_of(letters[0] / 3, letters[0] % 3 + 1);
        events->push_back({{end, end}, row});
      }
      return stays;
    });
    left = std::move(kept);
  }

  /// Takes a letter off the first string: of those on its first two letters, or where more strings
  /// are left on its first letter and any other, the gate that leaves the fewest letters of all.
  Gate next(const LetterRows& rows) {
    std::vector<int> wires;
    for (int q = 0; q < list_.qubits(); ++q) {
      if (rows.label(0, q) != 0) wires.push_back(q);
    }
    if (rows.count() == 1) {
      // In few layers: letters side by side, again and again one of two.
      if (!shallow_ || turn_ + 1 >= wires.size()) turn_ = 0;
      const std::size_t a = turn_++;
      return {end_of(wires[a], rows.label(0, wires[a])),
              end_of(wires[a + 1], another(rows.label(0, wires[a + 1])))};
    }
    Gate best{};
    int fewest = std::numeric_limits<int>::max();
    for (std::size_t k = 1; k < wires.size(); ++k) {
      for (const auto& [a, b] : {std::pair(wires[0], wires[k]), std::pair(wires[k], wires[0])}) {
        for (int label = 1; label <= 3; ++label) {
          if (label == rows.label(0, b)) continue;
          const Gate gate{end_of(a, rows.label(0, a)), end_of(b, label)};
          const int letters = letters_after(rows, gate);
          if (letters < fewest) best = gate;
          fewest = std::min(fewest, letters);
        }
      }
    }
    return best;
  }

  static int letters_after(LetterRows rows, const Gate& gate) {
    rows.play(gate);
    int letters = 0;
    for (int row = 0; row < rows.count(); ++row) letters += rows.weight(row);
    return letters;
  }

  Gate nearer(const LetterRows& rows) {
    const int now = reach_with(rows, -1);
    for (const auto [a, b] : pairs_) {
      const int on_a = rows.label(0, a);
      const int on_b = rows.label(0, b);
      if (on_b != 0 && reach_with(rows, a) < now) {
        return {end_of(a, on_a == 0 ? label_x : on_a), end_of(b, another(on_b))};
      }
      if (on_a != 0 && reach_with(rows, b) < now) {
        return {end_of(a, another(on_a)), end_of(b, on_b == 0 ? label_x : on_b)};
      }
    }
    return {};
  }

  int reach_with(const LetterRows& rows, int q) {
    rows.wires(0, wires_.data());
    if (q >= 0) wires_[static_cast<std::size_t>(q / word_bits)] ^= Word{1} << (q % word_bits);
    return reach_(wires_.data());
  }

  const RotationList& list_;
  bool in_order_;
  std::vector<GateCosts::Pair> pairs_;
  Reach reach_;
  bool on_graph_;
  bool shallow_;
  std::size_t turn_ = 0;
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

/// A circuit for a group on three wires at most, made as short as can be found.
class SmallGroup {
 public:
  /// The events are gates that serve the group and end in place.
  SmallGroup(const std::vector<int>& wires, std::vector<NetworkEvent> events) : wires_(wires) {
    for (NetworkEvent& event : events) {
      event.gate = {at_place(event.gate.a), at_place(event.gate.b)};
    }
    cancel_pairs(events);
    events_ = std::move(events);
  }

  /// False where it stays as it was.
  bool shorten(NetworkBlock& block, Rng& rng) const {
    if (!block.read(events_, false)) return false;
    const unsigned pairs = wires_.size() == 2 ? 1 : 7;
    const int old = block.gates();
    for (int most = block.least(); most < old; ++most) {
      if (block.rewrite(most, pairs, network_tuning.small_group_patience, rng)) return true;
    }
    return false;
  }

  std::vector<Gate> gates_of(const NetworkBlock& block) const {
    std::vector<Gate> gates;
    for (const NetworkEvent& event : block.events()) {
      if (event.row < 0) gates.push_back({on_wire(event.gate.a), on_wire(event.gate.b)});
    }
    return gates;
  }

  /// Where the labels of the wires stand after the block, in terms of where they stand before.
  void rename(const NetworkBlock& block, WireFrame& now) const {
    const WireFrame before = now;
    for (int place = 0; place < static_cast<int>(wires_.size()); ++place) {
      for (int label = 1; label <= 3; ++label) {
        const End end = end_of(place, label);
        now[on_wire(end)] = before[on_wire(block.ends()[end])];
      }
    }
  }

 private:
  End on_wire(End end) const {
    return end_of(wires_[static_cast<std::size_t>(wire_of(end))], label_of(end));
  }
  End at_place(End end) const {
    const auto place = std::ranges::find(wires_, wire_of(end)) - wires_.begin();
    return end_of(static_cast<int>(place), label_of(end));
  }

  const std::vector<int>& wires_;
  std::vector<NetworkEvent> events_;
};

/// Without strings that are served where an equal one is, and no longer than a block may be.
std::vector<RotationGroup> pieces(const RotationList& list,
                                  const std::vector<RotationGroup>& groups, bool in_order) {
  std::vector<RotationGroup> pieces;
  for (const RotationGroup& group : groups) {
    RotationGroup piece;
    for (const int row : group) {
      const auto same = std::find_if(piece.rbegin(), piece.rend(), [&](int other) {
        return list.key(other) == list.key(row) ||
               (in_order && list.clash(list.string(other), list.string(row)));
      });
      if (same != piece.rend() && list.key(*same) == list.key(row)) continue;
      if (piece.size() == NetworkBlock::most_rotations) pieces.push_back(std::exchange(piece, {}));
      piece.push_back(row);
    }
    pieces.push_back(std::move(piece));
  }
  return pieces;
}

}  // namespace

std::vector<Gate> ladders(const RotationList& list, const std::vector<RotationGroup>& groups,
                          bool in_order, const BitGraph* graph, bool shallow) {
  Gatherer gatherer(list, in_order, graph, shallow);
  NetworkBlock block(in_order);
  Rng rng(0, 0);
  WireFrame now(list.qubits());  // the end on which each end is found
  std::vector<Gate> gates;
  for (const RotationGroup& group : pieces(list, groups, in_order)) {
    stop_point();
    std::vector<Gate> own = gatherer.run(group);
    const std::vector<int> wires = qubits_of(list, group[0]);
    const bool is_small = graph == nullptr && group.size() > 1 && wires.size() <= 3;
    std::optional<SmallGroup> small;
    if (is_small) small.emplace(wires, gatherer.events(group, own));
    const bool shorter = small && small->shorten(block, rng);
    if (shorter) own = small->gates_of(block);
    for (const Gate& gate : own) gates.push_back({now[gate.a], now[gate.b]});
    if (shorter) small->rename(block, now);
  }
  return gates;
}

void cancel_pairs(std::vector<NetworkEvent>& events) {
  std::vector<NetworkEvent> kept;
  for (const NetworkEvent& event : events) {
    bool cancels = false;
    stop_point();
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
