#include "tqcore/console.h"

#include <csignal>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

std::FILE* FileOf(Console::Stream stream) {
  return stream == Console::Stream::kOutput ? stdout : stderr;
}

}  // namespace

void Console::Prepare() {
  std::signal(SIGPIPE, SIG_IGN);
  // A file that is opened takes the lowest free number. This one is opened the wrong way round, so
  // that using it stays an error.
  for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(number, F_GETFD) < 0) {
      static_cast<void>(open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
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
