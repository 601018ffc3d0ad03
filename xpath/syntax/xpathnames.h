// The characters of names in expressions.
#pragma once

#include <cstddef>
#include <string_view>

namespace kelmora {

bool IsNameStart(char16_t unit);
bool IsNamePart(char16_t unit);

// The unit index behind the name that starts exactly at `at`; `at` itself when there is none.
std::size_t MatchNCName(std::u16string_view text, std::size_t at);

}  // namespace kelmora
