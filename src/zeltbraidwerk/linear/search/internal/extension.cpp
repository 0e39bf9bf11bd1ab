#include "zeltbraidwerk/linear/search/internal/extension.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "zeltbraidwerk/linear/search/internal/block_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/linear/search/internal/sum_decoder.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

namespace {

/// An output and an input taken off, and what ties them to the rest: the output is the input plus
/// `parity` of the other inputs, and `spread` marks the other outputs it belongs to.
struct Peeled {
  int row;
  int col;
  std::vector<Word> parity;  // by column
  std::vector<Word> spread;  // by row
};

struct Peeling {
  std::vector<int> rows;  // left
  std::vector<int> cols;
  BitMatrix rest;
  std::vector<Peeled> peeled;
};

/// Takes off the pair whose lines are lightest, give or take a little, until `core` are left.
Peeling peel(const BitMatrix& m, int core, Rng& rng) {
  const int n = m.rows();
  Peeling result{std::vector<int>(static_cast<std::size_t>(n)), {}, m, {}};
  std::iota(result.rows.begin(), result.rows.end(), 0);
  result.cols = result.rows;
  while (static_cast<int>(result.rows.size()) > core) {
    BitMatrix& rest = result.rest;
    const BitMatrix across = rest.transposed();
    std::vector<int> column_weight(static_cast<std::size_t>(n));
    for (const int c : result.cols)
      column_weight[static_cast<std::size_t>(c)] = across.row_weight(c);
    float lightest = 4.0F * static_cast<float>(n);
    Peeled next{};
    for (const int r : result.rows) {
      const int row_weight = rest.row_weight(r);
      for_each_bit(rest.row(r), rest.stride(), [&](int c) {
        const float both =
            static_cast<float>(row_weight + column_weight[static_cast<std::size_t>(c)]) +
            1.5F * rng.unit();
        if (both < lightest) {
          lightest = both;
          next.row = r;
          next.col = c;
        }
      });
    }
    next.parity.assign(rest.row(next.row), rest.row(next.row) + rest.stride());
    next.spread.assign(across.row(next.col), across.row(next.col) + across.stride());
    const auto flip = [](std::vector<Word>& bits, int k) {
      bits[static_cast<std::size_t>(k / word_bits)] ^= Word{1} << (k % word_bits);
    };
    flip(next.parity, next.col);
    flip(next.spread, next.row);
    for_each_bit(next.spread.data(), rest.stride(), [&](int r) { rest.add_row(next.row, r); });
    rest.add_row(next.row, next.row);  // both lines are empty now
    std::erase(result.rows, next.row);
    std::erase(result.cols, next.col);
    result.peeled.push_back(std::move(next));
  }
  return result;
}

BitMatrix core_of(const Peeling& peeling) {
  const auto size = static_cast<int>(peeling.rows.size());
  BitMatrix core(size, size);
  for (int r = 0; r < size; ++r) {
    for (int c = 0; c < size; ++c) {
      core.set(r, c,
               peeling.rest.get(peeling.rows[static_cast<std::size_t>(r)],
                                peeling.cols[static_cast<std::size_t>(c)]));
    }
  }
  return core;
}

/// Puts the gates of a further wire between those of a list.
class WireDecoder {
 public:
  WireDecoder(int n, const GateList& list, const std::vector<int>& present)
      : n_(n),
        list_(list),
        present_(present),
        place_(static_cast<std::size_t>(n), -1),
        receives_(static_cast<int>(present.size())),
        sends_(static_cast<int>(present.size())) {
    for (std::size_t k = 0; k < present.size(); ++k) {
      place_[static_cast<std::size_t>(present[k])] = static_cast<int>(k);
    }
  }

  struct Insertion {
    int time;  // before the gate of this number
    Gate gate;
  };

  /// The insertions for a wire that changes from receiving to sending at a time.
  std::vector<Insertion> insertions(const Peeled& wire, int split, int exchanges, Rng& rng) {
    std::vector<Insertion> found;
    const auto size = static_cast<int>(present_.size());
    std::vector<Word> target(static_cast<std::size_t>(words_for(size)));
    const auto flip = [&](int place) {
      target[static_cast<std::size_t>(place / word_bits)] ^= Word{1} << (place % word_bits);
    };

    // Parities that stand on some wire up to the split.
    const auto collect = [&](SumDecoder& pool, std::vector<std::pair<int, int>>& where,
                             bool early) {
      pool.clear();
      where.clear();
      BitMatrix values = BitMatrix::identity(size);
      const auto note = [&](int time, int place) {
        pool.push(values.row(place));
        where.emplace_back(time, place);
      };
      const int all = list_.count();
      for (int place = 0; place < size; ++place) note(early ? 0 : all, place);
      for (int k = 0; early ? k < split : k < all - split; ++k) {
        const Gate& gate = list_.gates[static_cast<std::size_t>(early ? k : all - 1 - k)];
        const int control = place_[static_cast<std::size_t>(wire_of(gate.a))];
        const int onto = place_[static_cast<std::size_t>(wire_of(gate.b))];
        if (early) {
          values.add_row(control, onto);
          note(k + 1, onto);
        } else {
          // What is sent to the control reaches the outputs of the target too.
          values.add_row(onto, control);
          note(all - 1 - k, control);
        }
      }
    };
    const auto wire_at = [&](int place) { return present_[static_cast<std::size_t>(place)]; };

    for_each_bit(wire.parity.data(), words_for(n_),
                 [&](int c) { flip(place_[static_cast<std::size_t>(c)]); });
    collect(receives_, where_, true);
    for (const int k : receives_.decode(target.data(), exchanges, rng)) {
      const auto& [time, place] = where_[static_cast<std::size_t>(k)];
      found.push_back({time, cnot(wire_at(place), wire.col)});
    }
    std::fill(target.begin(), target.end(), 0);
    for (int place = 0; place < size; ++place) {
      const int row = wire_of(list_.origin[end_of(wire_at(place), 0)]);
      if ((wire.spread[static_cast<std::size_t>(row / word_bits)] >> (row % word_bits)) & 1) {
        flip(place);
      }
    }
    collect(sends_, where_, false);
    for (const int k : sends_.decode(target.data(), exchanges, rng)) {
      const auto& [time, place] = where_[static_cast<std::size_t>(k)];
      found.push_back({time, cnot(wire.col, wire_at(place))});
    }
    return found;
  }

 private:
  int n_;
  const GateList& list_;
  const std::vector<int>& present_;
  std::vector<int> place_;  // by wire
  SumDecoder receives_;
  SumDecoder sends_;
  std::vector<std::pair<int, int>> where_;  // time and place of each vector of a pool
};

std::vector<Gate> inserted(const std::vector<Gate>& gates,
                           std::vector<WireDecoder::Insertion> insertions) {
  // At the split itself what is received comes before what is sent; the order is kept there.
  std::stable_sort(insertions.begin(), insertions.end(),
                   [](const auto& a, const auto& b) { return a.time < b.time; });
  std::vector<Gate> result;
  result.reserve(gates.size() + insertions.size());
  auto next = insertions.begin();
  for (int time = 0; time <= static_cast<int>(gates.size()); ++time) {
    for (; next != insertions.end() && next->time == time; ++next) result.push_back(next->gate);
    if (time < static_cast<int>(gates.size())) {
      result.push_back(gates[static_cast<std::size_t>(time)]);
    }
  }
  return result;
}

/// The core's circuit, on all wires; a wire that is still to come leads to its own output.
GateList core_circuit(const Peeling& peeling, int n, std::uint64_t steps, BlockRewriter& rewriter,
                      Rng& rng, Meter& meter) {
  const auto size = static_cast<int>(peeling.rows.size());
  GateList list(n, {});
  Reduction problem(size, {.exponent = -0.5});
  const BeamOptions beam{.width = 300, .noise = 1e-4};
  auto found =
      BeamSearch<Reduction>(problem, beam, rng, meter).run(problem.start(core_of(peeling)));
  if (found.empty()) return list;
  GateList core = problem.circuit(found[0].state, found[0].moves);
  walk_round(core, rewriter, steps, {}, rng, meter, [](const GateList&, bool) { return false; });
  const auto col = [&](End end) {
    return end_of(peeling.cols[static_cast<std::size_t>(wire_of(end))], label_of(end));
  };
  for (const Gate& gate : core.gates) list.gates.push_back({col(gate.a), col(gate.b)});
  const auto lead = [&](int wire, int row) {
    for (int label = 0; label < 4; ++label) list.origin[end_of(wire, label)] = end_of(row, label);
  };
  for (int k = 0; k < size; ++k) {
    const int row = wire_of(core.origin[end_of(k, 0)]);
    lead(peeling.cols[static_cast<std::size_t>(k)], peeling.rows[static_cast<std::size_t>(row)]);
  }
  for (const Peeled& pair : peeling.peeled) lead(pair.col, pair.row);
  return list;
}

}  // namespace

bool extend(const BitMatrix& m, const ExtensionOptions& options, Rng& rng, Meter& meter,
            GateList& list) {
  const int n = m.rows();
  BlockRewriter rewriter(std::min(n, most_window_wires), true);
  Peeling peeling = peel(m, options.core, rng);
  list = core_circuit(peeling, n, options.core_steps, rewriter, rng, meter);
  std::vector<int> present = peeling.cols;
  for (auto wire = peeling.peeled.rbegin(); wire != peeling.peeled.rend(); ++wire) {
    if (meter.ended()) {
      list = GateList(n, {});
      return false;
    }
    WireDecoder decoder(n, list, present);
    std::vector<WireDecoder::Insertion> best;
    for (int k = 0; k < options.splits; ++k) {
      const float part = 0.3F + 0.4F * rng.unit();
      const int split = static_cast<int>(part * static_cast<float>(list.count()));
      auto found = decoder.insertions(*wire, split, options.exchanges, rng);
      if (k == 0 || found.size() < best.size()) best = std::move(found);
    }
    list.gates = inserted(list.gates, std::move(best));
    present.push_back(wire->col);
    walk_round(list, rewriter, options.wire_steps, {0.1F, 0.01F}, rng, meter,
               [](const GateList&, bool) { return false; });
  }
  return true;
}

}  // namespace zelt::braidwerk::internal
