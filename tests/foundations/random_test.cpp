#include "zeltbraidwerk/foundations/random.h"

#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <set>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/foundations/signal_handler.h"

namespace {

using zelt::braidwerk::internal::bounded_draw;
using zelt::braidwerk::internal::Draw;
using zelt::braidwerk::internal::SeededDraw;
using zelt::braidwerk::random::uniform;

TEST(Random, StandardEngineIsThePublishedOne) {
  std::mt19937 engine(5489);  // the tenth thousandth number of the standard's text
  engine.discard(9999);
  EXPECT_EQ(engine(), 4123659995U);
  EXPECT_EQ(std::mt19937(0)(), 2357136044U);
  EXPECT_EQ(std::mt19937(1)(), 1791095845U);
}

TEST(Random, BoundedDrawKeepsLowBitsAndRejects) {
  struct Case {
    int a, b;
    std::vector<std::uint32_t> outputs;
    int expected;
    std::size_t taken;
  };
  for (const Case& c : {
           Case{3, 3, {}, 3, 0},
           Case{0, 1, {0xfffffffe}, 0, 1},
           Case{0, 1, {1}, 1, 1},
           Case{0, 2, {3, 7, 0xfffffffe}, 2, 3},
           Case{-5, 2, {0x80000007}, 2, 1},
           Case{10, 14, {5, 6, 7, 12}, 14, 4},
           Case{INT_MIN, INT_MAX, {0x80000000}, INT_MIN, 1},
           Case{INT_MIN, INT_MAX, {5}, 5, 1},
           Case{INT_MIN, INT_MAX - 1, {0xffffffff, 0xfffffffe}, INT_MAX - 1, 2},
       }) {
    std::size_t taken = 0;
    const auto engine = [&] { return c.outputs.at(taken++); };
    EXPECT_EQ(bounded_draw(engine, c.a, c.b), c.expected);
    EXPECT_EQ(taken, c.taken);
  }
}

TEST(Random, SharedSourceStaysInBoundsAndReachesThem) {
  EXPECT_EQ(uniform(-4, -4), -4);
  std::set<int> seen;
  for (int k = 0; k < 1000; ++k) seen.insert(uniform(-2, 3));
  EXPECT_EQ(seen, (std::set{-2, -1, 0, 1, 2, 3}));
  std::set<unsigned> seeds;
  for (int k = 0; k < 8; ++k) seeds.insert(zelt::braidwerk::random::get_random_seed());
  EXPECT_GT(seeds.size(), 6u);
}

TEST(Random, SeededDrawsRepeatAndStreamsDiffer) {
  const auto draws = [](std::uint64_t seed, std::uint32_t stream) {
    const Draw draw = SeededDraw(seed, stream);
    std::vector<int> values;
    for (int k = 0; k < 8; ++k) values.push_back(draw(0, 999));
    return values;
  };
  EXPECT_EQ(draws(7, 1), draws(7, 1));
  EXPECT_NE(draws(7, 1), draws(7, 2));
  EXPECT_NE(draws(7, 1), draws(7 + (1ull << 32), 1));
}

TEST(SignalHandlerDeathTest, NamesTheSignalAndExits) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto exits = [](int code) { return testing::ExitedWithCode(code); };
  EXPECT_EXIT(cpp_signal_handler(2), exits(2), "^Caught a SIGINT\n$");
  EXPECT_EXIT(cpp_signal_handler(1), exits(1), "^$");
  for (const auto& [number, name] : {std::pair{SIGTERM, "SIGTERM"},
                                     {SIGSEGV, "SIGSEGV"},
                                     {SIGINT, "SIGINT"},
                                     {SIGILL, "SIGILL"},
                                     {SIGABRT, "SIGABRT"},
                                     {SIGFPE, "SIGFPE"}}) {
    EXPECT_EXIT((setup_cpp_signal_handler(), std::raise(number)), exits(number),
                "Caught a " + std::string(name));
  }
}

}  // namespace
