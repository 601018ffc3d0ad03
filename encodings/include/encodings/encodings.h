// The 38 encodings: their names, how a file shows which one it is in, and the conversion between
// its bytes and the 16-bit units of the system.
//
// Conversions take and give whole buffers. They never throw: a failure is std::nullopt, and it
// means that memory ran out, that the id is not in the table, or that the bytes are no text at
// all in that encoding (a UTF-8 sequence cut off by the end, for one). A single character that
// has no counterpart fails nothing: it becomes U+FFFD when decoding and "_" when encoding, and
// it stands in the report of the last conversion, which is process-wide.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "encodings/encodedbytes.h"
#include "tqcore/tqstring.h"

namespace kelmora {

// The number of an encoding. All numbers of the table are valid values; named are those that the
// code treats by themselves. The ranges tell how text is stored: below 90 one byte is looked up
// in a table, from 90 to 999 one byte or two are, from 2000 a unit has two bytes, from 4000 four.
enum class EncodingId : std::int32_t {
  kNone = 0,  // each byte is the code point of its value
  kEbcdic = 31,
  kShiftJis = 92,
  kGb2312 = 93,
  kEucKr = 94,
  kBig5 = 95,
  kEucJp = 200,
  kIso2022Jp = 500,
  kUtf8 = 1000,
  kUtf7 = 1001,
  kUtf16 = 2000,
  kUcs2 = 3000,
  kUcs4 = 4000,
};

// Order of the bytes of a unit. The last two exist for four bytes only; their names number the
// bytes of a value from the most significant one on, in the order in which the file has them.
enum class ByteOrder : std::int32_t {
  kNone = 0,  // the encoding has none; converters take it for kLeastFirst
  kLeastFirst = 1,
  kMostFirst = 2,
  k3412 = 4,
  k2143 = 8,
};

// --- the table -----------------------------------------------------------------------------------

struct EncodingRow {
  EncodingId id;
  std::u16string_view name;
  std::u16string_view aliases;  // upper case, separated by ';'
  std::u16string_view displayName;
};

inline constexpr int kEncodingCount = 38;

[[nodiscard]] const EncodingRow& EncodingAt(int index);  // 0 to kEncodingCount - 1
[[nodiscard]] int IndexOfEncoding(EncodingId id);        // -1: not in the table
// The row with the longest alias that `name` contains, kNone without one. Case doesn't matter and
// '_' counts as '-'; the test is for a substring, so "x-ibm850-y" is code page 850.
[[nodiscard]] EncodingId EncodingFromName(std::u16string_view name);

// --- detection -----------------------------------------------------------------------------------

// Bits of DetectedEncoding::flags.
inline constexpr unsigned kNoDeclarationUsed = 1;   // the id is that of a mark or pattern, or none
inline constexpr unsigned kUnknownDeclaration = 2;  // the declared name is not in the table
inline constexpr unsigned kInconsistentDeclaration = 4;  // the bytes contradict the declaration
inline constexpr unsigned kEncodingFound = 8;            // `id` is not kNone

struct DetectedEncoding {
  unsigned flags = 0;
  EncodingId id = EncodingId::kNone;
  ByteOrder byteOrder = ByteOrder::kNone;
  TQString name;         // as declared, in upper case; empty when no declaration was read
  bool hasMark = false;  // the text begins with a byte order mark
};

// Looks at marks, then at a declaration in the first 79 bytes, then at all bytes for the escapes
// of ISO-2022-JP. Fewer than four bytes are nothing: all fields stay as above.
[[nodiscard]] DetectedEncoding DetectEncoding(std::string_view bytes);

// --- conversion ----------------------------------------------------------------------------------

// The text ends at the first U+0000, as every TQString does, but all bytes are read and counted.
// A leading mark is dropped. The capacity of the result is its length. Linear.
[[nodiscard]] std::optional<TQString> DecodeText(std::string_view bytes, EncodingId id,
                                                 ByteOrder byteOrder);
// The same in one block: the bytes are used up.
[[nodiscard]] std::optional<TQString> DecodeText(EncodedBytes&& bytes, EncodingId id,
                                                 ByteOrder byteOrder);

// `markForUtf16` puts a mark in front of two- and four-byte units, `markForUtf8` of UTF-8. Linear.
[[nodiscard]] std::optional<std::string> EncodeText(std::u16string_view text, EncodingId id,
                                                    ByteOrder byteOrder, bool markForUtf16,
                                                    bool markForUtf8);

// --- the report of the last conversion -----------------------------------------------------------

// Tells a conversion that failed for want of memory from one that failed by its bytes.
[[nodiscard]] bool ConversionRanOutOfMemory();
// How many characters had no counterpart, repetitions counted.
[[nodiscard]] std::size_t UnmappableCount();
// The first 40 different ones: codes of the encoding after DecodeText, characters after
// EncodeText. Valid until the next conversion.
[[nodiscard]] std::u16string_view UnmappableChars();

}  // namespace kelmora
