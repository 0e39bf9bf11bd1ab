#include "zeltbraidwerk/circuit/internal/sign_choice.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

using Bits = std::vector<Word>;

bool bit(const Bits& bits, std::size_t place) {
  return (bits[place / word_bits] >> (place % word_bits) & 1U) != 0;
}
void add(Bits& bits, const Bits& other) {
  for (std::size_t w = 0; w < bits.size(); ++w) bits[w] ^= other[w];
}

/// Sums of strings, each with the list of those that it is a sum of. The string with pivot p is the
/// only one with bit p among those that came later.
class Span {
 public:
  /// Takes out of a string what the span has, as far as it goes; the list tells what.
  void reduce(Bits& string, Bits& list) const {
    for (const Entry& entry : entries_) {
      if (!bit(string, entry.pivot)) continue;
      add(string, entry.string);
      add(list, entry.list);
    }
  }
  void insert(Bits string, Bits list) {
    reduce(string, list);
    for (std::size_t w = 0; w < string.size(); ++w) {
      if (string[w] == 0) continue;
      const std::size_t pivot =
          w * word_bits + static_cast<std::size_t>(std::countr_zero(string[w]));
      entries_.push_back({pivot, std::move(string), std::move(list)});
      return;
    }
  }
  std::size_t rank() const { return entries_.size(); }

 private:
  struct Entry {
    std::size_t pivot;
    Bits string;
    Bits list;
  };
  std::vector<Entry> entries_;
};

}  // namespace

std::vector<bool> sign_choice(int qubits, const std::vector<Step>& steps,
                              const std::vector<std::size_t>& turns, std::vector<Word> wanted,
                              const std::vector<Word>& mask) {
  const std::size_t full = 2 * static_cast<std::size_t>(qubits);
  const std::size_t most_looked_at = 2 * full + 64;  // the last ones, which is mostly all it takes
  Preimages after(qubits);  // of the inverse circuit: what stands at the end
  Bits string(mask.size());
  Span span;
  std::size_t next = turns.size();
  const std::size_t last = turns.size() - std::min(turns.size(), most_looked_at);
  const std::size_t list_size = (turns.size() - last + word_bits - 1) / word_bits;
  for (std::size_t k = steps.size(); k-- > 0 && next > last && span.rank() < full;) {
    const Step& step = steps[k];
    if (k == turns[next - 1]) {
      --next;
      after.read(step.letter, step.a, string.data());
      Bits masked = string;
      for (std::size_t w = 0; w < mask.size(); ++w) masked[w] &= mask[w];
      Bits list(list_size);
      list[(next - last) / word_bits] |= Word{1} << ((next - last) % word_bits);
      span.insert(std::move(masked), std::move(list));
    }
    play(after, step);
  }
  Bits chosen(list_size);
  span.reduce(wanted, chosen);
  std::vector<bool> result(turns.size());
  for (std::size_t k = last; k < turns.size(); ++k) result[k] = bit(chosen, k - last);
  return result;
}

}  // namespace zelt::braidwerk::internal
