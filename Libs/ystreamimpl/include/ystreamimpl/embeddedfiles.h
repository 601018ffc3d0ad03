// The files that the program carries in itself: the grammars and the Unicode data. Names are
// compared without regard to ASCII case.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace kelmora {

// The bytes, which live as long as the program; a 0 that isn't counted follows them. data() is null
// for a name that the table lacks. Nothing is copied.
std::string_view LookupEmbeddedFileView(std::u16string_view name);

// A copy that the caller owns, with the same 0 behind `size` bytes. False, and no change, for a
// name that the table lacks.
[[nodiscard]] bool LookupEmbeddedFile(std::u16string_view name, std::unique_ptr<char[]>& data,
                                      std::int32_t& size);

}  // namespace kelmora
