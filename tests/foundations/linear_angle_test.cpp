#include "zeltbraidwerk/foundations/internal/linear_angle.h"

#include <gtest/gtest.h>

namespace {

using structures::Parameter;
using zelt::braidwerk::internal::LinearAngle;

TEST(LinearAngle, ReadsPrefixNotationAndTakesOtherTextForAName) {
  const struct {
    Parameter angle;
    double constant;
    std::map<std::string, double> coefficients;
  } cases[] = {
      {0.75, 0.75, {}},
      {{"a"}, 0, {{"a", 1}}},
      {{"UMINUS a"}, 0, {{"a", -1}}},
      {{"+ a a"}, 0, {{"a", 2}}},
      {{"+ a UMINUS a"}, 0, {}},
      {{"UMINUS + a UMINUS + 0.250000 b"}, 0.25, {{"a", -1}, {"b", 1}}},
      {{"+ -1.500000 + 0.500000 inf"}, -1, {{"inf", 1}}},
      {{"+ 2*a UMINUS 0.5*a"}, 0, {{"a", 1.5}}},
      // No prefix notation: operands are too many, too few, or empty.
      {{"a b"}, 0, {{"a b", 1}}},
      {{"+ 0.5 a b"}, 0, {{"+ 0.5 a b", 1}}},
      {{"+ 0.5"}, 0, {{"+ 0.5", 1}}},
      {{"+ 0.5  a"}, 0, {{"+ 0.5  a", 1}}},
      {{"*a"}, 0, {{"*a", 1}}},
      {{"2*"}, 0, {{"2*", 1}}},
      {{"x*a"}, 0, {{"x*a", 1}}},
      {{""}, 0, {{"", 1}}},
  };
  for (const auto& [angle, constant, coefficients] : cases) {
    const LinearAngle read(angle);
    EXPECT_EQ(read.constant, constant) << angle.expression;
    EXPECT_EQ(read.coefficients, coefficients) << angle.expression;
    EXPECT_EQ(read.is_number(), coefficients.empty());
  }
}

TEST(LinearAngle, AddsTermByTermAndKeepsAllDigits) {
  LinearAngle sum(Parameter("+ a b"));
  const struct {
    Parameter angle;
    double times;
    Parameter expected;
  } steps[] = {
      {{"a"}, 1, {"+ 2*a b"}},
      {{"b"}, -1, {"2*a"}},
      {0.1234567891, -1, {"+ 2*a -0.1234567891"}},
      {{"+ 0.1234567891 + 0.25 UMINUS c"}, 1, {"+ 2*a + UMINUS c 0.25"}},
      {{"1e-07*a"}, 1, {"+ 2.0000001*a + UMINUS c 0.25"}},
      {{"+ 2.0000001*a UMINUS c"}, -1, 0.25},
      // What is left of 0.1 + 0.2 - 0.3 is rounding.
      {{"0.1*a"}, 1, {"+ 0.1*a 0.25"}},
      {{"0.2*a"}, 1, {"+ 0.30000000000000004*a 0.25"}},
      {{"0.3*a"}, -1, 0.25},
  };
  for (const auto& [angle, times, expected] : steps) {
    sum.add(LinearAngle(angle), times);
    EXPECT_EQ(sum.parameter(), expected) << sum.parameter();
  }
}

}  // namespace
