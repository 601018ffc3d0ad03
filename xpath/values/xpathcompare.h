// Comparison of values, and the modulo of numbers.
#pragma once

#include <cstdint>

#include "xpath/xpathvalue.h"

namespace kelmora {

// The first rule that fits the kinds of the two values decides; see the source. Two node sets
// compare in time linear in both, by hashing or by their least and greatest numbers.
bool Equal(const XPathValue& a, const XPathValue& b);
bool NotEqual(const XPathValue& a, const XPathValue& b);
bool Less(const XPathValue& a, const XPathValue& b);
bool LessOrEqual(const XPathValue& a, const XPathValue& b);
bool Greater(const XPathValue& a, const XPathValue& b);
bool GreaterOrEqual(const XPathValue& a, const XPathValue& b);

// Of two numbers: false where either is NaN, for NotEqual too.
bool EqualNumbers(double a, double b);
bool NotEqualNumbers(double a, double b);

// Both operands lose their fractions; the sign is that of the left one. NaN for a right operand
// without an integer part and for anything that is not finite.
double Modulo(double left, double right);

double NodeNumber(const XPathNode& node);  // of its string value

}  // namespace kelmora
