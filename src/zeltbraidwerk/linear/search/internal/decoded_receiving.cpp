#include "zeltbraidwerk/linear/search/internal/decoded_receiving.h"

#include <algorithm>

#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {

int Timeline::put(const Gate& gate, int after) {
  const auto number = static_cast<int>(gates_.size());
  gates_.push_back(gate);
  next_.push_back(none);
  int& next = after == none ? first_ : next_[static_cast<std::size_t>(after)];
  next_.back() = next;
  next = number;
  return number;
}

std::vector<int> Timeline::places() const {
  std::vector<int> places(gates_.size());
  int place = 0;
  each([&](int number) { places[static_cast<std::size_t>(number)] = place++; });
  return places;
}

std::vector<Gate> Timeline::gates() const {
  std::vector<Gate> gates;
  each([&](int number) { gates.push_back(gates_[static_cast<std::size_t>(number)]); });
  return gates;
}

Receiving::Receiving(const BitMatrix& lacking, std::vector<Receiver> receivers)
    : lacking_(lacking),
      receivers_(std::move(receivers)),
      sums_(BitMatrix::identity(lacking.cols()), lacking) {}

void Receiving::add(const Source& source, const Word* vector) {
  if (sources_.size() >= static_cast<std::size_t>(lacking_.cols())) sums_.add(vector);
  sources_.push_back(source);
  vectors_.insert(vectors_.end(), vector, vector + lacking_.stride());
}

bool Receiving::receive(double steps, Rng& rng, const std::function<bool(double)>& spend) {
  const int rows = lacking_.rows();
  std::vector<int> open = in_order(rows);
  double spent = 0;
  while (!open.empty()) {
    sums_.look(rng);
    const double price = LightSums::steps(static_cast<int>(sources_.size()) - lacking_.cols(),
                                          static_cast<int>(open.size()));
    spent += price;
    if (!spend(price)) return false;
    // One after the other, as their parts of the steps are spent.
    while (!open.empty() && spent * rows >= steps * (rows + 1 - static_cast<double>(open.size()))) {
      const auto next = std::ranges::min_element(
          open, {}, [&](int row) { return std::pair(sums_.weight(row), row); });
      const int row = *next;
      open.erase(next);
      sums_.settle(row);
      give(row);
    }
  }
  return true;
}

/// A wire receives what it lacks, in the order of time.
void Receiving::give(int row) {
  const Receiver& receiver = receivers_[static_cast<std::size_t>(row)];
  const std::vector<int> places = timeline_.places();
  std::vector<std::pair<int, int>> timed;
  for (const int k : sums_.set(row)) {
    const int after = sources_[static_cast<std::size_t>(k)].after;
    timed.emplace_back(after == Timeline::none ? after : places[static_cast<std::size_t>(after)],
                       k);
  }
  std::ranges::sort(timed);
  std::vector<Word> lacks(lacking_.row(row), lacking_.row(row) + lacking_.stride());
  const auto pass_on = [&](int after) {
    if (!receiver.passes_on || sources_.size() >= elimination_tuning.most_vectors) return;
    add({*receiver.passes_on, after}, lacks.data());
  };
  pass_on(Timeline::none);
  int put = Timeline::none;
  for (std::size_t k = 0; k < timed.size(); ++k) {
    const auto number = static_cast<std::size_t>(timed[k].second);
    const Source source = sources_[number];
    // Of the same moment, one after the other.
    const bool same = k > 0 && timed[k].first == timed[k - 1].first;
    put = timeline_.put({source.end, receiver.by}, same ? put : source.after);
    for (std::size_t w = 0; w < lacks.size(); ++w) lacks[w] ^= vector(number)[w];
    if (k + 1 < timed.size()) pass_on(put);
  }
}

}  // namespace zelt::braidwerk::internal
