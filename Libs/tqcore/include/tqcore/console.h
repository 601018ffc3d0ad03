// The two console streams. Text goes out as UTF-8, in the form of ToNative. A write that fails is
// dropped silently: the console never stops a run.
#pragma once

#include <string_view>

namespace kelmora {

class Console {
 public:
  enum class Stream { kOutput, kError };

  // To be called once, before the first write and before any file is opened: a reader of the
  // console that goes away must not end the process, and a file must not take the number of a
  // stream that the process was started without, or what is said there would land in it.
  static void Prepare();

  static void Write(Stream stream, std::u16string_view text);
  static void NewLineAndFlush(Stream stream);
};

}  // namespace kelmora
