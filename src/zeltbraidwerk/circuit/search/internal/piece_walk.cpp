#include "zeltbraidwerk/circuit/search/internal/piece_walk.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <limits>
#include <thread>
#include <utility>

#include "zeltbraidwerk/circuit/search/internal/tuning.h"
#include "zeltbraidwerk/pauli/search/internal/network_walk.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {
namespace {

struct Piece {
  std::vector<NetworkEvent> events;
  std::vector<End> names;   // of the ends after it, by end of the piece before
  std::uint64_t steps = 0;  // that were made
};

class PieceWalk {
 public:
  PieceWalk(const std::vector<NetworkEvent>& events, const PieceWalkOptions& options,
            const Control& control)
      : events_(events), options_(options), control_(control) {
    Rng rng(options.seed, 0);
    const std::size_t size = events.size();
    first_.push_back(0);
    if (options.piece > 0 && size > static_cast<std::size_t>(circuit_tuning.whole_piece)) {
      const auto piece = static_cast<std::size_t>(options.piece);
      std::size_t cut = piece / 2 + static_cast<std::size_t>(rng.below(options.piece));
      for (; cut + piece / 2 < size; cut += piece) first_.push_back(cut);
    }
    first_.push_back(size);
    pieces_.resize(first_.size() - 1);
  }

  PieceWalkResult run() {
    const auto most = static_cast<int>(pieces_.size());
    std::vector<std::jthread> helpers;
    for (int k = 1; k < std::min(options_.jobs, most); ++k) {
      helpers.emplace_back([this] { take_pieces(); });
    }
    take_pieces();
    helpers.clear();
    return joined();
  }

 private:
  void take_pieces() {
    for (std::size_t k = next_++; k < pieces_.size(); k = next_++) walk(k);
  }

  std::uint64_t share(std::size_t piece, std::uint64_t steps) const {
    const auto size = static_cast<double>(first_[piece + 1] - first_[piece]);
    return static_cast<std::uint64_t>(static_cast<double>(steps) * size /
                                      static_cast<double>(events_.size()));
  }

  void walk(std::size_t k) {
    Piece& piece = pieces_[k];
    piece.events.assign(events_.begin() + static_cast<std::ptrdiff_t>(first_[k]),
                        events_.begin() + static_cast<std::ptrdiff_t>(first_[k + 1]));
    const std::uint64_t planned = share(k, options_.steps);
    const std::uint64_t most = std::min(planned, share(k, options_.most_steps));
    Rng rng(options_.seed, k + 1);
    NetworkWalk walk(piece.events, options_.qubits, true, false, options_.device,
                     network_target_tuning.walk_patience, options_.exchanges);
    const Cooling cooling = drawn_cooling(rng);
    const auto measure = [&] { return options_.by_layers ? walk.depth() : walk.count(); };
    const auto keep = [&] {
      piece.events = walk.events();
      piece.names = walk.names();
    };
    piece.names = walk.names();
    int least = options_.by_layers ? depth_of(piece.events, options_.qubits) : walk.count();
    int most_layers = options_.most_layers;
    if (pieces_.size() > 1 && most_layers < std::numeric_limits<int>::max()) {
      most_layers = std::min(most_layers, depth_of(piece.events, options_.qubits));
    }
    for (; piece.steps < most; ++piece.steps) {
      if (piece.steps % 64 == 0 && control_.stop_requested()) return;
      const float uphill =
          cooling.at(static_cast<double>(piece.steps) / static_cast<double>(planned));
      const bool changed = walk.step(uphill, rng, options_.by_layers ? least : most_layers);
      if (changed && walk.in_place() && measure() < least) {
        least = measure();
        keep();
      }
    }
    if (most == planned && !options_.by_layers && walk.in_place() && walk.count() == least) {
      keep();
    }
  }

  /// The ends of a piece have the names that all pieces before gave them.
  PieceWalkResult joined() {
    PieceWalkResult result;
    std::vector<End> names(4 * static_cast<std::size_t>(options_.qubits));
    for (std::size_t end = 0; end < names.size(); ++end) names[end] = static_cast<End>(end);
    for (Piece& piece : pieces_) {
      // A name of the piece stands for what the pieces before call it.
      for (const NetworkEvent& event : piece.events) {
        result.events.push_back({{names[event.gate.a], names[event.gate.b]}, event.row});
      }
      std::vector<End> after = names;
      for (std::size_t end = 0; end < names.size(); ++end) after[end] = names[piece.names[end]];
      names = std::move(after);
      result.steps += piece.steps;
    }
    return result;
  }

  const std::vector<NetworkEvent>& events_;
  const PieceWalkOptions& options_;
  const Control& control_;
  std::vector<std::size_t> first_;  // events of the pieces, and their end
  std::vector<Piece> pieces_;
  std::atomic<std::size_t> next_ = 0;
};

}  // namespace

PieceWalkResult walk_in_pieces(const std::vector<NetworkEvent>& events,
                               const PieceWalkOptions& options, const Control& control) {
  return PieceWalk(events, options, control).run();
}

}  // namespace zelt::braidwerk::internal
