#include "zeltbraidwerk/search/memory_limit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/circuit/optimize.h"
#include "zeltbraidwerk/clifford/encoder.h"
#include "zeltbraidwerk/clifford/synthesize.h"
#include "zeltbraidwerk/graph_state/synthesize.h"
#include "zeltbraidwerk/linear/synthesize.h"
#include "zeltbraidwerk/pauli/synthesize.h"
#include "zeltbraidwerk/phase/synthesize.h"

namespace {

using synthesis::TooLargeError;

/// Sets the limit for one test.
struct Limited {
  explicit Limited(double limit) { synthesis::set_memory_limit(limit); }
  ~Limited() { synthesis::set_memory_limit(before); }
  const double before = synthesis::memory_limit_as_set();
};

BoolMatrix identity(std::size_t n) {
  BoolMatrix m(n, BoolRow(n));
  for (std::size_t k = 0; k < n; ++k) m[k][k] = true;
  return m;
}

std::string complaint(const std::function<void()>& call) {
  try {
    call();
  } catch (const TooLargeError& error) {
    return error.what();
  }
  return "taken";
}

TEST(MemoryLimit, IsAShareOrBytes) {
  const Limited half(0.5);
  const double bytes = synthesis::memory_limit();
  EXPECT_GT(bytes, 1e6);
  synthesis::set_memory_limit(0.25);
  EXPECT_DOUBLE_EQ(synthesis::memory_limit(), bytes / 2);
  synthesis::set_memory_limit(3e9);
  EXPECT_EQ(synthesis::memory_limit(), 3e9);
  for (const double wrong : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THROW(synthesis::set_memory_limit(wrong), std::invalid_argument);
  }
  EXPECT_EQ(synthesis::memory_limit(), 3e9);
}

TEST(MemoryLimit, EveryFamilyRefusesBeforeItBegins) {
  const Limited small(1e6);
  const std::vector<std::vector<unsigned char>> zeros = [] {
    std::vector<std::vector<unsigned char>> strings(800, std::vector<unsigned char>(800));
    for (std::size_t k = 0; k < strings.size(); ++k) strings[k][k] = 2;
    return strings;
  }();
  const std::vector<bool> plus(800);
  synthesis::LinearOptions beam;
  beam.method = "greedy";
  beam.width = 1 << 20;
  beam.lookahead = 3;
  synthesis::LinearOptions jobs;
  jobs.jobs = 8;
  const std::vector<std::pair<std::string, std::function<void()>>> calls = {
      {"matrix: got 800 qubits, ", [&] { synthesis::synthesize_linear(identity(800)); }},
      {"matrix: got 300 qubits and 8 jobs, ",
       [&] { synthesis::synthesize_linear(identity(300), jobs); }},
      {"width, lookahead: got 1048576 and 3 on 8 qubits, ",
       [&] { synthesis::synthesize_linear(identity(8), beam); }},
      {"images: got 800 qubits, ",
       [] { synthesis::synthesize_clifford(structures::OperatorTableau(800)); }},
      {"stabilisers: got 800 qubits, ", [&] { synthesis::synthesize_state(zeros, plus); }},
      {"stabilisers: got 800 qubits, ", [&] { synthesis::synthesize_encoder(zeros, plus); }},
      {"graph: got 800 qubits, ",
       [] { synthesis::synthesize_graph_state(BoolMatrix(800, BoolRow(800))); }},
  };
  for (const auto& [begin, call] : calls) {
    EXPECT_THAT(complaint(call),
                testing::AllOf(testing::StartsWith(begin),
                               testing::HasSubstr(" of memory, wanted 1 MB at most; the limit is "
                                                  "set by ZELTBRAIDWERK_LIMIT_MEMORY, ")))
        << begin;
  }
  EXPECT_EQ(synthesis::synthesize_linear(identity(100)).count, 0);
}

TEST(MemoryLimit, SearchesHaveRoomForSoManyQubits) {
  synthesis::LinearOptions search;
  search.method = "search";
  EXPECT_THAT(complaint([&] { synthesis::synthesize_linear(identity(16'385), search); }),
              "matrix: got 16385 qubits, wanted at most 16384");
}

}  // namespace
