// The two console streams. Text goes out as UTF-8, in the form of ToNative. A write that fails is
// dropped silently: the console never stops a run.
#pragma once

#include <string_view>

namespace kelmora {

class Console {
 public:
  enum class Stream { kOutput, kError };

  // To be called once, before the first write: a reader of the console that goes away must not
  // end the process.
  static void IgnoreClosedPipes();

  static void Write(Stream stream, std::u16string_view text);
  static void NewLineAndFlush(Stream stream);
};

}  // namespace kelmora
