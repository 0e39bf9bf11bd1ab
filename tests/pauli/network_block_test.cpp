#include "zeltbraidwerk/pauli/search/internal/network_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace {

using namespace zelt::braidwerk::internal;

std::vector<NetworkEvent> random_events(std::mt19937& rng) {
  const auto below = [&](int bound) {
    return static_cast<int>(rng() % static_cast<unsigned>(bound));
  };
  std::vector<NetworkEvent> events;
  const int count = 2 + below(12);
  for (int row = 0; row < count; ++row) {
    const int a = below(3);
    const End end = end_of(a, 1 + below(3));
    if (below(3) != 0) {
      events.push_back({{end, end}, row});
    } else {
      events.push_back({{end, end_of((a + 1 + below(2)) % 3, 1 + below(3))}, -1});
    }
  }
  return events;
}

/// Of the same strings, in another order.
std::vector<NetworkEvent> with_rotations_exchanged(std::vector<NetworkEvent> events) {
  for (std::size_t k = 1; k < events.size(); ++k) {
    if (events[k - 1].row >= 0 && events[k].row >= 0) std::swap(events[k - 1], events[k]);
  }
  return events;
}

std::vector<NetworkEvent> on_places(std::vector<NetworkEvent> events,
                                    const NetworkBlock::WireOrder& places) {
  const auto placed = [&](End end) {
    return end_of(places[static_cast<std::size_t>(wire_of(end))], label_of(end));
  };
  for (NetworkEvent& event : events) event.gate = {placed(event.gate.a), placed(event.gate.b)};
  return events;
}

/// Also where the same block comes with its wires in another order. Searches in vain are left out
/// then, and everything else, draws included, stays the same.
TEST(NetworkBlock, FindsWithItsMemoryWhatItFindsWithout) {
  std::mt19937 random(1);
  for (const bool in_order : {true, false}) {
    NetworkBlock remembers(in_order);
    std::vector<std::vector<NetworkEvent>> blocks;
    for (int k = 0; k < 40; ++k) {
      blocks.push_back(random_events(random));
      blocks.push_back(with_rotations_exchanged(blocks.back()));
    }
    NetworkBlock::WireOrder places{0, 1, 2};
    Rng rng(1, 2);
    int found = 0;
    int in_vain = 0;
    for (int round = 0; round < 4000; ++round) {
      std::ranges::shuffle(places, random);
      NetworkBlock::WireOrder wires{};
      for (std::uint8_t wire = 0; wire < 3; ++wire) wires[places[wire]] = wire;
      const auto events = on_places(blocks[random() % blocks.size()], places);
      const bool end_is_free = random() % 4 == 0;
      NetworkBlock fresh(in_order);
      ASSERT_TRUE(fresh.read(events, end_is_free));
      ASSERT_TRUE(remembers.read(events, end_is_free, wires));
      const int most = std::max(fresh.gates() - 1 + static_cast<int>(random() % 3), 0);
      const unsigned pairs = random() % 3 == 0 ? 1 + static_cast<unsigned>(random() % 6) : 7;
      const int patience = random() % 8 == 0 ? 400 : 30;
      Rng same = rng;
      const bool is_found = fresh.rewrite(most, pairs, patience, rng);
      ASSERT_EQ(remembers.rewrite(most, pairs, patience, same), is_found);
      EXPECT_EQ(same.next(), Rng(rng).next());
      (is_found ? found : in_vain) += 1;
      if (!is_found) continue;
      ASSERT_EQ(remembers.events().size(), fresh.events().size());
      for (std::size_t k = 0; k < fresh.events().size(); ++k) {
        EXPECT_EQ(remembers.events()[k].gate, fresh.events()[k].gate);
        EXPECT_EQ(remembers.events()[k].row, fresh.events()[k].row);
      }
      for (int place = 0; place < 3; ++place) {
        for (int label = 1; label <= 3; ++label) {
          EXPECT_EQ(remembers.ends()[end_of(place, label)], fresh.ends()[end_of(place, label)]);
        }
      }
    }
    EXPECT_GT(found, 500);
    EXPECT_GT(in_vain, 500);
  }
}

}  // namespace
