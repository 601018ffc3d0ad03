#include "tqcore/resourcestrings.h"

#include <algorithm>
#include <iterator>

namespace kelmora {

namespace {

struct ResourceString {
  int id;
  std::u16string_view text;
};

constexpr ResourceString kResourceStrings[] = {
#define KELMORA_STRING(id, text) {id, text},
#include "resourcestrings.def"
#undef KELMORA_STRING
};
static_assert(std::ranges::is_sorted(kResourceStrings, {}, &ResourceString::id));

}  // namespace

std::u16string_view ResourceText(int id) {
  const auto* row = std::ranges::lower_bound(kResourceStrings, id, {}, &ResourceString::id);
  return row != std::end(kResourceStrings) && row->id == id ? row->text : std::u16string_view();
}

}  // namespace kelmora
