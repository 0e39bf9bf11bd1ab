#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/label_frame.h"
#include "zeltbraidwerk/pauli/search/internal/letter_rows.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/network_settings.h"
#include "zeltbraidwerk/pauli/search/internal/pair_table.h"
#include "zeltbraidwerk/pauli/search/internal/reach.h"
#include "zeltbraidwerk/pauli/search/internal/rotation_list.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// The rotations of a list that are left after some gates. Those in a window, the first ones, are
/// carried through every gate; where the others stand the frame tells, also when one of them has
/// become a single letter. So a gate costs what the window costs, however long the list is.
struct NetworkState {
  LabelFrame frame;
  std::vector<Word> left;  // plane of the rows left
  int count_left = 0;
  int next = 0;              // the first row that has not been in the window
  std::uint64_t served = 0;  // hash of the rows that are not left
  int lock = -1;             // a row of the window that must become shorter with every gate

  LetterRows letters;  // of the window's rows
  std::vector<int> rows;
  std::vector<std::uint32_t> factors;
  LetterRows images;  // what X and Z of all qubits have become, where these count

  // In order: the window's rows have slots, and of each the slots of the earlier rows that it
  // clashes with.
  std::vector<int> slots;
  std::vector<Word> before;
  std::vector<Word> free_slots;
};

/// Pauli networks as a problem of the engine: a move is a gate, and all rotations that have become
/// a single letter are served at once, in order those with no earlier one left that anticommutes.
class NetworkProblem {
 public:
  using State = NetworkState;
  struct Move {
    Gate gate;
    std::int32_t lock;
  };

  /// All must outlive this. The pairs of a null graph are all.
  NetworkProblem(const RotationList& list, bool in_order, const NetworkSettings& settings,
                 const BitGraph* graph, Rng& rng, const CliffordTarget* target = nullptr);

  State start(std::vector<NetworkEvent>* events = nullptr);
  /// A state of another problem with the same list and order.
  State taken_over(const State& other);
  /// Plays a gate and appends it and the rotations that can be served.
  void play(State& state, const Gate& gate, std::vector<NetworkEvent>* events = nullptr);
  /// Plays the gate that lowers the costs most; where none does, those that shorten the lightest
  /// string, until it is served. So again and again it ends always.
  Gate play_best(State& state, std::vector<NetworkEvent>* events = nullptr);

  /// In units of the settings.
  std::int64_t costs(const State& state) { return score(state); }

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink);
  std::uint64_t hash(const State& state, const Move& move) const;
  void make(State& state, const Move& move);
  bool done(const State& state) const { return state.count_left == 0; }

 private:
  struct Choice {
    std::int64_t cost;
    Move move;
  };

  static std::uint64_t id(int row);
  bool is_left(const State& state, int row) const {
    return (state.left[static_cast<std::size_t>(row / word_bits)] >> (row % word_bits) & 1) != 0;
  }
  Word* before(State& state, int slot) const {
    return state.before.data() + static_cast<std::size_t>(slot) * slot_words_;
  }
  bool may_come(const State& state, int place) const;

  void serve_on(State& state, int q, std::vector<NetworkEvent>* events);
  void serve_in_order(State& state, std::vector<NetworkEvent>* events);
  void take_out(State& state, int row, End end, std::vector<NetworkEvent>* events);
  void settle(State& state);
  void open_window(State& state);
  void enter(State& state, int row);
  void append(LetterRows& rows, const Word* own, const LabelFrame& frame);
  void weigh(State& state);
  void weigh_by_chain(State& state);

  /// Fills the table; returns the costs of the state.
  std::int64_t score(const State& state);
  std::int64_t score_on_graph(const State& state);
  /// How far the string at a place of the window is from a single letter.
  int reach(const State& state, int place);
  int reach_of_nearest(const State& state);
  /// The same if letters come or go on a wire.
  int reach_with(const State& state, int place, int q);
  void choose(const State& state, int count);
  void choose_on_graph(const State& state, int place, int lock, int count);
  void choose_shortening(const State& state, int place, int lock, int count);
  void offer(const Gate& gate, int lock, int count);

  const RotationList& list_;
  bool in_order_;
  NetworkSettings settings_;
  NetworkCosts costs_;
  GateCosts gate_costs_;
  PairTable pairs_;  // where there is no graph
  EdgeTable edges_;  // where there is one
  Reach reach_;
  const CliffordTarget* target_;
  bool on_graph_;
  int capacity_;
  std::size_t slot_words_;
  std::int64_t usual_;                   // what a string of usual weight costs
  std::vector<std::uint32_t> by_place_;  // factors
  std::vector<std::uint32_t> by_rate_;   // factors by length of a chain, or predecessors
  std::vector<std::uint32_t> jitter_;    // factors by row, empty for none
  std::vector<Choice> chosen_;           // ascending
  mutable std::vector<int> letters_;     // scratch
  std::vector<Word> string_;             // scratch
  std::vector<Word> chains_;             // scratch
  std::vector<std::int64_t> changes_;    // scratch: of a string, by qubit
  std::vector<std::vector<PairTable::Pull>> pulls_;  // scratch: by weight
};

template <class Sink>
void NetworkProblem::children(const State& state, Rng&, Sink&& sink) {
  const std::int64_t now = score(state);
  choose(state, network_window_tuning.most_children);
  for (const Choice& choice : chosen_) {
    sink(static_cast<double>(now + choice.cost), choice.move);
  }
}

}  // namespace zelt::braidwerk::internal
