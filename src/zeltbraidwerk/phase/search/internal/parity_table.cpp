#include "zeltbraidwerk/phase/search/internal/parity_table.h"

#include <algorithm>
#include <bit>
#include <string>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/phase/search/internal/sum_family.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int wires = 4;
constexpr SmallMatrix identity = 0x8421;

constexpr std::array<std::uint8_t, sum_slots> sum_of_slot = {3, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15};
constexpr std::uint8_t slot_of(unsigned sum) {
  return static_cast<std::uint8_t>(sum < 4 ? 0 : sum < 8 ? sum - 4 : sum - 5);
}

std::uint8_t renamed(unsigned sum, const WireNames& names) {
  unsigned to = 0;
  for (int c = 0; c < wires; ++c) to |= ((sum >> c) & 1U) << names[static_cast<std::size_t>(c)];
  return static_cast<std::uint8_t>(to);
}

SmallMatrix renamed_matrix(SmallMatrix m, const WireNames& names) {
  SmallMatrix to = 0;
  for (int r = 0; r < wires; ++r) {
    to |= static_cast<SmallMatrix>(renamed((m >> (wires * r)) & 15U, names))
          << (wires * names[static_cast<std::size_t>(r)]);
  }
  return to;
}

/// Row or sum in the wires after a CNOT.
constexpr unsigned sum_after(unsigned sum, int control, int target) {
  return sum ^ (((sum >> target) & 1U) << control);
}
constexpr SmallMatrix matrix_after(SmallMatrix m, int control, int target) {
  return m ^ (((m >> target) & 0x1111U) << control);
}

bool invertible(SmallMatrix m) {
  unsigned span = 1;  // of the rows so far, one bit per sum
  for (int r = 0; r < wires; ++r) {
    const unsigned row = (m >> (wires * r)) & 15U;
    if ((span >> row) & 1U) return false;
    unsigned more = 0;
    for (unsigned sum = 0; sum < 16; ++sum) more |= ((span >> sum) & 1U) << (sum ^ row);
    span |= more;
  }
  return true;
}

bool is_permutation(SmallMatrix m) {
  unsigned columns = 0;
  for (int r = 0; r < wires; ++r) {
    const unsigned row = (m >> (wires * r)) & 15U;
    if (!std::has_single_bit(row)) return false;
    columns |= row;
  }
  return columns == 15;
}

}  // namespace

/// One move from a matrix that is the first of its kind.
struct ParityTable::Step {
  std::uint16_t kind;  // after the move
  std::uint8_t shown;  // slot there of the sum that the move makes
  Slots image;         // slot there of each slot here
};

ParityTable::ParityTable(WindowGraph graph, bool permuted) {
  // Names of wires that keep the graph.
  std::vector<WireNames> namings = all_names(wires);
  std::erase_if(namings,
                [&](const WireNames& names) { return renamed(wires, graph, names) != graph; });
  fill_renamed_sets(namings);
  const std::vector<SmallMatrix> first_of_kind = fill_places(namings);
  fill_moves(graph);
  constexpr std::uint32_t layout = 1;
  const std::string name =
      "phase-parities-" + std::to_string(graph) + (permuted ? "-anywhere" : "-in-place");
  distance_ = stored_table<std::uint8_t>(name, layout, first_of_kind.size() * sets, [&] {
    return distances(first_of_kind, steps_between(first_of_kind, namings), permuted);
  });
  any_end_ = stored_table<std::uint16_t>(name + "-ends", layout, sets,
                                         [&] { return any_ends(first_of_kind); });
}

std::vector<std::uint16_t> ParityTable::any_ends(
    const std::vector<SmallMatrix>& first_of_kind) const {
  std::vector<std::uint16_t> ends;
  for (std::size_t set = 0; set < sets; ++set) {
    std::size_t best = 0;
    for (std::size_t kind = 1; kind < first_of_kind.size(); ++kind) {
      if (distance_[kind * sets + set] < distance_[best * sets + set]) best = kind;
    }
    ends.push_back(static_cast<std::uint16_t>(first_of_kind[best]));
  }
  return ends;
}

void ParityTable::fill_renamed_sets(const std::vector<WireNames>& namings) {
  renamed_.resize(namings.size());
  for (std::size_t k = 0; k < namings.size(); ++k) {
    for (unsigned set = 0; set < sets; ++set) {
      unsigned to = 0;
      for (unsigned rest = set; rest != 0; rest &= rest - 1) {
        to |= 1U << slot_of(renamed(sum_of_slot[static_cast<std::size_t>(std::countr_zero(rest))],
                                    namings[k]));
      }
      renamed_[k][set] = static_cast<std::uint16_t>(to);
    }
  }
}

/// Finds the kinds of matrices; returns the first matrix of each.
std::vector<SmallMatrix> ParityTable::fill_places(const std::vector<WireNames>& namings) {
  const auto inverse_of = [&](const WireNames& naming) {
    WireNames back{};
    for (std::uint8_t v = 0; v < back.size(); ++v) back[naming[v]] = v;
    return static_cast<std::uint8_t>(std::find(namings.begin(), namings.end(), back) -
                                     namings.begin());
  };
  constexpr std::uint16_t none = 0xffff;
  place_.assign(std::size_t{1} << (wires * wires), Place{none, 0});
  std::vector<SmallMatrix> first_of_kind;
  for (SmallMatrix m = 0; m < place_.size(); ++m) {
    if (place_[m].kind != none || !invertible(m)) continue;
    const auto kind = static_cast<std::uint16_t>(first_of_kind.size());
    first_of_kind.push_back(m);
    for (const WireNames& naming : namings) {
      Place& place = place_[renamed_matrix(m, naming)];
      if (place.kind == none) place = {kind, inverse_of(naming)};
    }
  }
  return first_of_kind;
}

void ParityTable::fill_moves(WindowGraph graph) {
  for (std::uint8_t t = 0; t < wires; ++t) {
    for (std::uint8_t c = 0; c < wires; ++c) {
      if (c == t || (graph & pair_bit(c, t)) == 0) continue;
      Move& move = moves_.emplace_back(Move{c, t, {}});
      for (unsigned set = 0; set < sets; ++set) {
        unsigned to = 0;
        for (unsigned rest = set; rest != 0; rest &= rest - 1) {
          const unsigned sum =
              sum_after(sum_of_slot[static_cast<std::size_t>(std::countr_zero(rest))], c, t);
          if (!std::has_single_bit(sum)) to |= 1U << slot_of(sum);
        }
        move.sets_after[set] = static_cast<std::uint16_t>(to);
      }
    }
  }
}

/// All moves of the first kind, then of the second, and so on.
std::vector<ParityTable::Step> ParityTable::steps_between(
    const std::vector<SmallMatrix>& first_of_kind, const std::vector<WireNames>& namings) const {
  std::vector<Step> steps;
  for (const SmallMatrix m : first_of_kind) {
    for (const Move& move : moves_) {
      const Place place = place_[matrix_after(m, move.control, move.target)];
      const unsigned made = (1U << move.control) | (1U << move.target);
      Step step{place.kind, 0, {}};
      for (std::size_t slot = 0; slot < sum_slots; ++slot) {
        // The sum that the move makes is a wire after it; the place that is free takes it.
        const unsigned sum = sum_of_slot[slot] == made
                                 ? made
                                 : sum_after(sum_of_slot[slot], move.control, move.target);
        step.image[slot] = slot_of(renamed(sum, namings[place.renaming]));
      }
      step.shown = step.image[slot_of(made)];
      steps.push_back(step);
    }
  }
  return steps;
}

/// Level by level: which sets can be shown within a number of gates, for all sets of a kind at
/// once.
std::vector<std::uint8_t> ParityTable::distances(const std::vector<SmallMatrix>& first_of_kind,
                                                 const std::vector<Step>& steps,
                                                 bool permuted) const {
  const std::size_t kinds = first_of_kind.size();
  std::vector<std::uint8_t> distances(kinds * sets, 255);
  std::vector<SumFamily> reached(kinds, SumFamily{});
  for (std::size_t kind = 0; kind < kinds; ++kind) {
    const SmallMatrix m = first_of_kind[kind];
    if (m == identity || (permuted && is_permutation(m))) {
      reached[kind][0] = 1;
      distances[kind * sets] = 0;
    }
  }
  bool any = true;
  for (std::uint8_t level = 1; any; ++level) {
    any = false;
    const std::vector<SumFamily> before = reached;
    const Step* step = steps.data();
    for (std::size_t kind = 0; kind < kinds; ++kind) {
      SumFamily& family = reached[kind];
      stop_point();
      for (std::size_t k = 0; k < moves_.size(); ++k, ++step) {
        SumFamily further = before[step->kind];
        forget_slot(further, step->shown);
        draw_back(further, step->image);
        for (std::size_t w = 0; w < family_words; ++w) family[w] |= further[w];
      }
      for (std::size_t w = 0; w < family_words; ++w) {
        std::uint64_t rest = family[w] & ~before[kind][w];
        any |= rest != 0;
        for (; rest != 0; rest &= rest - 1) {
          distances[kind * sets + w * 64 + static_cast<std::size_t>(std::countr_zero(rest))] =
              level;
        }
      }
    }
  }
  return distances;
}

const ParityTable& ParityTable::of(WindowGraph graph, bool permuted) {
  static TableCache<std::pair<WindowGraph, bool>, ParityTable> tables;
  return tables.get({graph, permuted}, [&] { return ParityTable(graph, permuted); });
}

SmallMatrix ParityTable::descend(SmallMatrix m, SumSet needed, bool detour, Rng& rng,
                                 std::vector<Gate>& block) const {
  unsigned set = slots_of(needed);
  int distance = distance_of(m, set);
  std::array<std::uint8_t, 12> chosen{};
  // The detour is made when `before` more gates have led closer.
  int before = detour ? rng.below(distance + 1) : -1;
  while (distance > 0 || before == 0) {
    const int wanted = before-- == 0 ? distance : distance - 1;
    std::size_t count = 0;
    for (std::size_t k = 0; k < moves_.size(); ++k) {
      const Move& move = moves_[k];
      chosen[count] = static_cast<std::uint8_t>(k);
      count +=
          distance_of(matrix_after(m, move.control, move.target), move.sets_after[set]) == wanted;
    }
    if (count == 0) continue;  // of detours alone
    const Move& move = moves_[chosen[static_cast<std::size_t>(rng.below(static_cast<int>(count)))]];
    block.push_back(cnot(move.control, move.target));
    m = matrix_after(m, move.control, move.target);
    set = move.sets_after[set];
    distance = wanted;
  }
  return m;
}

}  // namespace zelt::braidwerk::internal
