#include "ystreamimpl/embeddedfiles.h"

#include <cstring>

#include "embeddeddata.h"
#include "tqcore/tqtext.h"

namespace kelmora {

std::string_view LookupEmbeddedFileView(std::u16string_view name) {
  for (const EmbeddedFile& file : EmbeddedFiles()) {
    if (EqualsIgnoringAsciiCase(name, file.name)) return {file.data, *file.size};
  }
  return {};
}

bool LookupEmbeddedFile(std::u16string_view name, std::unique_ptr<char[]>& data,
                        std::int32_t& size) {
  const std::string_view file = LookupEmbeddedFileView(name);
  if (file.data() == nullptr) return false;
  data = std::make_unique_for_overwrite<char[]>(file.size() + 1);
  std::memcpy(data.get(), file.data(), file.size() + 1);
  size = static_cast<std::int32_t>(file.size());
  return true;
}

}  // namespace kelmora
