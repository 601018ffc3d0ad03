#include "tqcore/console.h"

#include <csignal>
#include <cstdio>
#include <string>

#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

std::FILE* FileOf(Console::Stream stream) {
  return stream == Console::Stream::kOutput ? stdout : stderr;
}

}  // namespace

void Console::IgnoreClosedPipes() {
#ifdef SIGPIPE
  std::signal(SIGPIPE, SIG_IGN);
#endif
}

void Console::Write(Stream stream, std::u16string_view text) {
  const std::string bytes = ToNative(text);
  std::fwrite(bytes.data(), 1, bytes.size(), FileOf(stream));
}

void Console::NewLineAndFlush(Stream stream) {
  std::fputc('\n', FileOf(stream));
  std::fflush(FileOf(stream));
}

}  // namespace kelmora
