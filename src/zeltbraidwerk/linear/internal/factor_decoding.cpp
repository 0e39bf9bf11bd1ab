#include "zeltbraidwerk/linear/internal/factor_decoding.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/linear/internal/mirrored.h"
#include "zeltbraidwerk/linear/internal/syndrome_decoder.h"

namespace zelt::braidwerk::internal {
namespace {

using Gates = std::vector<std::tuple<int, int>>;

/// The circuit of a unit lower triangular factor, built wire by wire. Wire k takes up row k of the
/// factor: the sum of parities that earlier wires hold somewhere along the circuit.
///
/// Invariant: a gate inserted at positions[p] with control labels[wires[p]] sees parity p. Gates
/// that are inserted later target other wires alone, so a parity, once there, stays.
class FactorBuilder {
 public:
  FactorBuilder(const BitMatrix& factor, const std::vector<int>& labels)
      : factor_(factor), labels_(labels), parities_(factor.cols()) {}

  /// False when stopped.
  bool build(int width, int depth, const Control& control) {
    SyndromeDecoder decoder(parities_, width, control);
    std::vector<Word> syndrome(static_cast<std::size_t>(factor_.stride()));
    for (int wire = 0; wire < factor_.rows(); ++wire) {
      for (int w = 0; w < factor_.stride(); ++w) {
        syndrome[static_cast<std::size_t>(w)] =
            factor_.row(wire)[w] & low_bits(std::clamp(wire - w * word_bits, 0, word_bits));
      }
      std::vector<int> chosen;
      if (!decoder.decode(syndrome.data(), depth, true, chosen)) return false;
      insert_gates(wire, chosen);
    }
    return true;
  }

  const Gates& gates() const { return gates_; }

 private:
  int position(int parity) const { return positions_[static_cast<std::size_t>(parity)]; }
  int label(int parity) const { return label_of_[static_cast<std::size_t>(parity)]; }

  void insert_gates(int wire, std::vector<int>& chosen) {
    const int target = labels_[static_cast<std::size_t>(wire)];
    std::ranges::sort(chosen, {}, [this](int p) { return std::pair(position(p), label(p)); });
    std::vector<int> places;
    places.reserve(chosen.size());
    for (const int p : chosen) places.push_back(position(p));
    // From the last to the first, so that the places in front of a gate remain true.
    for (std::size_t k = chosen.size(); k-- > 0;) {
      gates_.insert(gates_.begin() + places[k], {label(chosen[k]), target});
      for (int& other : positions_) other += other >= places[k];
    }
    // The wire's own parities: before its first gate, and after each of them, which has moved by
    // one place for each gate that went in before it.
    for (std::size_t k = 0; k <= chosen.size(); ++k) {
      positions_.push_back(k == 0 ? 0 : places[k - 1] + static_cast<int>(k));
      label_of_.push_back(target);
      Word* parity = parities_.append();
      if (k == 0) {
        parity[wire / word_bits] = Word{1} << (wire % word_bits);
      } else {
        const Word* before = parities_[parities_.size - 2];
        const Word* added = parities_[chosen[k - 1]];
        for (int w = 0; w < parities_.stride; ++w) parity[w] = before[w] ^ added[w];
      }
    }
  }

  const BitMatrix& factor_;
  const std::vector<int>& labels_;
  ParityList parities_;
  std::vector<int> positions_;
  std::vector<int> label_of_;
  Gates gates_;
};

}  // namespace

FactorDecoding decode_factors(BitMatrix m, std::vector<int>& perm, int width, int depth,
                              const Control& control) {
  std::vector<int> rows(static_cast<std::size_t>(m.rows()));
  std::vector<int> cols(static_cast<std::size_t>(m.rows()));
  // Short of n on a singular matrix, whose other rows are left out.
  const int rank = lu_factorise(m, rows, cols);
  cols.resize(static_cast<std::size_t>(rank));
  BitMatrix factors(rank, rank);
  for (int i = 0; i < rank; ++i) {
    const int row = rows[static_cast<std::size_t>(i)];
    perm[static_cast<std::size_t>(row)] = cols[static_cast<std::size_t>(i)];
    for (int k = 0; k < rank; ++k) factors.set(i, k, m.get(row, cols[static_cast<std::size_t>(k)]));
  }

  FactorDecoding result{{}, false};
  FactorBuilder lower(factors, cols);
  if (!lower.build(width, depth, control)) return result;
  const BitMatrix mirror = mirrored(factors);
  std::ranges::reverse(cols);
  FactorBuilder upper(mirror, cols);
  if (!upper.build(width, depth, control)) return result;

  // Upper factor first, then the lower one, all of it backward.
  result.gates.assign(lower.gates().rbegin(), lower.gates().rend());
  result.gates.insert(result.gates.end(), upper.gates().rbegin(), upper.gates().rend());
  result.finished = true;
  return result;
}

}  // namespace zelt::braidwerk::internal
