#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zeltbraidwerk/search/synthesis_options.h"

/// \file
/// Checks of options that families share, and what follows from options that are not given.
namespace zelt::braidwerk::internal {

/// Throws std::invalid_argument for efforts out of their range.
void check_effort(const synthesis::SynthesisOptions& options);

/// Throws std::invalid_argument unless the options' method is in the list.
void check_method(const std::string& method, const std::vector<std::string>& known, bool on_device);

/// Throws TooLargeError for more qubits than the ends of gates have room for; `name` is that of the
/// input.
void check_wires(const char* name, int qubits);

/// What a search holds besides what grows with its qubits, such as rotations.
struct SearchItems {
  int count = 0;
  const char* name = "";
  double bytes = 0;  ///< of each
};
/// Throws TooLargeError where searches on so many qubits would not fit into memory: one per thread,
/// of `square` bytes times the square of the qubits, and of its items.
void check_search_memory(const char* name, int qubits, const synthesis::SynthesisOptions& options,
                         double square, const SearchItems& items = {});

/// An option that not every method takes.
struct OptionOfSome {
  const char* name;
  bool given;
  std::vector<std::string> takers;
};
/// Throws std::invalid_argument when one is given that the method does not take.
void check_options_of(const std::string& method, const std::vector<OptionOfSome>& options);

/// The same for the options that only methods take that search for long.
void check_search_options(const synthesis::SynthesisOptions& options,
                          const std::vector<std::string>& takers);

/// For families whose searches do not go on from known circuits: throws std::invalid_argument
/// where there is one.
void refuse_any_start(const synthesis::SynthesisOptions& options);

constexpr std::uint64_t default_search_steps = 200'000;

/// Steps of a run of the search engine; none: to the end of the budget.
std::optional<std::uint64_t> steps_of_search(const synthesis::SynthesisOptions& options);
/// Runs of the search engine. To the end of a budget, one per thread.
int runs_of_search(const synthesis::SynthesisOptions& options);
int threads(const synthesis::SynthesisOptions& options);

}  // namespace zelt::braidwerk::internal
