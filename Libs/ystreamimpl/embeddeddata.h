// The table that EmbedFiles.cmake generates: which files are linked in, and where their bytes lie.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace kelmora {

struct EmbeddedFile {
  std::u16string_view name;
  const char* data;           // a 0 stands behind the last byte
  const std::uint64_t* size;  // written by the assembler, hence not known to the compiler
};

std::span<const EmbeddedFile> EmbeddedFiles();

}  // namespace kelmora
