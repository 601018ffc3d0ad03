// The memory behind TQString. Callers say how big a block is, so that no block has to remember it.
#pragma once

#include <cstddef>

namespace kelmora {

// Gives a block of `newBytes`, to 8 bytes aligned, in which the first bytes of `block` stay as far
// as they fit; `block` is gone then. A null `block` has 0 bytes. Null, and no change, when memory
// is out.
[[nodiscard]] void* ResizeTextBlock(void* block, std::size_t bytes, std::size_t newBytes) noexcept;
void FreeTextBlock(void* block, std::size_t bytes) noexcept;

}  // namespace kelmora
