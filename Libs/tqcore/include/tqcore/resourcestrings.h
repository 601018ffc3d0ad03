// The program's string table: texts of messages by number.
#pragma once

#include <string_view>

namespace kelmora {

// Empty for an id that the table lacks. The text ends in a 0 and is never freed.
std::u16string_view ResourceText(int id);

}  // namespace kelmora
