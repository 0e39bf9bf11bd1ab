#include "zeltbraidwerk/clifford/search/internal/five_wire_layers.h"

#include <algorithm>
#include <array>

namespace zelt::braidwerk::internal {
namespace {

/// About 20 ms, which few operators take. With 8,000, one in thirty has a layer more.
constexpr int most_tries = 30'000;

/// First moves of an operator that takes ten gates.
constexpr std::size_t enough_of_ten = 16;

bool are_apart(const Gate& one, const Gate& other) {
  const auto has = [&](End end) {
    return wire_of(end) == wire_of(one.a) || wire_of(end) == wire_of(one.b);
  };
  return !has(other.a) && !has(other.b);
}

const Gate& gate(int move) {
  return FiveWireRows::gates()[static_cast<std::size_t>(move)];
}

}  // namespace

bool FiveWireLayers::go_down(FiveWireRows& rows, int distance, int layers,
                             std::vector<Gate>& gates) {
  tries_left_ = most_tries;
  path_.clear();
  const OperatorClass of = class_of_(rows);
  if (!go_down(rows, of, distance, layers)) {
    if (distance != ClassTable<5>::most_gates + 2 || 2 * (layers - 1) < distance - 1) return false;
    add_single_moves(known_of(distance, rows));
    not_enough_.erase(of);
    if (!go_down(rows, of, distance, layers)) return false;
  }
  for (const int move : path_) gates.push_back(gate(move));
  rows = left_;
  return true;
}

bool FiveWireLayers::go_down(const FiveWireRows& rows, const OperatorClass& of, int distance,
                             int layers) {
  if (distance == 0) {
    left_ = rows;
    return true;
  }
  if (2 * layers < distance) return false;
  if (const auto known = not_enough_.find(of);
      known != not_enough_.end() && known->second >= layers) {
    return false;
  }
  for (const Move& move : moves(rows, distance)) {
    const int left = distance - (move.second < 0 ? 1 : 2);
    if (tries_left_ <= 0) return false;
    if (2 * (layers - 1) < left) continue;
    const std::size_t before = path_.size();
    path_.push_back(move.first);
    if (move.second >= 0) path_.push_back(move.second);
    if (go_down(move.rows, class_of_(move.rows), left, layers - 1)) return true;
    path_.resize(before);
  }
  if (tries_left_ > 0) not_enough_[of] = layers;
  return false;
}

int FiveWireLayers::distance_after(int move, const FiveWireRows& rows, FiveWireRows& next) {
  --tries_left_;
  next = rows.after(gate(move));
  return table_.distance(class_of_(next));
}

/// Two gates at once first. As two that commute change the distance by one each or not at all, both
/// are among those that take one off.
std::vector<FiveWireLayers::Move> FiveWireLayers::moves(const FiveWireRows& rows, int distance) {
  if (distance > ClassTable<5>::beyond) return known_of(distance, rows).moves;
  std::vector<Move> one;
  int move = rng_.below(FiveWireRows::moves);
  for (int k = 0; k < FiveWireRows::moves; ++k, move = (move + 1) % FiveWireRows::moves) {
    Move found{move, -1, {}};
    if (distance_after(move, rows, found.rows) == distance - 1) one.push_back(found);
  }
  std::vector<Move> two;
  for (std::size_t k = 0; k < one.size(); ++k) {
    for (std::size_t l = 0; l < k; ++l) {
      if (!are_apart(gate(one[k].first), gate(one[l].first))) continue;
      Move found{one[k].first, one[l].first, {}};
      if (distance_after(found.second, one[k].rows, found.rows) == distance - 2) {
        two.push_back(found);
      }
    }
  }
  two.insert(two.end(), one.begin(), one.end());
  return two;
}

FiveWireLayers::Known& FiveWireLayers::known_of(int distance, const FiveWireRows& rows) {
  Known& known = known_[static_cast<std::size_t>(most_gates - distance)];
  if (known.moves.empty() || rows != known.rows) {
    known = {rows, distance == most_gates ? moves_of_ten(rows) : moves_of_nine(rows), false};
  }
  return known;
}

/// Calls visit(move) for two gates at once on other wires, until it returns false.
template <class F>
void FiveWireLayers::each_two(const FiveWireRows& rows, F&& visit) {
  const int turn = rng_.below(FiveWireRows::moves);
  for (int k = 0; k < FiveWireRows::moves; ++k) {
    const int first = (k + turn) % FiveWireRows::moves;
    const FiveWireRows after_first = rows.after(gate(first));
    for (int second = 0; second < first; ++second) {
      if (!are_apart(gate(first), gate(second))) continue;
      if (!visit(Move{first, second, after_first.after(gate(second))})) return;
    }
  }
}

std::vector<FiveWireLayers::Move> FiveWireLayers::moves_of_nine(const FiveWireRows& rows) {
  std::vector<Move> found;
  std::array<bool, FiveWireRows::moves> leads_to_eight{};
  each_two(rows, [&](const Move& move) {
    --tries_left_;
    if (table_.distance(class_of_(move.rows)) == ClassTable<5>::most_gates) {
      found.push_back(move);
      leads_to_eight[static_cast<std::size_t>(move.first)] = true;
      leads_to_eight[static_cast<std::size_t>(move.second)] = true;
    }
    return true;
  });
  for (int move = 0; move < FiveWireRows::moves; ++move) {
    if (!leads_to_eight[static_cast<std::size_t>(move)]) continue;
    found.push_back({move, -1, rows.after(gate(move))});
  }
  return found;
}

/// All others that lead to eight gates.
void FiveWireLayers::add_single_moves(Known& known) {
  if (known.has_all) return;
  known.has_all = true;
  std::array<bool, FiveWireRows::moves> is_there{};
  for (const Move& move : known.moves) {
    if (move.second < 0) is_there[static_cast<std::size_t>(move.first)] = true;
  }
  for (int move = 0; move < FiveWireRows::moves; ++move) {
    if (is_there[static_cast<std::size_t>(move)]) continue;
    const Move alone{move, -1, known.rows.after(gate(move))};
    if (takes_eight(alone.rows)) known.moves.push_back(alone);
  }
}

std::vector<FiveWireLayers::Move> FiveWireLayers::moves_of_ten(const FiveWireRows& rows) {
  std::vector<Move> found;
  each_two(rows, [&](const Move& move) {
    if (takes_eight(move.rows)) found.push_back(move);
    return found.size() < enough_of_ten;
  });
  return found;
}

/// Given that it takes more than the table has.
bool FiveWireLayers::takes_eight(const FiveWireRows& rows) {
  FiveWireRows next;
  for (int move = 0; move < FiveWireRows::moves; ++move) {
    if (distance_after(move, rows, next) == ClassTable<5>::most_gates) return true;
  }
  return false;
}

}  // namespace zelt::braidwerk::internal
