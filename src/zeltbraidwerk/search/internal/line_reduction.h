#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/search/internal/light_rows.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// n lines, each a few packed words, that are changed two at a time, from one side alone, until the
/// n rows that cross them are as light as they can be: a problem of a beam, for large dense
/// operations.
///
/// The cost is a sum of f(w) = -q^w over the weights of the rows. Moves are tried between the lines
/// that the lightest row has something in, and priced by the eight lightest rows alone, each entry
/// at the slope of f. Pricing more of them, or exactly, leads to longer circuits.
///
/// A move takes time n to make, and those tried (w / c)^2 where the lightest row has weight w and a
/// line has up to c entries of a row.
///
/// Lines has
///   Move, Entries                         a move, and what the lightest rows have in a line
///   size(), words()                   lines, and words of each
///   light_rows()                      the cost
///   lines_of(move)                    the two lines, in the order of the arguments below
///   weigh(line, sign, weights)        adds a line to the weights of the rows, or takes it off
///   weigh_changed(move, a, b, sign, weights)
///                                     the same for what a move changes of its lines
///   change(move, a, b)                makes a move
///   hash_of(line)
///   has(line, row)                    whether the row has anything in the line
///   entries_of(k, line, light)        what the lightest rows have in line k
///   each_move(entries, light, f)           calls f(change of the cost, move)
template <class Lines>
class LineReduction {
 public:
  using Move = typename Lines::Move;
  class State {
    friend class LineReduction;
    std::vector<Word> words_;            // line after line
    LightRows::Weights weights_;         // of the rows
    std::vector<std::uint64_t> hashes_;  // of the lines
    std::uint64_t hash_ = 0;
    LightRows::Sum sum_;
  };

  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    read_lightest(state);
    lines_.each_move(entries_, light_, [&](double change, const Move& move) {
      sink(state.sum_.cost + change, move);
    });
  }

  /// The same in any order of the lines.
  std::uint64_t hash(const State& state, const Move& move) const {
    const auto [a, b] = lines_.lines_of(move);
    const auto size = static_cast<std::size_t>(lines_.words());
    std::vector<Word> changed(2 * size);
    std::copy_n(line(state, a), size, changed.data());
    std::copy_n(line(state, b), size, changed.data() + size);
    lines_.change(move, changed.data(), changed.data() + size);
    return state.hash_ - hash_at(state, a) - hash_at(state, b) + lines_.hash_of(changed.data()) +
           lines_.hash_of(changed.data() + size);
  }

  void make(State& state, const Move& move) const {
    const auto [a, b] = lines_.lines_of(move);
    Word* of_a = state.words_.data() + offset(a);
    Word* of_b = state.words_.data() + offset(b);
    lines_.weigh_changed(move, of_a, of_b, -1, state.weights_);
    lines_.change(move, of_a, of_b);
    lines_.weigh_changed(move, of_a, of_b, 1, state.weights_);
    for (const int k : {a, b}) {
      std::uint64_t& hash = state.hashes_[static_cast<std::size_t>(k)];
      state.hash_ -= hash;
      hash = lines_.hash_of(line(state, k));
      state.hash_ += hash;
    }
    state.sum_ = light_.sum(state.weights_, lines_.size());
  }

  bool done(const State& state) const { return state.sum_.unfinished == 0; }

 protected:
  explicit LineReduction(const Lines& lines) : lines_(lines), light_(lines_.light_rows()) {}

  State start(std::vector<Word> words) const {
    State state;
    state.words_ = std::move(words);
    state.weights_.resize(static_cast<std::size_t>(words_for(lines_.size()) * word_bits));
    for (int k = 0; k < lines_.size(); ++k) {
      lines_.weigh(line(state, k), 1, state.weights_);
      state.hashes_.push_back(lines_.hash_of(line(state, k)));
      state.hash_ += state.hashes_.back();
    }
    state.sum_ = light_.sum(state.weights_, lines_.size());
    return state;
  }
  const Word* line(const State& state, int k) const { return state.words_.data() + offset(k); }
  const Lines& lines() const { return lines_; }
  const LightRows& light() const { return light_; }

 private:
  std::size_t offset(int k) const { return static_cast<std::size_t>(k * lines_.words()); }
  static std::uint64_t hash_at(const State& state, int k) {
    return state.hashes_[static_cast<std::size_t>(k)];
  }

  void read_lightest(const State& state) {
    light_.choose(state.weights_, lines_.size());
    entries_.clear();
    if (light_.chosen().empty()) return;
    for (int k = 0; k < lines_.size(); ++k) {
      if (lines_.has(line(state, k), light_.chosen()[0])) {
        entries_.push_back(lines_.entries_of(k, line(state, k), light_));
      }
    }
  }

  Lines lines_;
  LightRows light_;
  std::vector<typename Lines::Entries> entries_;
};

}  // namespace zelt::braidwerk::internal
