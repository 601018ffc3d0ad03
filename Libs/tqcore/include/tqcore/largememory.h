// Memory in large pieces, straight from the system, for what grows with a large document.
//
// The first touch of a page costs more than filling it, so these pieces ask for huge pages, as long
// as the system has them at hand. Small amounts are better off with malloc: a huge page is touched
// as a whole.
#pragma once

#include <cstddef>

// A sanitizer knows the bounds of what malloc gave, and looks for pointers there. So with one each
// object has an allocation of its own.
#if defined(__SANITIZE_ADDRESS__)
#define KELMORA_IS_SANITIZED true
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KELMORA_IS_SANITIZED true
#endif
#endif
#ifndef KELMORA_IS_SANITIZED
#define KELMORA_IS_SANITIZED false
#endif

namespace kelmora {

inline constexpr std::size_t kHugePage = std::size_t{1} << 21;  // bytes

// A piece that begins at a multiple of kHugePage. Only what fills a huge page becomes one, so that
// a size need not be a multiple. Null when memory is out.
[[nodiscard]] void* AllocateLarge(std::size_t bytes) noexcept;
// `bytes` is the size that the piece has.
void FreeLarge(void* memory, std::size_t bytes) noexcept;
// Makes a piece smaller or larger; it may move, but is not copied. Null when memory is out, and
// then the piece is as it was.
[[nodiscard]] void* ResizeLarge(void* memory, std::size_t bytes, std::size_t newBytes) noexcept;

}  // namespace kelmora
