#include "zeltbraidwerk/pauli/search/internal/diagonal_blocks.h"

#include <algorithm>
#include <numeric>
#include <ranges>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/search/internal/label_frame.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"
#include "zeltbraidwerk/search/internal/wire_frame.h"

namespace zelt::braidwerk::internal {
namespace {

/// By qubit.
std::vector<int> labels_of(const RotationList& list, int row) {
  const Word* string = list.string(row);
  std::vector<int> labels;
  for (int q = 0; q < list.qubits(); ++q) {
    const auto bit = [&](int word) {
      return static_cast<int>(string[word + q / word_bits] >> (q % word_bits) & 1);
    };
    labels.push_back(label_x * bit(0) | label_z * bit(list.words()));
  }
  return labels;
}

/// Whether strings have the same letter on each qubit, or one of them none.
bool agree(const std::vector<int>& one, const std::vector<int>& other) {
  return std::ranges::equal(one, other, [](int a, int b) { return a == 0 || b == 0 || a == b; });
}

std::uint64_t key_of(End end) {
  const int label = label_of(end);
  return ((label & label_x) != 0 ? RotationList::key_of_letter(wire_of(end), false) : 0) ^
         ((label & label_z) != 0 ? RotationList::key_of_letter(wire_of(end), true) : 0);
}

}  // namespace

DiagonalBlocks::DiagonalBlocks(const RotationList& list, bool in_order) : list_(list), singles_(1) {
  std::vector<int> after;  // by row: the first block that may come after it
  for (int row = 0; row < list.count(); ++row) {
    stop_point();
    int first = 0;
    for (int earlier = 0; earlier < row && in_order; ++earlier) {
      if (after[static_cast<std::size_t>(earlier)] <= first) continue;
      if (!list.clash(list.string(earlier), list.string(row))) continue;
      first = after[static_cast<std::size_t>(earlier)];
    }
    after.push_back(take_in(row, first));
  }
}

/// Into the first block from there on whose letters it shares; before that block where it has one
/// letter alone. Returns the first block that may come after it.
int DiagonalBlocks::take_in(int row, int first) {
  const std::vector<int> labels = labels_of(list_, row);
  std::vector<bool> qubits;
  for (const int label : labels) qubits.push_back(label != 0);
  if (std::ranges::count(qubits, true) == 1) {
    singles_[static_cast<std::size_t>(first)].push_back(row);
    return first;
  }
  ++heavy_;
  auto block = std::find_if(blocks_.begin() + first, blocks_.end(),
                            [&](const Block& other) { return agree(labels, other.labels); });
  if (block == blocks_.end()) {
    blocks_.push_back({std::vector<int>(labels.size()), {}});
    singles_.emplace_back();
    block = blocks_.end() - 1;
  }
  for (std::size_t q = 0; q < labels.size(); ++q) block->labels[q] |= labels[q];
  block->terms[std::move(qubits)].push_back(row);
  return static_cast<int>(block - blocks_.begin()) + 1;
}

std::size_t DiagonalBlocks::model_of(std::size_t block) const {
  const auto parities = [&](std::size_t b) { return blocks_[b].terms | std::views::keys; };
  std::size_t model = 0;
  while (is_last(model) != is_last(block) ||
         !std::ranges::equal(parities(model), parities(block))) {
    ++model;
  }
  return model;
}

std::vector<int> DiagonalBlocks::parities_of(std::size_t block) const {
  const Terms& terms = blocks_[block].terms;
  std::vector<int> first_rows;
  for (const auto& term : terms) first_rows.push_back(term.second[0]);
  std::vector<int> parities(terms.size());
  std::iota(parities.begin(), parities.end(), 0);
  std::ranges::sort(parities, {}, [&](int p) { return first_rows[static_cast<std::size_t>(p)]; });
  return parities;
}

Rotations DiagonalBlocks::strings_of(std::size_t block, const std::vector<int>& parities) const {
  constexpr unsigned char letter_z = 3;
  std::vector<const std::vector<bool>*> qubits;
  for (const auto& term : blocks_[block].terms) qubits.push_back(&term.first);
  Rotations strings{PauliFrame(list_.qubits(), static_cast<int>(parities.size())), {}};
  for (int row = 0; row < strings.frame.rows(); ++row) {
    const auto& own = *qubits[static_cast<std::size_t>(parities[static_cast<std::size_t>(row)])];
    for (int q = 0; q < list_.qubits(); ++q) {
      if (own[static_cast<std::size_t>(q)]) strings.frame.set_letter(row, q, letter_z);
    }
  }
  return strings;
}

/// Networks one after the other.
class DiagonalBlocks::Writer {
 public:
  explicit Writer(const RotationList& list) : list_(list), now_(list.qubits()) {}

  void write_singles(const std::vector<int>& rows) {
    for (const int row : rows) {
      const std::vector<int> labels = labels_of(list_, row);
      for (int q = 0; q < list_.qubits(); ++q) {
        const int label = labels[static_cast<std::size_t>(q)];
        if (label != 0) write_rotation(row, now_[end_of(q, label)]);
      }
    }
  }

  void write(const Block& block, const PlacedEvents& network) {
    std::vector<const std::vector<int>*> rows;
    for (const auto& term : block.terms) rows.push_back(&term.second);
    LabelFrame frame(list_.qubits());
    for (const NetworkEvent& event : network.events) {
      const Gate gate{now_[in_letters(block, event.gate.a)], now_[in_letters(block, event.gate.b)]};
      if (event.row < 0) {
        events_.push_back({gate, -1});
        frame.play(event.gate);
        continue;
      }
      for (const int row : *rows[static_cast<std::size_t>(event.row)]) write_rotation(row, gate.a);
    }
    rename(block, network.wires, frame);
  }

  PlacedEvents network() && {
    PlacedEvents network{std::move(events_), {}};
    for (int q = 0; q < list_.qubits(); ++q) {
      network.wires.push_back(wire_of(now_[end_of(q, label_z)]));
    }
    return network;
  }

 private:
  /// Of the list, where that of the strings of Z is `end`.
  static End in_letters(const Block& block, End end) {
    const int letter = block.labels[static_cast<std::size_t>(wire_of(end))];
    const int z = letter == 0 ? label_z : letter;
    const int x = z == label_x ? label_z : label_x;
    const int label = label_of(end);
    return end_of(wire_of(end), (label & label_z ? z : 0) ^ (label & label_x ? x : 0));
  }

  /// After a network that is closed: where the labels of each qubit have come to.
  void rename(const Block& block, const std::vector<int>& wires, const LabelFrame& frame) {
    const WireFrame before = now_;
    for (int q = 0; q < list_.qubits(); ++q) {
      for (int label = 1; label <= 3; ++label) {
        for (int there = 1; there <= 3; ++there) {
          const End end = end_of(wires[static_cast<std::size_t>(q)], there);
          if (frame.key(end) != key_of(end_of(q, label))) continue;
          now_[in_letters(block, end_of(q, label))] = before[in_letters(block, end)];
        }
      }
    }
  }

  void write_rotation(int row, End end) { events_.push_back({{end, end}, list_.number(row)}); }

  const RotationList& list_;
  WireFrame now_;  // the end on which each end is found
  std::vector<NetworkEvent> events_;
};

PlacedEvents DiagonalBlocks::search(const SearchBlock& search_block, Effort effort) const {
  std::vector<std::size_t> models;
  std::int64_t left = 0;
  for (std::size_t block = 0; block < count(); ++block) {
    stop_point();
    models.push_back(model_of(block));
    if (models[block] == block) ++left;
  }
  if (effort.steps != Effort{}.steps) effort.steps /= static_cast<std::uint64_t>(left);
  if (count() > 1) effort.on_better = nullptr;
  const auto deadline = effort.control.deadline;
  Writer writer(list_);
  std::vector<PlacedEvents> networks(count());
  for (std::size_t block = 0; block < count(); ++block) {
    if (models[block] == block) {
      const auto now = Control::Clock::now();
      if (deadline) effort.control.deadline = now + (*deadline - now) / left--;
      networks[block] = search_block(block, effort);
    }
    writer.write_singles(singles_[block]);
    writer.write(blocks_[block], networks[models[block]]);
  }
  writer.write_singles(singles_.back());
  return std::move(writer).network();
}

PlacedEvents search_parity_network(const PauliFrame& strings, const NetworkTask& task,
                                   const Effort& effort) {
  BitMatrix parities(strings.qubits(), strings.rows());
  for (int q = 0; q < strings.qubits(); ++q) {
    for (int row = 0; row < strings.rows(); ++row) {
      parities.set(q, row, strings.letter(row, q) != 0);
    }
  }
  Placed<PhaseStep> found = search_parities(parities, task, effort);
  PlacedEvents network{{}, std::move(found.wires)};
  for (const PhaseStep& step : found.gates) {
    const End target = end_of(step.target, label_z);
    network.events.push_back(step.is_cnot() ? NetworkEvent{cnot(step.control, step.target), -1}
                                            : NetworkEvent{{target, target}, step.term});
  }
  return network;
}

}  // namespace zelt::braidwerk::internal
