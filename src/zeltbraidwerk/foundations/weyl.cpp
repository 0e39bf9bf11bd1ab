#include "zeltbraidwerk/foundations/weyl.h"

#include <sstream>
#include <string_view>

namespace structures {

using Exponents = std::vector<unsigned char>;

const Exponents CNOT = {1, 3, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 1};
const Exponents CZ = {1, 0, 0, 1, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 1};
const Exponents XX = {3, 0, 0, 0, 0, 3, 0, 0, 1, 1, 3, 0, 1, 1, 0, 3};
const Exponents XX_INV = {3, 0, 0, 0, 0, 3, 0, 0, 3, 3, 3, 0, 3, 3, 0, 3};
const Exponents H = {0, 1, 3, 0};
const Exponents RZP = {1, 1, 0, 1};
const Exponents RZM = {1, 3, 0, 1};
const Exponents RXP = {3, 0, 1, 3};
const Exponents RXM = {3, 0, 3, 3};
const Exponents RYP = {0, 1, 3, 2};
const Exponents RYM = {2, 3, 1, 0};
const Exponents X = {1, 0, 2, 1};
const Exponents Y = {3, 2, 2, 3};
const Exponents Z = {1, 2, 0, 1};

const Exponents WI = {0, 0, 0};
const Exponents WX = {0, 0, 1};
const Exponents WZ = {0, 1, 0};
const Exponents WY = {0, 3, 3};

// clang-format off
const std::vector<std::pair<unsigned char, unsigned char>> SILUAP = {
    {0, 0}, {0, 1}, {0, 0}, {0, 1},
    {0, 3}, {0, 2}, {1, 3}, {1, 2},
    {0, 0}, {1, 1}, {0, 0}, {1, 1},
    {0, 3}, {1, 2}, {1, 3}, {0, 2}};
// clang-format on

namespace {

constexpr std::string_view letters = "IXYZ";

const Exponents& exponents_of(char letter) {
  switch (letter) {
    case 'X':
      return WX;
    case 'Y':
      return WY;
    case 'Z':
      return WZ;
    default:
      return WI;
  }
}

std::string single_letter(char letter, int q, int n) {
  std::string s(static_cast<std::size_t>(n), 'I');
  s[static_cast<std::size_t>(q)] = letter;
  return s;
}

}  // namespace

WeylOperator::WeylOperator(std::string s)
    : data(2 * s.size() + 1), nbqbits(static_cast<int>(s.size())) {
  for (std::size_t q = 0; q < s.size(); ++q) {
    const Exponents& exponents = exponents_of(s[q]);
    data[q + 1] = exponents[1];
    data[s.size() + q + 1] = exponents[2];
  }
}

void WeylOperator::conjugate_with(const OperatorTableau& t) {
  Exponents result(data.size());
  const unsigned char* row = t.data.data();
  for (unsigned char& entry : result) {
    unsigned sum = 0;
    for (const unsigned char exponent : data) sum += unsigned{*row++} * exponent;
    entry = sum & 3;
  }
  data = std::move(result);
}

std::pair<bool, std::string> WeylOperator::to_pauli() const {
  const auto n = static_cast<std::size_t>(nbqbits);
  bool minus = false;
  std::string s(n, 'I');
  for (std::size_t q = 0; q < n; ++q) {
    const auto& [sign, letter] = SILUAP[4 * std::size_t{data[q + 1]} + data[n + q + 1]];
    minus ^= sign != 0;
    s[q] = letters[letter];
  }
  return {minus, s};
}

std::string WeylOperator::to_string() const {
  std::ostringstream text;
  text << *this;
  return text.str();
}

WeylOperator WeylOperator::pauli_z(int q, int n) {
  return WeylOperator(single_letter('Z', q, n));
}

WeylOperator WeylOperator::pauli_x(int q, int n) {
  return WeylOperator(single_letter('X', q, n));
}

std::ostream& operator<<(std::ostream& out, const WeylOperator& w) {
  const auto n = static_cast<std::size_t>(w.nbqbits);
  out << "( " << int{w.data[0]} << " | ";
  for (std::size_t k = 1; k <= n; ++k) out << int{w.data[k]} << ' ';
  out << '|';
  for (std::size_t k = n + 1; k <= 2 * n; ++k) out << int{w.data[k]} << ' ';
  return out << ')';
}

}  // namespace structures
