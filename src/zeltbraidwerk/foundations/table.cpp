#include "zeltbraidwerk/foundations/table.h"

#include <ostream>

#include "zeltbraidwerk/foundations/internal/packed_table.h"

using namespace zelt::braidwerk::internal;

namespace {

std::size_t at(const structures::Table& table, int r, int c = 0) {
  return static_cast<std::size_t>(r) * static_cast<std::size_t>(table.n) +
         static_cast<std::size_t>(c);
}

}  // namespace

namespace structures {

Table::Table(int size) : n(size) {
  if (n > 0) bits.resize(at(*this, n));
  for (int r = 0; r < n; ++r) bits[at(*this, r, r)] = true;
}

void Table::cnot(int a, int b) {
  add_bits(bits, at(*this, a), bits, at(*this, b), n);
}

void Table::swap_lines(int a, int b) {
  if (a == b) return;
  cnot(a, b);
  cnot(b, a);
  cnot(a, b);
}

Table Table::inverse() const {
  return unpack_table(zelt::braidwerk::internal::inverse(pack_table(*this)));
}

bool Table::is_identity() const {
  return pack_table(*this).is_identity();
}

Table Table::permute(const std::vector<int>& perm) const {
  Table result(n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      result.bits[at(result, i, j)] =
          bits[at(*this, perm[static_cast<std::size_t>(i)], perm[static_cast<std::size_t>(j)])];
    }
  }
  return result;
}

BoolMatrix Table::to_bool_bool() const {
  return pack_table(*this).unpack();
}

std::string Table::to_string() const {
  std::string text = "[";
  for (int r = 0; r < n; ++r) {
    text += r == 0 ? "[" : " [";
    for (int c = 0; c < n; ++c) {
      if (c != 0) text += ' ';
      text += bits[at(*this, r, c)] ? '1' : '0';
    }
    text += r == n - 1 ? "]]\n" : "]\n";
  }
  return text;
}

std::ostream& operator<<(std::ostream& out, const Table& table) {
  for (int r = 0; r < table.n; ++r) {
    for (int c = 0; c < table.n; ++c) out << (table.bits[at(table, r, c)] ? "1 " : "0 ");
    out << std::endl;
  }
  return out;
}

}  // namespace structures

structures::Table update_table(const structures::Table& table,
                               const std::vector<structures::Gate>& gates) {
  // A gate at the front adds the column of its target to that of its control; no inverse is
  // needed.
  BitMatrix columns = pack_table(table).transposed();
  for (const structures::Gate& gate : gates) columns.add_row(gate.qbits[1], gate.qbits[0]);
  return unpack_table(columns.transposed());
}
