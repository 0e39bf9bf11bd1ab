#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"

/// \file
/// What the routing of an ion machine minimises or maximises. A metric scores the ions of one
/// entangling gate, composes scores along a plan and compares them; -1 stands for no score yet.

namespace structures {

/// The pairs of ions that entangling gates act on, added up; fewer are better.
struct ZELTBRAIDWERK_EXPORT DefaultMetric {
  double get_score(std::vector<int>& ions) const;  ///< of one gate on these ions
  void update(std::vector<int>& ions);             ///< keeps nothing
  bool compare(double a, double b) const;          ///< whether a beats b
  double compose(double a, double b) const;        ///< the score of both, one after the other
};

/// The fidelity of entangling gates on a machine that shelves the ions that take no part: the
/// product of 1 - pair_error * pairs and 1 - shelve_error * changes, higher is better. An ion
/// without a bit in `shelved` never changes; its pairs count.
struct ZELTBRAIDWERK_EXPORT ShelveMetric {
  BoolRow shelved;      ///< outside the last active set
  double pair_error;    ///< of one pair of ions in an entangling gate
  double shelve_error;  ///< of one ion that changes between shelved and active

  ShelveMetric(int n, double pair_error, double shelve_error);  ///< all ions active

  double get_score(std::vector<int>& ions) const;  ///< of one gate on these ions
  void update(std::vector<int>& ions);             ///< the ions become the active set
  bool compare(double a, double b) const;          ///< whether a beats b
  double compose(double a, double b) const;        ///< the score of both, one after the other
};

}  // namespace structures
