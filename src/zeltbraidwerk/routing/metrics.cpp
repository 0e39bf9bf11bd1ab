#include "zeltbraidwerk/routing/metrics.h"

#include <algorithm>

namespace structures {
namespace {

bool is_unset(double score) {
  return score == -1.0;
}

void set_bits(BoolRow& bits, const std::vector<int>& places, bool value) {
  for (const int place : places) {
    const auto at = static_cast<std::size_t>(place);
    if (at < bits.size()) bits[at] = value;
  }
}

}  // namespace

double DefaultMetric::get_score(std::vector<int>& ions) const {
  const auto k = static_cast<double>(ions.size());
  return k * (k - 1) / 2;
}

void DefaultMetric::update(std::vector<int>& /*ions*/) {}

bool DefaultMetric::compare(double a, double b) const {
  return a < b || is_unset(b);
}

double DefaultMetric::compose(double a, double b) const {
  return a + b;
}

ShelveMetric::ShelveMetric(int n, double pair, double shelve)
    : shelved(static_cast<std::size_t>(std::max(n, 0))), pair_error(pair), shelve_error(shelve) {}

double ShelveMetric::get_score(std::vector<int>& ions) const {
  BoolRow wanted(shelved.size());
  set_bits(wanted, ions, true);
  int changes = 0;
  for (std::size_t q = 0; q < shelved.size(); ++q) changes += shelved[q] == wanted[q];
  const auto k = static_cast<double>(ions.size());
  return (1 - shelve_error * changes) * (pair_error * k * (k - 1) * -0.5 + 1);
}

void ShelveMetric::update(std::vector<int>& ions) {
  shelved.assign(shelved.size(), true);
  set_bits(shelved, ions, false);
}

bool ShelveMetric::compare(double a, double b) const {
  return a > b || is_unset(b);
}

double ShelveMetric::compose(double a, double b) const {
  return a * b;
}

}  // namespace structures
