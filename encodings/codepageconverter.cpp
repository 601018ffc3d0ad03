// Conversion by lookup. A single-byte encoding takes one table entry for each byte. In the others
// a code has one byte or two: a lead byte says so, or, in ISO-2022-JP, the escape sequence that
// came last. A lead byte at the end of the text is followed by a 0 that isn't there.
#include <array>

#include "byteword.h"
#include "codepage.h"
#include "conversionreport.h"
#include "converters.h"
#include "decodedtext.h"

namespace kelmora {

namespace {

using namespace std::string_view_literals;

constexpr char kEscape = '\x1B';

unsigned char ByteAt(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

class CodeReader {
 public:
  CodeReader(EncodingId id, DecodedText& text) : table_(DecodingTable(id).data()), text_(text) {}

  // The character of `code`, for the caller to write at `place`. One without is recorded.
  char16_t CharacterOf(char16_t code, const char16_t* place) {
    const char16_t character = table_[code];
    if (character == kReplacement) TheConversionReport().Record(code);
    if (character == 0) text_.NoteZero(place);
    return character;
  }

 private:
  const char16_t* table_;
  DecodedText& text_;
};

class CodeWriter {
 public:
  explicit CodeWriter(EncodingId id) : table_(EncodingTable(id).data()) {}

  // The code of `character`. One that comes out as the substitute without being it is recorded.
  char16_t CodeOf(char16_t character) const {
    const char16_t code = table_[character];
    if (code == kSubstitute && character != kSubstitute && character != kReplacement) {
      TheConversionReport().Record(character);
    }
    return code;
  }

 private:
  const char16_t* table_;
};

// The decoders of this file return the end of what they have written at `out`.
char16_t* DecodeSingleByte(std::string_view bytes, CodeReader reader, char16_t* out) {
  for (const char byte : bytes) {
    *out = reader.CharacterOf(static_cast<unsigned char>(byte), out);
    ++out;
  }
  return out;
}

// Which bytes are followed by a second one. Shift-JIS keeps a block of single-byte katakana.
std::array<bool, 256> LeadBytes(EncodingId id) {
  std::array<bool, 256> result{};
  for (std::size_t byte = 0x80; byte < result.size(); ++byte) {
    result[byte] = id != EncodingId::kShiftJis || byte < 0xA1 || byte > 0xDF;
  }
  return result;
}

char16_t* DecodeLeadBytes(std::string_view bytes, EncodingId id, CodeReader reader, char16_t* out) {
  const std::array<bool, 256> isLead = LeadBytes(id);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    char16_t code = ByteAt(bytes, i);
    if (isLead[code]) code = static_cast<char16_t>(code * 256 + ByteAt(bytes, ++i));
    *out = reader.CharacterOf(code, out);
    ++out;
  }
  return out;
}

struct Escape {
  std::size_t length;  // 0: no escape sequence that selects a set
  bool selectsDouble;
};

// The escape sequence that `bytes` begins with. Which set of its kind it selects makes no
// difference, so the last byte of the general forms can be any.
Escape ReadEscape(std::string_view bytes) {
  if (bytes.starts_with("\x1B$("sv) && bytes.size() > 3) return {4, true};
  if (bytes.starts_with("\x1B$B"sv) || bytes.starts_with("\x1B$@"sv)) return {3, true};
  if (bytes.starts_with("\x1B("sv) && bytes.size() > 2) return {3, false};
  return {0, false};
}

char16_t* DecodeIso2022(std::string_view bytes, CodeReader reader, char16_t* out) {
  bool isDouble = false;
  for (std::size_t i = 0; i < bytes.size();) {
    if (bytes[i] == kEscape) {
      const Escape escape = ReadEscape(bytes.substr(i, 4));
      if (escape.length != 0) {
        isDouble = escape.selectsDouble;
        i += escape.length;
        continue;
      }
    }
    char16_t code = ByteAt(bytes, i++);
    if (isDouble) code = static_cast<char16_t>(code * 256 + ByteAt(bytes, i++));
    *out = reader.CharacterOf(code, out);
    ++out;
  }
  return out;
}

std::string EncodeSingleByte(std::u16string_view text, const CodeWriter& writer) {
  std::string bytes(text.size(), '\0');
  char* out = bytes.data();
  for (const char16_t character : text) *out++ = static_cast<char>(writer.CodeOf(character));
  return bytes;
}

void PutCode(char16_t code, char*& out) {
  if (code > 0xFF) *out++ = static_cast<char>(code >> 8);
  *out++ = static_cast<char>(code);
}

std::string EncodeDoubleByte(std::u16string_view text, const CodeWriter& writer) {
  std::string bytes(text.size() * 2, '\0');
  char* out = bytes.data();
  for (const char16_t character : text) PutCode(writer.CodeOf(character), out);
  bytes.resize(static_cast<std::size_t>(out - bytes.data()));
  return bytes;
}

// The text may end in the double-byte set: no escape sequence closes it.
std::string EncodeIso2022(std::u16string_view text, const CodeWriter& writer) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  bool isDouble = false;
  for (const char16_t character : text) {
    const char16_t code = writer.CodeOf(character);
    if ((code > 0xFF) != isDouble) {
      isDouble = !isDouble;
      bytes += isDouble ? "\x1B$B" : "\x1B(J";
    }
    if (isDouble) bytes += static_cast<char>(code >> 8);
    bytes += static_cast<char>(code);
  }
  return bytes;
}

}  // namespace

DecodeResult DecodeBytes(std::string_view bytes, DecodedText text) {
  const auto* next = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto* const end = next + bytes.size();
  char16_t* out = text.Begin();
  while (next != end) {
    if (end - next >= kBytesOfWord && ZeroBytes(LoadAs<std::uint64_t>(next)) == 0) {
      WidenWord(next, out);
      next += kBytesOfWord;
      out += kBytesOfWord;
    } else {
      out = text.Put(*next++, out);
    }
  }
  return text.Take(out, false);
}

std::string EncodeBytes(std::u16string_view text) {
  std::string bytes(text.size(), '\0');
  char* out = bytes.data();
  for (const char16_t character : text) *out++ = static_cast<char>(character);
  return bytes;
}

DecodeResult DecodeCodePage(std::string_view bytes, EncodingId id, DecodedText text) {
  const CodeReader reader(id, text);
  char16_t* end = text.Begin();
  if (id < kFirstMultibyte) {
    end = DecodeSingleByte(bytes, reader, end);
  } else if (id == EncodingId::kIso2022Jp) {
    end = DecodeIso2022(bytes, reader, end);
  } else {
    end = DecodeLeadBytes(bytes, id, reader, end);
  }
  return text.Take(end, false);
}

std::string EncodeCodePage(std::u16string_view text, EncodingId id) {
  const CodeWriter writer(id);
  if (id < kFirstMultibyte) return EncodeSingleByte(text, writer);
  if (id == EncodingId::kIso2022Jp) return EncodeIso2022(text, writer);
  return EncodeDoubleByte(text, writer);
}

}  // namespace kelmora
