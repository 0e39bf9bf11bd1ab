#include "zeltbraidwerk/foundations/parameter.h"

#include <cmath>
#include <ostream>
#include <stdexcept>
#include <string_view>

namespace structures {
namespace {

constexpr double full_turn = 6.283185307179586;
constexpr std::string_view minus = "UMINUS ";

std::string sum_text(const std::string& first, const std::string& second) {
  return "+ " + first + " " + second;
}

}  // namespace

Parameter::Parameter(double d) : value(d) {}

Parameter::Parameter(const std::string& s) : is_abstract(true), expression(s) {}

Parameter Parameter::from_double(double d) {
  return Parameter(d);
}

Parameter Parameter::from_string(const std::string& s) {
  return Parameter(s);
}

void Parameter::add(double d) {
  if (is_abstract) {
    expression = sum_text(std::to_string(d), expression);
  } else {
    value = std::fmod(d + value, full_turn);
  }
}

void Parameter::add(const std::string& s) {
  *this = Parameter(is_abstract ? sum_text(s, expression) : sum_text(std::to_string(value), s));
}

Parameter& Parameter::operator+=(const Parameter& p) {
  if (p.is_abstract) {
    add(p.expression);
  } else {
    add(p.value);
  }
  return *this;
}

double Parameter::get_numeric_value() const {
  if (is_abstract) throw std::logic_error("Can't get numeric value of an abstract parameter");
  return value;
}

Parameter Parameter::flip_sign() const {
  if (!is_abstract) return Parameter(-value);
  if (expression.starts_with(minus)) return Parameter(expression.substr(minus.size()));
  return Parameter(std::string(minus) + expression);
}

std::ostream& operator<<(std::ostream& out, const Parameter& p) {
  return p.is_abstract ? out << p.expression : out << p.value;
}

}  // namespace structures
