// The exception types of the core library. They have no common base with those of the trees, of
// XPath and of XSLT; each is thrown by value.
#pragma once

#include <cstdint>

namespace kelmora {

// Codes of TQExcept.
inline constexpr std::int32_t kAllocationFailed = -1001;
inline constexpr std::int32_t kIndexBeyondCapacity = -1010;

class TQExcept {
 public:
  // `file` must outlive the error; of a path, what stands behind the last backslash is kept.
  TQExcept(std::int32_t code, std::int32_t line, const char16_t* file);
  virtual ~TQExcept() = default;

  // The text lies in one buffer shared by all errors and is valid until the next call.
  virtual const char16_t* GetErrorText(bool withLocation) const;

  std::int32_t Code() const { return code_; }

  // Wording of GetErrorText: 0 English, 1 German, 2 French, 3 Italian. A part of ProcessState.
  struct Language {
    std::int32_t number = 0;
  };

 private:
  std::int32_t code_;
  std::int32_t line_;
  const char16_t* file_;
};

// What a user is told about kAllocationFailed, which TQString raises for both, and std::bad_alloc.
inline constexpr char16_t kMemoryExhausted[] =
    u"Out of memory, or a text beyond 2147483647 characters";

// Result codes as the stream layer and the singletons raise them: one 32-bit value.
using ResultCode = std::uint32_t;
inline constexpr ResultCode kUnexpected = 0x8000FFFF;
inline constexpr ResultCode kOutOfMemory = 0x8007000E;
inline constexpr ResultCode kFail = 0x80004005;

struct TQResultError {
  ResultCode code;
};

}  // namespace kelmora
