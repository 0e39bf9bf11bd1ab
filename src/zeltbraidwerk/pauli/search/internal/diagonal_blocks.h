#pragma once

#include <functional>
#include <map>
#include <vector>

#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/rotation_list.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// The events of a network, and the wire on which each qubit stands at its end.
struct PlacedEvents {
  std::vector<NetworkEvent> events;
  std::vector<int> wires;
};

/// A list as blocks of rotations that are locally diagonal: on each qubit, all strings of a block
/// have the same letter or none, so that the block is a set of parities in another basis. Rotations
/// about single letters come between the blocks and take no gates. Layers of QAOA are such lists.
class DiagonalBlocks {
 public:
  /// Each rotation goes into the first block that exchanges of commuting ones allow, any one
  /// where the order is free.
  DiagonalBlocks(const RotationList& list, bool in_order);

  std::size_t count() const { return blocks_.size(); }
  /// Whether one block holds the whole list.
  bool are_all() const { return count() == 1 && heavy_ == static_cast<std::size_t>(list_.count()); }
  /// Whether blocks have about as many rotations as qubits: for fewer, a network for all of the
  /// list is shorter.
  bool are_large() const {
    return count() == 1 || network_tuning.qubits_of_rotation * heavy_ >=
                               count() * static_cast<std::size_t>(list_.qubits());
  }
  bool is_last(std::size_t block) const { return block + 1 == count() && singles_.back().empty(); }
  /// The parities of a block, each once, by numbers in an order that depends on them alone. Here
  /// are the numbers in the order of the list.
  std::vector<int> parities_of(std::size_t block) const;
  /// These parities as strings of Z without angles.
  Rotations strings_of(std::size_t block, const std::vector<int>& parities) const;

  /// A network for the parities of a block, numbers of parities in place of rows.
  using SearchBlock = std::function<PlacedEvents(std::size_t block, const Effort& effort)>;
  /// The networks of all blocks, one after the other. Blocks with the same parities are searched
  /// once; those that are left share the effort. Each is closed by itself, so that with more effort
  /// they are together no longer.
  PlacedEvents search(const SearchBlock& search_block, Effort effort) const;

 private:
  using Terms = std::map<std::vector<bool>, std::vector<int>>;  // rows by their qubits
  struct Block {
    std::vector<int> labels;  // by qubit, 0 where no string has a letter
    Terms terms;
  };
  class Writer;

  int take_in(int row, int first);
  /// The first block with the same parities, which is as often last as this one.
  std::size_t model_of(std::size_t block) const;

  const RotationList& list_;
  std::vector<Block> blocks_;
  std::vector<std::vector<int>> singles_;  // before each block, and at the end
  std::size_t heavy_ = 0;                  // rotations in blocks
};

/// A network for different strings of Z by the search for parities.
PlacedEvents search_parity_network(const PauliFrame& strings, const NetworkTask& task,
                                   const Effort& effort);

}  // namespace zelt::braidwerk::internal
