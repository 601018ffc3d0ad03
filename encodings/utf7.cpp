// UTF-7 (RFC 2152): ASCII, in which a run of other characters is their UTF-16 in Base64 between
// "+" and "-". "+-" is a plus sign. What the RFC calls ill-formed fails the conversion: a byte
// above 7F outside a run, a run without a whole unit, and bits other than 0 behind the last one.
#include <array>

#include "converters.h"
#include "decodedtext.h"

namespace kelmora {

namespace {

constexpr char kShiftIn = '+';
constexpr char kShiftOut = '-';
constexpr int kBitsOfDigit = 6;
constexpr int kBitsOfUnit = 16;

constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
// The characters that may be encoded or not, such as "<", are encoded.
constexpr std::string_view kDirect =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789'(),-./:? \t\r\n";

constexpr std::size_t kAsciiSize = 128;

constexpr std::array<signed char, kAsciiSize> MakeDigitValues() {
  std::array<signed char, kAsciiSize> values{};
  values.fill(-1);
  for (std::size_t i = 0; i < kBase64.size(); ++i) {
    values[static_cast<unsigned char>(kBase64[i])] = static_cast<signed char>(i);
  }
  return values;
}

constexpr std::array<bool, kAsciiSize> MakeDirectFlags() {
  std::array<bool, kAsciiSize> flags{};
  for (const char character : kDirect) flags[static_cast<unsigned char>(character)] = true;
  return flags;
}

constexpr auto kDigitValues = MakeDigitValues();
constexpr auto kDirectFlags = MakeDirectFlags();

int DigitValue(unsigned char byte) {
  return byte < kAsciiSize ? kDigitValues[byte] : -1;
}
bool IsDirect(char16_t unit) {
  return unit < kAsciiSize && kDirectFlags[unit];
}

// Bits on their way from digits to units or back, the oldest on top.
struct BitQueue {
  void Add(std::uint32_t value, int width) {
    bits = (bits << width) | value;
    count += width;
  }
  std::uint32_t Take(int width) {
    count -= width;
    const std::uint32_t value = bits >> count;
    bits &= (1u << count) - 1;
    return value;
  }
  std::uint32_t bits = 0;
  int count = 0;
};

// Reads a run of Base64 digits from `next` on, which ends behind them. False if it is ill-formed;
// a run without digits is not.
bool DecodeRun(std::string_view bytes, std::size_t& next, DecodedText& text, char16_t*& out) {
  const std::size_t start = next;
  const char16_t* const firstUnit = out;
  BitQueue queue;
  for (; next < bytes.size(); ++next) {
    const int value = DigitValue(static_cast<unsigned char>(bytes[next]));
    if (value < 0) break;
    queue.Add(static_cast<std::uint32_t>(value), kBitsOfDigit);
    if (queue.count >= kBitsOfUnit) out = text.Put(queue.Take(kBitsOfUnit), out);
  }
  return next == start || (out != firstUnit && queue.bits == 0);
}

void EncodeRun(std::u16string_view run, std::string& bytes) {
  BitQueue queue;
  const auto putDigits = [&] {
    while (queue.count >= kBitsOfDigit) bytes += kBase64[queue.Take(kBitsOfDigit)];
  };
  bytes += kShiftIn;
  for (const char16_t unit : run) {
    queue.Add(unit, kBitsOfUnit);
    putDigits();
  }
  if (queue.count != 0) queue.Add(0, kBitsOfDigit - queue.count);
  putDigits();
  bytes += kShiftOut;
}

}  // namespace

DecodeResult DecodeUtf7(std::string_view bytes, DecodedText text) {
  char16_t* out = text.Begin();
  for (std::size_t next = 0; next < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[next++]);
    if (byte >= kAsciiSize) return std::nullopt;
    if (byte != kShiftIn) {
      out = text.Put(byte, out);
      continue;
    }
    const std::size_t run = next;
    if (!DecodeRun(bytes, next, text, out)) return std::nullopt;
    const bool isClosed = next < bytes.size() && bytes[next] == kShiftOut;
    if (next == run) {
      if (!isClosed) return std::nullopt;
      out = text.Put(kShiftIn, out);
    }
    if (isClosed) ++next;
  }
  return text.Take(out, true);
}

std::string EncodeUtf7(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t next = 0; next < text.size();) {
    if (IsDirect(text[next])) {
      bytes += static_cast<char>(text[next++]);
    } else if (text[next] == kShiftIn) {
      bytes += {kShiftIn, kShiftOut};
      ++next;
    } else {
      const std::size_t start = next;
      while (next < text.size() && !IsDirect(text[next])) ++next;
      EncodeRun(text.substr(start, next - start), bytes);
    }
  }
  return bytes;
}

}  // namespace kelmora
