#include "zeltbraidwerk/pauli/search/internal/network_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network.h"

namespace {

using namespace zelt::braidwerk::internal;

constexpr int wires = 6;

/// By end, the Pauli string from before the network that has become this label: X bits, Z bits.
using Strings = std::array<unsigned, 4 * wires>;

bool anticommute(unsigned a, unsigned b) {
  const unsigned low = (1U << wires) - 1;
  return std::popcount((a & low & b >> wires) ^ (a >> wires & b & low)) % 2 != 0;
}

/// The strings at the end, those of the rotations by row, and which of these come in which order.
struct Meaning {
  Strings end{};
  std::map<int, unsigned> rotations;
  std::vector<std::pair<int, int>> order;

  explicit Meaning(const std::vector<NetworkEvent>& events) {
    for (int q = 0; q < wires; ++q) {
      end[end_of(q, label_x)] = 1U << q;
      end[end_of(q, label_z)] = 1U << (wires + q);
      end[end_of(q, label_y)] = end[end_of(q, label_x)] | end[end_of(q, label_z)];
    }
    for (const NetworkEvent& event : events) {
      const auto [a, b] = event.gate;
      if (event.row >= 0) {
        for (const auto& [row, string] : rotations) {
          if (anticommute(string, end[a])) order.emplace_back(row, event.row);
        }
        rotations[event.row] = end[a];
        continue;
      }
      const unsigned of_a = end[a];
      const unsigned of_b = end[b];
      for (int label = 1; label <= 3; ++label) {
        if (label != label_of(a)) end[end_of(wire_of(a), label)] ^= of_b;
        if (label != label_of(b)) end[end_of(wire_of(b), label)] ^= of_a;
      }
    }
    std::ranges::sort(order);
  }
};

std::vector<NetworkEvent> random_network(std::mt19937& random) {
  std::vector<NetworkEvent> events;
  const auto below = [&](int bound) {
    return static_cast<int>(random() % static_cast<unsigned>(bound));
  };
  for (int k = 0; k < 90; ++k) {
    const int a = below(wires);
    const End end = end_of(a, 1 + below(3));
    const End other = end_of((a + 1 + below(wires - 1)) % wires, 1 + below(3));
    events.push_back(k % 3 == 0 ? NetworkEvent{{end, end}, k} : NetworkEvent{{end, other}, -1});
  }
  return events;
}

/// In place as well as on the way, when wires have changed their roles.
TEST(NetworkWalk, KeepsRotationsAndOperatorWhileItExchangesWires) {
  std::mt19937 random(1);
  int in_place = 0;
  int elsewhere = 0;
  for (int k = 0; k < 8; ++k) {
    const auto given = random_network(random);
    const Meaning wanted(given);
    NetworkWalk walk(given, wires, true, false, nullptr, 60, true);
    Rng rng(7, static_cast<std::uint64_t>(k));
    for (int step = 0; step < 4000; ++step) {
      if (!walk.step(0.1F, rng) || step % 8 != 0) continue;
      const auto events = walk.events();
      const Meaning meaning(events);
      ASSERT_EQ(meaning.rotations, wanted.rotations);
      ASSERT_EQ(meaning.order, wanted.order);
      ASSERT_EQ(walk.count(), gates_of(events));
      bool same_wires = true;
      for (int q = 0; q < wires; ++q) {
        for (int label = 1; label <= 3; ++label) {
          const End now = walk.names()[end_of(q, label)];
          ASSERT_EQ(meaning.end[now], wanted.end[end_of(q, label)]);
          same_wires &= wire_of(now) == q;
        }
      }
      ASSERT_EQ(walk.in_place(), same_wires);
      (same_wires ? in_place : elsewhere) += 1;
    }
  }
  EXPECT_GT(in_place, 100);
  EXPECT_GT(elsewhere, 100);
}

int shortest_in_place(const std::vector<NetworkEvent>& given, bool exchanges) {
  NetworkWalk walk(given, wires, true, false, nullptr, 60, exchanges);
  Rng rng(3, 0);
  int least = walk.count();
  for (int step = 0; step < 30'000; ++step) {
    const bool changed = walk.step(0.2F * static_cast<float>(30'000 - step) / 30'000, rng);
    if (changed && walk.in_place()) least = std::min(least, walk.count());
  }
  return least;
}

/// Two wires that change roles twice, with all else in between: two gates each time.
TEST(NetworkWalk, FindsExchangesThatAreFarApart) {
  std::mt19937 random(2);
  int with = 0;
  int without = 0;
  for (int k = 0; k < 6; ++k) {
    auto given = random_network(random);
    const NetworkEvent one{{end_of(0, label_x), end_of(1, label_x)}, -1};
    const NetworkEvent other{{end_of(0, label_z), end_of(1, label_z)}, -1};
    given.insert(given.begin(), {one, other});
    given.insert(given.end(), {other, one});
    with += shortest_in_place(given, true);
    without += shortest_in_place(given, false);
  }
  EXPECT_LT(with, without - 6);
}

}  // namespace
