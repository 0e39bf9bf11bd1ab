#pragma once

#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/clifford/search/internal/operator_class.h"
#include "zeltbraidwerk/search/internal/table_store.h"

namespace zelt::braidwerk::internal {

/// The fewest gates for the Clifford operators on five qubits that take few, with outputs in place:
/// 248,149 classes of up to seven gates. Most operators take eight or nine, so one gate or two lead
/// into the table. 8 MB, built in one to two seconds where no file has it.
class ClassTable {
 public:
  static constexpr int most_gates = 7;
  static constexpr int beyond = most_gates + 1;

  ClassTable();
  /// Built when it is asked for first.
  static const ClassTable& shared();

  /// `beyond` for classes that take more gates than the table has.
  int distance(const OperatorClass& of) const;

 private:
  StoredTable<std::uint64_t> slots_;
};

}  // namespace zelt::braidwerk::internal
