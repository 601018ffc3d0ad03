#include "tqcore/tqexcept.h"

#include <array>
#include <iterator>
#include <string_view>

#include "tqcore/processstate.h"
#include "tqcore/tqstring.h"

namespace kelmora {

namespace {

constexpr std::size_t kBufferSize = 258;

struct Wording {
  const char16_t* plain;      // code
  const char16_t* withPlace;  // line, file, code
};

constexpr Wording kWordings[] = {
    {u"An error has occurred. (%ld)", u"An error has occurred in line %ld of file \"%s\". (%ld)"},
    {u"Ein Fehler ist aufgetreten. (%ld)",
     u"Ein Fehler ist in Zeile %ld des Modules \"%s\" aufgetreten. (%ld)"},
    {u"Une erreur s'est glissee. (%ld)",
     u"Une erreur s'est glissee dans ligne %ld du fichier \"%s\". (%ld)"},
    {u"C'e stato un errore. (%ld)", u"C'e stato un errore nella linea %ld del file \"%s\". (%ld)"},
};

const char16_t* BehindLastBackslash(const char16_t* file) {
  if (file == nullptr) return u"";
  return file + std::u16string_view(file).rfind(u'\\') + 1;  // npos + 1 is 0
}

}  // namespace

TQExcept::TQExcept(std::int32_t code, std::int32_t line, const char16_t* file)
    : code_(code), line_(line), file_(BehindLastBackslash(file)) {}

// Formats without allocating, since the error may be that there is no memory.
const char16_t* TQExcept::GetErrorText(bool withLocation) const {
  struct TextBuffer {
    std::array<char16_t, kBufferSize> units;
  };
  std::array<char16_t, kBufferSize>& buffer = ProcessState::Of<TextBuffer>().units;
  const std::int32_t language = ProcessState::Of<Language>().number;
  const bool isKnown = language >= 0 && language < static_cast<int>(std::size(kWordings));
  const Wording& wording = kWordings[isKnown ? language : 0];
  if (withLocation) {
    TQString::FormatInto(buffer, wording.withPlace, {line_, file_, code_});
  } else {
    TQString::FormatInto(buffer, wording.plain, {code_});
  }
  return buffer.data();
}

}  // namespace kelmora
