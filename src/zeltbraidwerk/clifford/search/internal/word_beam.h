#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/peeled_code.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// States of few qubits whose stabilisers are of two kinds, as those of CSS codes are: on each
/// qubit strings of one kind have one letter, those of the other kind another one.
///
/// Then the strings of the kind with fewer generators tell all: as a linear code, whose words are
/// all listed. The beam takes the state apart by CNOTs, each judged by the weights of all words
/// after it, a word of one letter more being worth half as much; what the other kind is worth
/// follows (F. J. MacWilliams, "A theorem on the distribution of weights in a systematic code",
/// Bell Syst. Tech. J. 42 (1963) 79). States with as many words of each weight count as equal, so
/// that of a code with many symmetries few are looked at.
class WordBeam {
 public:
  static constexpr int most_generators = 12;
  static constexpr int most_qubits = 64;

  /// Nothing for other states.
  static std::optional<WordBeam> of(const PauliFrame& stabilisers);

  /// With no circuit where it gives up, or its effort ends.
  std::optional<TakenApart> run(int width, Rng& rng, Meter& meter) const;

  /// About how many steps a beam takes for each state that it keeps on a level.
  std::uint64_t steps_of_state() const;

 private:
  PauliFrame stabilisers_;
  std::vector<Word> generators_;  // of the words: one bit for each qubit
  std::vector<int> own_;          // by qubit: the label in words
  std::vector<int> other_;        // and in strings of the other kind
};

}  // namespace zelt::braidwerk::internal
