#include "zeltbraidwerk/circuit/internal/folding.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

std::uint64_t hash_of(const Word* words, std::size_t count) {
  std::uint64_t hash = 0x9e3779b97f4a7c15U;
  for (std::size_t w = 0; w < count; ++w) {
    hash = (hash ^ words[w]) * 0xd1342543de82ef95U;
    hash ^= hash >> 29;
  }
  return hash;
}

/// The strings of rotations before the circuit, in the order of time.
class Strings {
 public:
  explicit Strings(int words) : half_(words), width_(2 * static_cast<std::size_t>(words)) {}

  int count() const { return static_cast<int>(signs_.size()); }
  Word* append() {
    words_.resize(words_.size() + width_);
    signs_.push_back(false);
    return words_.data() + words_.size() - width_;
  }
  void pop() {
    words_.resize(words_.size() - width_);
    signs_.pop_back();
  }
  const Word* operator[](int k) const {
    return words_.data() + static_cast<std::size_t>(k) * width_;
  }
  bool equal(int a, int b) const { return std::equal((*this)[a], (*this)[a] + width_, (*this)[b]); }
  bool commute(int a, int b) const {
    const Word* one = (*this)[a];
    const Word* other = (*this)[b];
    Word sum = 0;
    for (int w = 0; w < half_; ++w) {
      sum ^= (one[w] & other[half_ + w]) ^ (one[half_ + w] & other[w]);
    }
    return (std::popcount(sum) & 1) == 0;
  }
  std::uint64_t hash(int k) const { return hash_of((*this)[k], width_); }
  std::vector<bool>::reference is_negative(int k) { return signs_[static_cast<std::size_t>(k)]; }

 private:
  int half_;
  std::size_t width_;
  std::vector<Word> words_;
  std::vector<bool> signs_;
};

/// Adds the angles of rotations that meet, to the first of them; the others have row -1 then.
void merge(StepCircuit& circuit) {
  Preimages frame(circuit.qubits);
  Strings strings(frame.words());
  std::vector<int> rows;                          // by string
  std::unordered_map<std::uint64_t, int> latest;  // string by hash
  for (Step& step : circuit.steps) {
    if (step.is_clifford()) {
      play(frame, step);
      continue;
    }
    const int here = strings.count();
    stop_point();
    Word* string = strings.append();
    strings.is_negative(here) = frame.read(step.letter, step.a, string) != step.negative;
    const auto [place, is_new] = latest.try_emplace(strings.hash(here), here);
    const int same = std::exchange(place->second, here);
    // An equal string before the latest one is out of reach: it would have been merged with it.
    bool meets = !is_new && strings.equal(same, here);
    for (int between = here - 1; meets && between > same; --between) {
      meets = strings.commute(between, here);
    }
    if (!meets) {
      rows.push_back(step.row);
      continue;
    }
    LinearAngle& sum =
        circuit.angles[static_cast<std::size_t>(rows[static_cast<std::size_t>(same)])];
    const bool opposite = strings.is_negative(same) != strings.is_negative(here);
    sum.add(circuit.angles[static_cast<std::size_t>(step.row)], opposite ? -1 : 1);
    step.row = -1;
    strings.pop();
    place->second = same;
  }
}

/// Takes out what was merged, and turns rotations by multiples of pi/2 into Clifford gates; true
/// where there was one of these.
bool settle(StepCircuit& circuit) {
  std::vector<Step> kept;
  std::vector<LinearAngle> angles;
  bool any = false;
  for (Step& step : circuit.steps) {
    if (step.is_clifford()) {
      kept.push_back(step);
      continue;
    }
    if (step.row < 0) continue;
    LinearAngle& angle = circuit.angles[static_cast<std::size_t>(step.row)];
    const int quarters = quarters_of(angle);
    if (quarters < 0) {
      step.row = static_cast<int>(angles.size());
      angles.push_back(std::move(angle));
      kept.push_back(step);
      continue;
    }
    any = true;
    circuit.rounding = std::max(circuit.rounding, rounding_of(angle));
    circuit.eighths += sign_of_turns(angle);
    if (step.negative && quarters != 0) circuit.eighths += 4;  // by -quarters is -1 by 4 - quarters
    if (quarters == 0) continue;
    kept.push_back(turn(step.letter, step.a, step.negative ? 4 - quarters : quarters));
  }
  circuit.steps = std::move(kept);
  circuit.angles = std::move(angles);
  return any;
}

}  // namespace

void fold(StepCircuit& circuit) {
  do {
    merge(circuit);
  } while (settle(circuit));
}

}  // namespace zelt::braidwerk::internal
