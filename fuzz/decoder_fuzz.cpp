// Two bytes choose encoding and byte order, the others are decoded, and encoded again.
#include "encodings/encodings.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  if (size < 2) return 0;
  constexpr int kOrders[] = {0, 1, 2, 4, 8};
  const EncodingId id = EncodingAt(data[0] % kEncodingCount).id;
  const auto order = static_cast<ByteOrder>(kOrders[data[1] % std::size(kOrders)]);
  const std::string_view bytes = fuzz::Text(data + 2, size - 2);
  static_cast<void>(DetectEncoding(bytes));
  const auto text = DecodeText(bytes, id, order);
  if (text) static_cast<void>(EncodeText(*text, id, order, true, true));
  return 0;
}
