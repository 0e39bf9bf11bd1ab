#include "zeltbraidwerk/linear/syndrome_decoding.h"

#include <algorithm>

#include "zeltbraidwerk/linear/internal/syndrome_decoder.h"

namespace synthesis {
namespace {

using zelt::braidwerk::internal::Control;
using zelt::braidwerk::internal::DecodingQueue;
using zelt::braidwerk::internal::pack_row;
using zelt::braidwerk::internal::ParityList;
using zelt::braidwerk::internal::SyndromeDecoder;
using zelt::braidwerk::internal::unpack_row;
using zelt::braidwerk::internal::Word;

/// The columns of H listed in idx, in the order of the syndrome's places.
ParityList packed_parities(const BoolMatrix& H, int length, const std::vector<int>& idx) {
  ParityList parities(length);
  BoolRow places(static_cast<std::size_t>(length));
  for (const BoolRow& row : H) {
    for (std::size_t b = 0; b < places.size(); ++b) {
      places[b] = row[static_cast<std::size_t>(idx[b])];
    }
    pack_row(places, 0, length, parities.append());
  }
  return parities;
}

std::vector<Word> packed(const BoolRow& s, int stride) {
  std::vector<Word> words(static_cast<std::size_t>(stride));
  pack_row(s, 0, static_cast<int>(s.size()), words.data());
  return words;
}

std::vector<int> decode(const BoolMatrix& H, const BoolRow& s, int depth, int width,
                        const std::vector<int>& idx, bool keep_states) {
  std::vector<int> result;
  // A zero syndrome is solved without a look at H.
  if (std::ranges::find(s, true) == s.end()) return result;
  const ParityList parities = packed_parities(H, static_cast<int>(s.size()), idx);
  const Control control;
  SyndromeDecoder(parities, std::max(width, 1), control)
      .decode(packed(s, parities.stride).data(), depth, keep_states, result);
  return result;
}

/// Expands the states of `current` a number of times. In the packed queue the path of a state
/// begins with its place in `current`, which stands for the path that it comes with.
std::pair<bool, int> expand(const BoolMatrix& H, int length, int levels, int width,
                            const std::vector<int>& idx, std::vector<DecodingEntry>& current,
                            std::vector<int>& result, int count) {
  const ParityList parities = packed_parities(H, length, idx);
  DecodingQueue queue;
  queue.stride = parities.stride;
  queue.path_length = 1;
  std::vector<std::vector<int>> paths;
  for (int k = 0; k < count; ++k) {
    const auto& [weight, residual, path] = current[static_cast<std::size_t>(k)];
    queue.push_root(packed(residual, parities.stride).data());
    queue.paths.push_back(k);
    paths.push_back(path);
  }
  const auto append_path = [&](const int* steps, std::size_t number, std::vector<int>& out) {
    const std::vector<int>& begun = paths[static_cast<std::size_t>(*steps)];
    out.insert(out.end(), begun.begin(), begun.end());
    out.insert(out.end(), steps + 1, steps + number);
  };

  const Control control;
  SyndromeDecoder decoder(parities, width, control);
  for (int level = 0; level < levels; ++level) {
    std::vector<int> steps;
    const SyndromeDecoder::Outcome outcome = decoder.expand(queue, steps);
    if (outcome == SyndromeDecoder::Outcome::stopped) break;
    if (outcome == SyndromeDecoder::Outcome::solved) {
      append_path(steps.data(), steps.size(), result);
      return {true, 0};
    }
  }
  const auto size = static_cast<std::size_t>(queue.size());
  if (current.size() < size) current.resize(size);
  for (int k = 0; k < queue.size(); ++k) {
    auto& [weight, residual, path] = current[static_cast<std::size_t>(k)];
    weight = queue.weights[static_cast<std::size_t>(k)];
    residual.resize(static_cast<std::size_t>(length));
    unpack_row(queue.residual(k), 0, length, residual);
    path.clear();
    append_path(queue.path(k), static_cast<std::size_t>(queue.path_length), path);
  }
  return {false, queue.size()};
}

}  // namespace

std::vector<int> SyndromeDecodingSolver_heuristic(BoolMatrix const& H, BoolRow s, int /*length*/,
                                                  int depth, int width, std::vector<int>& idx) {
  return decode(H, s, depth, width, idx, true);
}

std::vector<int> SyndromeDecodingSolver_heuristic_bis(BoolMatrix const& H, BoolRow s,
                                                      int /*length*/, int depth, int width,
                                                      std::vector<int>& idx) {
  return decode(H, s, depth, width, idx, false);
}

std::pair<bool, int> create_queues(BoolMatrix const& H, BoolRow const& s, int /*length*/, int depth,
                                   int width, std::vector<int>& idx,
                                   std::vector<DecodingEntry>& current,
                                   std::vector<DecodingEntry>& /*next*/,
                                   std::vector<DecodingEntry>& /*scratch*/,
                                   std::vector<int>& result) {
  if (current.empty()) current.resize(1);
  current[0] = {0, s, {}};
  return expand(H, static_cast<int>(s.size()), depth, width, idx, current, result, 1);
}

std::pair<bool, int> update_queues(BoolMatrix const& H, BoolRow const& s, int /*length*/,
                                   int /*depth*/, int width, std::vector<int>& idx,
                                   std::vector<DecodingEntry>& current,
                                   std::vector<DecodingEntry>& /*next*/,
                                   std::vector<DecodingEntry>& /*scratch*/,
                                   std::vector<int>& result, int count) {
  return expand(H, static_cast<int>(s.size()), 1, width, idx, current, result, count);
}

bool Compare(std::tuple<BoolRow, std::vector<int>> a, std::tuple<BoolRow, std::vector<int>> b) {
  const auto ones = [](const BoolRow& row) { return std::ranges::count(row, true); };
  return ones(std::get<0>(a)) < ones(std::get<0>(b));
}

}  // namespace synthesis
