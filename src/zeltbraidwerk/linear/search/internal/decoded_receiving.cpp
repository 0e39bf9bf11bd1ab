#include "zeltbraidwerk/linear/search/internal/decoded_receiving.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/linear/search/internal/light_sums.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

class Receiving {
 public:
  Receiving(PassingVectors& passing, const BitMatrix& lacking, Rng& rng)
      : passing_(passing),
        lacking_(lacking),
        rng_(rng),
        sums_(BitMatrix::identity(lacking.cols()), lacking),
        told_(lacking.cols()),
        open_(in_order(lacking.rows())) {
    passing_.pass_all_on(rng_);
    tell();
  }

  int open() const { return static_cast<int>(open_.size()); }

  /// Looks for sets that can be had; returns the steps that it took.
  double look() {
    sums_.look(rng_, [this](const std::vector<int>& set) { return passing_.can_be_had(set); });
    return LightSums::steps(sums_.outside(), open());
  }

  /// The one of the open rows with the fewest vectors receives them. False where none has a set
  /// that can be had, unless it must: what the block holds at first always can be.
  bool settle_next(const std::vector<Receiver>& receivers, bool must) {
    const auto next = std::ranges::min_element(
        open_, {}, [this](int row) { return std::pair(sums_.weight(row), row); });
    const int row = *next;
    if (!sums_.has_set(row) && !must) return false;
    open_.erase(next);
    sums_.settle(row);
    give(row, receivers[static_cast<std::size_t>(row)]);
    tell();
    for (const int vector : passing_.lost()) sums_.remove(vector, rng_);
    for (const int other : open_) {
      if (!passing_.can_be_had(sums_.set(other))) sums_.forget(other);
    }
    return true;
  }

 private:
  void tell() {
    while (told_ < passing_.count()) sums_.add(passing_.vector(told_++));
  }

  void give(int row, const Receiver& receiver) {
    std::vector<int> set = sums_.set(row);
    if (!sums_.has_set(row)) {
      for_each_bit(lacking_.row(row), lacking_.stride(), [&](int unit) { set.push_back(unit); });
    }
    if (set.empty()) return;
    if (receiver.passes_on) passing_.hold(*receiver.passes_on, lacking_.row(row));
    passing_.receive(receiver.by, set);
    if (receiver.passes_on) passing_.pass_on(*receiver.passes_on, rng_);
  }

  PassingVectors& passing_;
  const BitMatrix& lacking_;
  Rng& rng_;
  LightSums sums_;
  int told_;  // vectors that the sums know
  std::vector<int> open_;
};

}  // namespace

bool receive_by_decoding(PassingVectors& passing, const BitMatrix& lacking,
                         const std::vector<Receiver>& receivers, double steps, Rng& rng,
                         const std::function<bool(double)>& spend) {
  Receiving receiving(passing, lacking, rng);
  const int rows = lacking.rows();
  double spent = 0;
  while (receiving.open() > 0) {
    const double price = receiving.look();
    spent += price;
    if (!spend(price)) return false;
    // One after the other, as their parts of the steps are spent.
    while (receiving.open() > 0 && spent * rows >= steps * (rows + 1.0 - receiving.open())) {
      if (!receiving.settle_next(receivers, spent >= 2 * steps)) break;
    }
  }
  return true;
}

}  // namespace zelt::braidwerk::internal
