#include <algorithm>
#include <bit>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"

/// \file
/// The window of a network's state: which rotations are carried through every gate, and what each
/// counts.

namespace zelt::braidwerk::internal {
namespace {

constexpr const NetworkWindowTuning& tuning = network_window_tuning;

}  // namespace

void NetworkProblem::open_window(State& state) {
  const int n = list_.qubits();
  state.letters = LetterRows(n, capacity_);
  if (in_order_) {
    state.before.resize(static_cast<std::size_t>(capacity_) * slot_words_);
    state.free_slots.resize(slot_words_);
    for (int k = 0; k < capacity_; ++k) {
      state.free_slots[static_cast<std::size_t>(k / word_bits)] |= Word{1} << (k % word_bits);
    }
  }
  if (settings_.tail > 0) {
    state.images = LetterRows(n, 2 * n);
    std::vector<Word> ending(string_.size());
    const auto set = [&](int q, bool z) {
      ending[static_cast<std::size_t>(q / word_bits + (z ? list_.words() : 0))] |=
          Word{1} << (q % word_bits);
    };
    for (int k = 0; k < 2 * n; ++k) {
      std::ranges::fill(ending, 0);
      if (target_ == nullptr) set(k % n, k >= n);
      for (int q = 0; target_ != nullptr && q < n; ++q) {
        const unsigned char letter = target_->preimages.letter(k, q);
        if (letter_has_x(letter)) set(q, false);
        if (letter_has_z(letter)) set(q, true);
      }
      append(state.images, ending.data(), state.frame);
    }
  }
  settle(state);
}

/// Takes what was served out of the window and fills it up.
void NetworkProblem::settle(State& state) {
  std::size_t kept = 0;
  state.letters.keep_if([&](int place) {
    const auto at = static_cast<std::size_t>(place);
    if (!is_left(state, state.rows[at])) {
      if (in_order_) {
        const int slot = state.slots[at];
        state.free_slots[static_cast<std::size_t>(slot / word_bits)] |= Word{1}
                                                                        << (slot % word_bits);
      }
      return false;
    }
    state.rows[kept] = state.rows[at];
    if (in_order_) state.slots[kept] = state.slots[at];
    ++kept;
    return true;
  });
  state.rows.resize(kept);
  if (in_order_) state.slots.resize(kept);
  for (; state.next < list_.count() && !state.letters.full(); ++state.next) {
    if (is_left(state, state.next)) enter(state, state.next);
  }
  weigh(state);
}

/// What a string has become.
void NetworkProblem::append(LetterRows& rows, const Word* own, const LabelFrame& frame) {
  std::ranges::fill(string_, 0);
  for (int q = 0; q < list_.qubits(); ++q) {
    const auto w = static_cast<std::size_t>(q / word_bits);
    const int shift = q % word_bits;
    // The letter has an X where it anticommutes with Z, and the other way round.
    string_[w] |= Word{list_.clash(own, frame.of_z(q))} << shift;
    string_[w + static_cast<std::size_t>(list_.words())] |= Word{list_.clash(own, frame.of_x(q))}
                                                            << shift;
  }
  rows.append(string_.data());
}

void NetworkProblem::enter(State& state, int row) {
  const Word* own = list_.string(row);
  append(state.letters, own, state.frame);
  if (in_order_) {
    int slot = 0;
    while ((state.free_slots[static_cast<std::size_t>(slot / word_bits)] >> (slot % word_bits) &
            1) == 0) {
      ++slot;
    }
    state.free_slots[static_cast<std::size_t>(slot / word_bits)] &=
        ~(Word{1} << (slot % word_bits));
    Word* earlier = before(state, slot);
    std::fill(earlier, earlier + slot_words_, 0);
    for (std::size_t k = 0; k < state.rows.size(); ++k) {
      if (!list_.clash(own, list_.string(state.rows[k]))) continue;
      earlier[state.slots[k] / word_bits] |= Word{1} << (state.slots[k] % word_bits);
    }
    state.slots.push_back(slot);
  }
  state.rows.push_back(row);
}

void NetworkProblem::weigh(State& state) {
  state.factors.resize(state.rows.size());
  if (in_order_ && settings_.emphasis == Emphasis::by_chain) {
    weigh_by_chain(state);
  } else if (in_order_ && settings_.emphasis == Emphasis::by_predecessors) {
    for (std::size_t k = 0; k < state.rows.size(); ++k) {
      const Word* earlier = before(state, state.slots[k]);
      int count = 0;
      for (std::size_t w = 0; w < slot_words_; ++w) count += std::popcount(earlier[w]);
      state.factors[k] = by_rate_[static_cast<std::size_t>(count)];
    }
  } else {
    std::copy_n(by_place_.begin(), state.rows.size(), state.factors.begin());
  }
  for (std::size_t k = 0; k < state.rows.size() && !jitter_.empty(); ++k) {
    state.factors[k] =
        NetworkCosts::times(state.factors[k], jitter_[static_cast<std::size_t>(state.rows[k])]);
  }
}

/// Slots by the length of the longest chain of anticommuting rotations that ends there.
void NetworkProblem::weigh_by_chain(State& state) {
  std::ranges::fill(chains_, 0);
  int longest = -1;
  for (std::size_t k = 0; k < state.rows.size(); ++k) {
    const int slot = state.slots[k];
    const Word* earlier = before(state, slot);
    int length = 0;
    for (int c = longest; c >= 0 && length == 0; --c) {
      const Word* chain = chains_.data() + static_cast<std::size_t>(c) * slot_words_;
      for (std::size_t w = 0; w < slot_words_; ++w) {
        if ((earlier[w] & chain[w]) != 0) length = c + 1;
      }
    }
    length = std::min(length, tuning.longest_chain);
    longest = std::max(longest, length);
    chains_[static_cast<std::size_t>(length) * slot_words_ +
            static_cast<std::size_t>(slot / word_bits)] |= Word{1} << (slot % word_bits);
    state.factors[k] = by_rate_[static_cast<std::size_t>(length)];
  }
}

}  // namespace zelt::braidwerk::internal
