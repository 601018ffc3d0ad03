// YStream: a byte stream that is opened by a name. The class of the stream decides where the name
// leads: to a file, a URL, a block of process memory or a file that the program carries.
//
// A stream is closed, then open in one mode, then closed; it can't be opened while it is open.
// Sizes and positions are bytes. A failing call returns its result code and sets a count to 0,
// except in the delegator, which raises the code as a TQResultError.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "tqcore/tqexcept.h"

namespace kelmora {

enum class StreamMode { kClosed = 0, kRead = 1, kWrite = 2, kAppend = 3, kReadWrite = 4 };

// Beside these, kOutOfMemory when a block can't grow and kFail from a delegator that finds nothing.
namespace streamresult {
inline constexpr ResultCode kSuccess = 0;
inline constexpr ResultCode kFileNotFound = 2;  // also an empty name
inline constexpr ResultCode kAlreadyOpen = 4;
inline constexpr ResultCode kNoInnerStream = 6;
inline constexpr ResultCode kNoMemoryForBlock = 8;
inline constexpr ResultCode kWrongMode = 12;  // for this operation, or the stream isn't open
inline constexpr ResultCode kEmptyName = 13;  // at a delegator or a file stream
inline constexpr ResultCode kWriteFault = 29;
inline constexpr ResultCode kReadFault = 30;
inline constexpr ResultCode kModeNotSupported = 50;
inline constexpr ResultCode kNoInnerClass = 487;
}  // namespace streamresult

// Values of Seek that are no byte positions.
namespace seekposition {
inline constexpr std::int64_t kStartForReading = -1;
inline constexpr std::int64_t kEndForReading = -2;
inline constexpr std::int64_t kStartForWriting = -3;
inline constexpr std::int64_t kEndForWriting = -4;
}  // namespace seekposition

class YStream {
 public:
  YStream() = default;
  YStream(const YStream&) = delete;
  YStream& operator=(const YStream&) = delete;
  // Closes what is open. A failure of that close can't leave a destructor: see DestroyStream.
  virtual ~YStream() = default;

  [[nodiscard]] virtual ResultCode Open(std::u16string_view name, StreamMode mode) = 0;
  virtual ResultCode Close() = 0;
  // `count` is the room on the way in and what was read on the way out; 0 is the end.
  [[nodiscard]] virtual ResultCode Read(void* buffer, std::int32_t& count) = 0;
  // Up to `count` characters, and a 0 behind them for which the buffer must have room too. The
  // line end is consumed: LF, or CR and the character behind it, whatever it is. An empty line
  // and the end of the stream both give the count 0.
  [[nodiscard]] virtual ResultCode ReadLine(char16_t* buffer, std::int32_t& count) = 0;
  // One byte, sign-extended in memory and of URLs, zero-extended from files. False at the end.
  [[nodiscard]] virtual bool ReadChar(char16_t& unit) = 0;
  [[nodiscard]] virtual ResultCode Write(const void* buffer, std::int32_t& count) = 0;
  // Two bytes, low byte first, to memory and URLs; one byte to files.
  [[nodiscard]] virtual ResultCode WriteChar(char16_t unit) = 0;
  // Moves the position for reading, for writing or, in mode kReadWrite, both.
  [[nodiscard]] virtual bool Seek(std::int64_t position) = 0;
  // -1 when there is nothing to measure.
  virtual std::int64_t GetLength() = 0;
  // The name's length; the buffer gets what fits and a 0. -1 when the class keeps no name.
  virtual int GetName(char16_t* buffer, int size) = 0;
};

// What a stream is created by.
enum class StreamNumber {
  kFile = 1,
  kUrl = 2,
  kDelegator = 5,
  kMemory = 6,
  kModuleFile = 7,
  kResource = 8,
};

// Null for a number that no class has.
[[nodiscard]] std::unique_ptr<YStream> CreateStream(StreamNumber number);

// Closes and destroys; raises the result of a close that fails.
void DestroyStream(std::unique_ptr<YStream> stream);

// Nothing for kSuccess; every other code is reported with "Method Call Failed" and raised.
void RaiseOnFailure(ResultCode code);

}  // namespace kelmora
