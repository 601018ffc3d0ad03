// How the furthest failure of a parse is found and told. The answer is the first failure, in the
// order of attempts, at the furthest position that any attempt reached.
#pragma once

#include <cstddef>
#include <string_view>

#include "parso/parsoparser.h"

namespace kelmora {

// Notes that the rule failed at the position, if that is beyond all failures so far. Failures of
// classes and groups are not noted.
void RecordFailure(const ParsoRule& rule, const char16_t* position, std::size_t childIndex,
                   std::int32_t length, std::uint32_t line);
// Puts a message in the place of a failed rule: at once when both length and line are given, else
// only if the position is beyond all failures so far.
void SetExplicitMessage(TQString message, const char16_t* position, std::int32_t length,
                        std::uint32_t line);
// For a constraint: the text of the first name, cut at 255 units, and what the second one is.
TQString UnequalNamesMessage(std::u16string_view name, const ParsoRule& expected);
TQString DescribeFailure(const ParsoErrorState& state);

}  // namespace kelmora
