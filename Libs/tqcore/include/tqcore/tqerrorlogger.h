// The reporting path for failed calls. A failed call or creation is reported here and then raised
// as a TQResultError with the same code; users see the code only.
#pragma once

#include <cstdint>

#include "tqcore/tqexcept.h"

namespace kelmora {

class TQErrorLogger {
 public:
  // Has no effect: the place where a debugging build would show its texts.
  static void Report(ResultCode /*code*/, const char16_t* /*message*/, const char16_t* /*file*/,
                     std::int32_t /*line*/, std::int32_t /*extra*/ = 0) {}

  [[noreturn]] static void ReportAndRaise(ResultCode code, const char16_t* message,
                                          const char16_t* file, std::int32_t line) {
    Report(code, message, file, line);
    throw TQResultError{code};
  }
};

}  // namespace kelmora
