// The runner: which runs are made, which of them is the answer, and what ends it.
#include "zeltbraidwerk/search/internal/runs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace zelt::braidwerk::internal;
using std::chrono::milliseconds;
using synthesis::SearchPoint;
using synthesis::SynthesisOptions;

constexpr std::optional<int> endless = std::nullopt;

/// A run makes a circuit of that number of gates; its "circuit" is the number of the run.
Lane lane(const std::string& method, std::optional<int> runs, std::function<int(int)> gates,
          milliseconds time = milliseconds(0)) {
  return {.method = method, .runs = runs, .make = [gates, time](int run) {
            std::this_thread::sleep_for(time);
            return std::optional(made_circuit({gates(run), 1}, run));
          }};
}

struct Answer {
  std::string method;
  int run;
  synthesis::SynthesisResult result;
};

Answer answer(const std::vector<Lane>& lanes, const SynthesisOptions& options) {
  RunControl control(options.budget);
  BestRun best = best_of_runs(lanes, options, control);
  return {best.result.method, best.as<int>(), best.result};
}

SynthesisOptions on_threads(int jobs) {
  SynthesisOptions options;
  options.jobs = jobs;
  return options;
}

TEST(Runs, TheAnswerDoesNotDependOnTheNumberOfThreads) {
  const auto scattered = [](int run) { return 10 + run * 37 % 23; };
  const auto flat = [](int) { return 10; };
  for (const int jobs : {1, 2, 5, 0}) {
    const Answer best =
        answer({lane("first", 30, scattered), lane("second", 10, flat)}, on_threads(jobs));
    EXPECT_EQ(best.method, "first");
    EXPECT_EQ(best.run, 0);
    EXPECT_EQ(best.result.runs, 40);
    const Answer later =
        answer({lane("first", 30, [](int run) { return run == 0 || run % 7 != 0 ? 12 : 11; }),
                lane("second", 10, [](int run) { return run > 2 ? 11 : 13; })},
               on_threads(jobs));
    EXPECT_EQ(later.method + std::to_string(later.run), "first7");
    EXPECT_EQ(later.result.count, 11);
  }
}

// Of the engine before other methods, whatever ends first.
TEST(Runs, TheFirstRunThatMeetsTheBoundIsTheAnswer) {
  for (const int jobs : {1, 2, 5}) {
    for (const int engine_meets : {0, 3, 1000}) {
      RunControl control(std::nullopt);
      std::atomic<int> engine_runs = 0;
      const Lane plain =
          lane("plain", 200, [](int run) { return run >= 5 ? 2 : 3; }, milliseconds(1));
      const Lane engine{.method = "engine",
                        .runs = 200,
                        .make =
                            [&](int run) {
                              ++engine_runs;
                              control.effort(1).on_bound({2, 1});
                              std::this_thread::sleep_for(milliseconds(3));
                              const int gates = run >= engine_meets ? 2 : 3;
                              return std::optional(made_circuit({gates, 1}, run));
                            },
                        .proves = true};
      const SynthesisOptions options = on_threads(jobs);
      BestRun best = best_of_runs({plain, engine}, options, control);
      const bool met = engine_meets < 200;
      EXPECT_EQ(best.result.method, met ? "engine" : "plain");
      EXPECT_EQ(best.as<int>(), met ? engine_meets : 5);
      EXPECT_EQ(best.result.least_count, 2);
      if (met) {
        EXPECT_LE(engine_runs, engine_meets + jobs);
      }
    }
  }
}

TEST(Runs, ABudgetEndsThemAndRunZeroOfEachLaneIsMade) {
  SynthesisOptions options = on_threads(2);
  options.budget = 0.2;
  std::atomic<int> far_runs = 0;
  std::atomic<int> slow_runs = 0;
  const auto start = std::chrono::steady_clock::now();
  const auto counted = [](std::atomic<int>& runs, int gates) {
    return [&runs, gates](int) { return ++runs, gates; };
  };
  std::atomic<int> near_runs = 0;
  answer({lane("near", endless, counted(near_runs, 10), milliseconds(1)),
          lane("far", endless, counted(far_runs, 15), milliseconds(1)),
          lane("slow", endless, counted(slow_runs, 15), milliseconds(100))},
         options);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(2000));
  EXPECT_EQ(slow_runs, 1);
  EXPECT_GE(far_runs, 1);
  EXPECT_LT(far_runs * 2, near_runs);  // a lane far from the best gets less time
}

TEST(Runs, StopLeavesTheBestSoFar) {
  for (const int jobs : {1, 3}) {
    SynthesisOptions options = on_threads(jobs);
    int asked = 0;
    options.stop = [&] { return ++asked == 2; };
    const Answer best = answer(
        {lane("a", endless, [](int run) { return run == 3 ? 4 : 5; }, milliseconds(2))}, options);
    EXPECT_TRUE(best.result.stopped);
    EXPECT_EQ(best.run, 3);
    EXPECT_EQ(asked, 2);
  }
}

TEST(Runs, ProgressAndTraceTellOfEveryBetterCircuit) {
  SynthesisOptions options = on_threads(2);
  std::vector<int> told;
  const auto caller = std::this_thread::get_id();
  options.progress = [&](const SearchPoint& point) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    told.push_back(point.count);
  };
  const Answer best = answer({lane("a", 9, [](int run) { return 9 - run / 2; })}, options);
  EXPECT_EQ(told, (std::vector{9, 8, 7, 6, 5}));
  EXPECT_EQ(best.result.trace.size(), told.size());
  EXPECT_FALSE(best.result.stopped);
}

TEST(Runs, ExceptionsEndThemAndReachTheCaller) {
  const Lane fine = lane("a", endless, [](int) { return 1; }, milliseconds(1));
  const Lane failing = lane("b", endless, [](int run) -> int {
    if (run == 2) throw std::domain_error("run 2");
    return 1;
  });
  EXPECT_THROW(answer({fine, failing}, on_threads(2)), std::domain_error);
  SynthesisOptions options = on_threads(2);
  options.progress = [](const SearchPoint&) { throw std::domain_error("progress"); };
  EXPECT_THROW(answer({fine}, options), std::domain_error);
  const Lane nothing{.method = "none", .runs = 3, .make = [](int) { return std::nullopt; }};
  EXPECT_THROW(answer({nothing}, on_threads(1)), synthesis::UnfinishedError);
}

}  // namespace
