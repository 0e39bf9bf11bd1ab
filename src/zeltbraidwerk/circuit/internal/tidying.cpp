#include "zeltbraidwerk/circuit/internal/tidying.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "zeltbraidwerk/circuit/internal/sign_choice.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int axes = 3;  // X, Y, Z
constexpr int axis_x = 0;
constexpr int axis_z = 2;
constexpr int most_sweeps = 12;
constexpr int most_qubits_for_signs = 1024;

constexpr std::size_t at(int index) {
  return static_cast<std::size_t>(index);
}

/// What a Clifford operator on one wire makes of X, Y and Z.
struct Turning {
  std::array<std::uint8_t, axes> to{0, 1, 2};
  std::array<bool, axes> negative{};

  bool operator==(const Turning&) const = default;

  /// This one after `first`.
  Turning after(const Turning& first) const {
    Turning result;
    for (int axis = 0; axis < axes; ++axis) {
      const std::uint8_t middle = first.to[at(axis)];
      result.to[at(axis)] = to[middle];
      result.negative[at(axis)] = first.negative[at(axis)] != negative[middle];
    }
    return result;
  }
  Turning inverse() const {
    Turning result;
    for (int axis = 0; axis < axes; ++axis) {
      result.to[to[at(axis)]] = static_cast<std::uint8_t>(axis);
      result.negative[to[at(axis)]] = negative[at(axis)];
    }
    return result;
  }
};

Turning turning_of(const Step& step) {
  if (step.kind == StepKind::h) return {{2, 1, 0}, {false, true, false}};
  Turning result;
  const auto next = static_cast<std::uint8_t>(step.letter % 3);
  const auto last = static_cast<std::uint8_t>((step.letter + 1) % 3);
  if (step.quarters != 2) std::swap(result.to[next], result.to[last]);
  result.negative[next] = step.quarters != 1;
  result.negative[last] = step.quarters != 3;
  return result;
}

/// The gates for each of the 24 turnings, as few as can be, those with names first.
struct Written {
  Turning turning;
  std::vector<Step> steps;
};
const std::vector<Written>& written_turnings() {
  static const std::vector<Written> all = [] {
    const std::vector<Step> gates{turn(1, 0, 2), turn(2, 0, 2), turn(3, 0, 2), {StepKind::h},
                                  turn(3, 0, 1), turn(3, 0, 3), turn(1, 0, 1), turn(1, 0, 3),
                                  turn(2, 0, 1), turn(2, 0, 3)};
    std::vector<Written> found(1);
    for (std::size_t k = 0; k < found.size(); ++k) {
      for (const Step& gate : gates) {
        Written next = found[k];
        next.turning = turning_of(gate).after(next.turning);
        next.steps.push_back(gate);
        if (std::ranges::find(found, next.turning, &Written::turning) == found.end()) {
          found.push_back(std::move(next));
        }
      }
    }
    return found;
  }();
  return all;
}

/// Orders of the axes: the images of axes at the start of a wire, without signs.
using Order = std::array<std::uint8_t, axes>;
constexpr std::array<Order, 6> orders{
    {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}}};

Order between(const Order& from, const Order& to) {
  Order result{};
  for (int axis = 0; axis < axes; ++axis) result[from[at(axis)]] = to[at(axis)];
  return result;
}
/// How many gates it takes: one for two axes, two for three.
constexpr int cost(const Order& from, const Order& to) {
  int moved = 0;
  for (int axis = 0; axis < axes; ++axis) moved += from[at(axis)] != to[at(axis)] ? 1 : 0;
  return moved == 0 ? 0 : moved - 1;
}

/// Gates that come to a wire in each order, at the least.
using Costs = std::array<int, orders.size()>;

/// Orders of two parities: two gates lead to another of the same parity, one to any of the other.
constexpr std::array<std::array<std::size_t, 3>, 2> by_parity{{{0, 3, 4}, {1, 2, 5}}};

/// The two orders in which an axis of the start is on another one, the even one first.
using Fitting = std::array<std::size_t, 2>;
constexpr auto fitting_orders = [] {
  std::array<std::array<Fitting, axes>, axes> result{};
  for (const std::size_t parity : {0U, 1U}) {
    for (const std::size_t k : by_parity[parity]) {
      for (std::size_t axis = 0; axis < orders[k].size(); ++axis) {
        result[axis][orders[k][axis]][parity] = k;
      }
    }
  }
  return result;
}();
constexpr const Fitting& fitting(int axis, int image) {
  return fitting_orders[at(axis)][at(image)];
}

/// Where so many gates came in one of two orders, of both parities, and then turns on the wire.
Costs moved(int even, int odd, const Fitting& from) {
  const std::array<int, 2> changed{std::min(even + 2, odd + 1), std::min(odd + 2, even + 1)};
  Costs result;
  for (const std::size_t parity : {0U, 1U}) {
    for (const std::size_t k : by_parity[parity]) result[k] = changed[parity];
  }
  result[from[0]] = std::min(even, changed[0]);
  result[from[1]] = std::min(odd, changed[1]);
  return result;
}
Costs moved(const Costs& from, const Fitting& through) {
  return moved(from[through[0]], from[through[1]], through);
}
/// From one order.
Costs moved(const Order& from) {
  Costs result;
  for (std::size_t k = 0; k < orders.size(); ++k) result[k] = cost(from, orders[k]);
  return result;
}

using Form = std::array<int, 2>;  // the axes on both wires
constexpr std::array<Form, 3> forms{{{axis_z, axis_x}, {axis_x, axis_z}, {axis_z, axis_z}}};

/// A gate on two wires, by what acts on each.
struct Pair {
  std::array<int, 2> wires{};
  Form starts{};  // axes of the start of each wire
  Form form{};
  std::array<Costs, 2> rest{};  // what comes after it on each wire
};

class Plan {
 public:
  Plan(int qubits, const std::vector<Step>& steps, bool with_cz)
      : allowed_(forms.begin(), forms.begin() + (with_cz ? 3 : 2)), ends_(at(qubits)) {
    std::vector<Turning> starts(at(qubits));  // of the axes now
    for (const Step& step : steps) {
      if (step.is_pair()) {
        const int on_b = step.kind == StepKind::cnot ? axis_x : axis_z;
        pairs_.push_back({{step.a, step.b},
                          {starts[at(step.a)].to[axis_z], starts[at(step.b)].to[at(on_b)]},
                          {axis_z, on_b},
                          {}});
      } else if (step.is_clifford()) {
        Turning& turning = starts[at(step.a)];
        turning = turning.after(turning_of(step).inverse());
      }
    }
    for (int q = 0; q < qubits; ++q) ends_[at(q)] = starts[at(q)].inverse().to;
  }

  /// The order of axes on both wires at each gate on two.
  std::vector<std::array<Order, 2>> run() {
    look_ahead();
    for (int sweep = 0; sweep < most_sweeps && improve(); ++sweep) look_ahead();
    return orders_of_pairs();
  }

 private:
  void look_ahead() {
    std::vector<Costs> rest;
    for (const Order& end : ends_) rest.push_back(moved(end));
    for (std::size_t k = pairs_.size(); k-- > 0;) {
      Pair& pair = pairs_[k];
      for (const std::size_t side : {0U, 1U}) {
        Costs& costs = rest[at(pair.wires[side])];
        pair.rest[side] = costs;
        costs = moved(costs, fitting(pair.starts[side], pair.form[side]));
      }
    }
  }

  /// The best form of each gate, for those before it and the old ones after it.
  bool improve() {
    bool changed = false;
    std::vector<Costs> now(ends_.size(), moved(orders[0]));
    for (Pair& pair : pairs_) {
      const auto cost_of = [&](const Form& form) {
        int sum = 0;
        for (const std::size_t side : {0U, 1U}) {
          const Costs& before = now[at(pair.wires[side])];
          const Costs& rest = pair.rest[side];
          const auto [even, odd] = fitting(pair.starts[side], form[side]);
          sum += std::min(before[even] + rest[even], before[odd] + rest[odd]);
        }
        return sum;
      };
      int best = cost_of(pair.form);
      for (const Form& form : allowed_) {
        if (const int sum = cost_of(form); sum < best) {
          best = sum;
          pair.form = form;
          changed = true;
        }
      }
      for (const std::size_t side : {0U, 1U}) {
        Costs& costs = now[at(pair.wires[side])];
        costs = moved(costs, fitting(pair.starts[side], pair.form[side]));
      }
    }
    return changed;
  }

  std::vector<std::array<Order, 2>> orders_of_pairs() const {
    std::vector<std::array<Order, 2>> result;
    std::vector<Order> now(ends_.size(), orders[0]);
    for (const Pair& pair : pairs_) {
      result.emplace_back();
      for (const std::size_t side : {0U, 1U}) {
        Order& order = now[at(pair.wires[side])];
        const auto [even, odd] = fitting(pair.starts[side], pair.form[side]);
        const auto sum = [&](std::size_t k) { return cost(order, orders[k]) + pair.rest[side][k]; };
        // Of equal ones the first in the list.
        const bool is_even = sum(even) < sum(odd) || (sum(even) == sum(odd) && even < odd);
        order = result.back()[side] = orders[is_even ? even : odd];
      }
    }
    return result;
  }

  std::span<const Form> allowed_;
  std::vector<Order> ends_;
  std::vector<Pair> pairs_;
};

/// Writes gates so that those of the circuit so far are what is written, then what waits.
class Writer {
 public:
  /// Of the quarter turns put in, those that are `reversed` go the other way.
  Writer(int qubits, const std::vector<bool>& reversed)
      : reversed_(reversed), waiting_(at(qubits)), orders_(at(qubits), orders[0]) {}

  void clifford(const Step& step) {
    Turning& waits = waiting_[at(step.a)];
    waits = turning_of(step).after(waits);
  }
  void rotate(Step step) {
    const Turning back = waiting_[at(step.a)].inverse();
    const std::size_t axis = step.letter - 1U;
    step.letter = static_cast<std::uint8_t>(back.to[axis] + 1);
    step.negative = step.negative != back.negative[axis];
    steps.push_back(step);
  }
  void pair(const Step& step, const std::array<Order, 2>& wanted) {
    const std::array<int, 2> wires{step.a, step.b};
    const std::array<int, 2> given{axis_z, step.kind == StepKind::cnot ? axis_x : axis_z};
    std::array<std::uint8_t, 2> images{};
    std::array<bool, 2> negative{};
    for (const std::size_t side : {0U, 1U}) {
      bring(wires[side], wanted[side]);
      const Turning back = waiting_[at(wires[side])].inverse();
      images[side] = back.to[at(given[side])];
      negative[side] = back.negative[at(given[side])];
    }
    if (images[0] == axis_z && images[1] == axis_z) {
      steps.push_back({.kind = StepKind::cz, .a = step.a, .b = step.b});
    } else {
      const bool forward = images[0] == axis_z;
      steps.push_back(
          {.kind = StepKind::cnot, .a = forward ? step.a : step.b, .b = forward ? step.b : step.a});
    }
    // A minus on one wire is a Pauli gate on the other.
    for (const std::size_t side : {0U, 1U}) {
      if (!negative[1 - side]) continue;
      Turning& waits = waiting_[at(wires[side])];
      waits = waits.after(turning_of(turn(images[side] + 1, 0, 2)));
    }
  }
  void finish() {
    for (std::size_t q = 0; q < waiting_.size(); ++q) {
      for (const Written& entry : written_turnings()) {
        if (entry.turning == waiting_[q]) append(entry, static_cast<int>(q));
      }
    }
  }

  /// Which of the quarter turns that were put in go the other way for the fewest gates at the end.
  std::vector<bool> better_signs() const {
    const auto qubits = static_cast<int>(waiting_.size());
    const std::size_t half = (waiting_.size() + word_bits - 1) / word_bits;
    std::vector<Word> wanted(2 * half);
    std::vector<Word> mask(2 * half);
    for (std::size_t q = 0; q < waiting_.size(); ++q) {
      const Word bit = Word{1} << (q % word_bits);
      const Turning& waits = waiting_[q];
      int moved = 0;
      for (int axis = 0; axis < axes; ++axis) moved += waits.to[at(axis)] != axis ? 1 : 0;
      if (moved == axes) continue;  // two gates, whatever the signs
      mask[q / word_bits] |= bit;
      mask[half + q / word_bits] |= bit;
      int best = 0;
      for (int letter = 1; letter <= axes; ++letter) {
        if (gates_of(waits.after(turning_of(turn(letter, 0, 2)))) >=
            gates_of(best == 0 ? waits : waits.after(turning_of(turn(best, 0, 2))))) {
          continue;
        }
        best = letter;
      }
      if (best == 1 || best == 2) wanted[q / word_bits] |= bit;
      if (best == 2 || best == 3) wanted[half + q / word_bits] |= bit;
    }
    return sign_choice(qubits, steps, turns_, std::move(wanted), mask);
  }

  std::vector<Step> steps;

 private:
  static std::size_t gates_of(const Turning& turning) {
    return std::ranges::find(written_turnings(), turning, &Written::turning)->steps.size();
  }
  void append(const Written& entry, int q) {
    for (Step step : entry.steps) {
      step.a = q;
      steps.push_back(step);
    }
  }
  void bring(int q, const Order& wanted) {
    Order& now = orders_[at(q)];
    if (now == wanted) return;
    const Order move = between(std::exchange(now, wanted), wanted);
    for (const Written& entry : written_turnings()) {
      if (entry.turning.to != move) continue;
      for (Step step : entry.steps) {
        step.a = q;
        if (step.kind == StepKind::turn && step.quarters % 2 != 0) {
          if (turns_.size() < reversed_.size() && reversed_[turns_.size()]) {
            step.quarters = static_cast<std::uint8_t>(4 - step.quarters);
          }
          turns_.push_back(steps.size());
        }
        steps.push_back(step);
        Turning& waits = waiting_[at(q)];
        waits = waits.after(turning_of(step).inverse());
      }
      return;
    }
  }

  const std::vector<bool>& reversed_;
  std::vector<std::size_t> turns_;  // places of the quarter turns that were put in
  std::vector<Turning> waiting_;
  std::vector<Order> orders_;
};

}  // namespace

std::vector<Step> tidied(int qubits, const std::vector<Step>& steps, bool with_cz) {
  const std::vector<std::array<Order, 2>> plan = Plan(qubits, steps, with_cz).run();
  const auto write = [&](Writer& writer) {
    std::size_t pair = 0;
    for (const Step& step : steps) {
      if (step.is_pair()) {
        writer.pair(step, plan[pair++]);
      } else if (step.is_clifford()) {
        writer.clifford(step);
      } else {
        writer.rotate(step);
      }
    }
  };
  std::vector<bool> reversed;
  Writer plain(qubits, reversed);
  write(plain);
  if (qubits <= most_qubits_for_signs) reversed = plain.better_signs();
  Writer chosen(qubits, reversed);
  write(chosen);
  std::vector<Step> best = steps;
  for (Writer* writer : {&plain, &chosen}) {
    writer->finish();
    if (writer->steps.size() < best.size()) best = std::move(writer->steps);
  }
  return best;
}

}  // namespace zelt::braidwerk::internal
