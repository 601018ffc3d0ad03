#include "tqurlstreamimpl.h"

#include <utility>

#include "readline.h"
#include "ystreamimpl/tqurlloader.h"

namespace kelmora {

TQUrlStreamImpl::~TQUrlStreamImpl() {
  CloseQuietly(*this);
}

ResultCode TQUrlStreamImpl::Open(std::u16string_view name, StreamMode mode) {
  if (mode_ != StreamMode::kClosed) return streamresult::kAlreadyOpen;
  if (name.empty()) return streamresult::kFileNotFound;
  if (mode == StreamMode::kRead) {
    TQUrlLoader loader;
    loader.SetUseCache(false);
    if (!loader.Fetch(name)) return streamresult::kFileNotFound;
    block_.Adopt(loader.TakeBuffer());
  } else if (mode == StreamMode::kWrite) {
    if (!block_.MakeEmpty()) return streamresult::kNoMemoryForBlock;
  } else {
    return streamresult::kModeNotSupported;
  }
  name_ = name;
  positions_ = {};
  mode_ = mode;
  return streamresult::kSuccess;
}

ResultCode TQUrlStreamImpl::Close() {
  if (mode_ == StreamMode::kWrite) {
    TQUrlLoader loader;
    if (!loader.Send(name_.View(), block_.Bytes(), "PUT", "text/xml")) {
      return streamresult::kWriteFault;
    }
  }
  Reset();
  return streamresult::kSuccess;
}

void TQUrlStreamImpl::Reset() {
  name_.Clear();
  block_.Clear();
  positions_ = {};
  mode_ = StreamMode::kClosed;
}

ResultCode TQUrlStreamImpl::Read(void* buffer, std::int32_t& count) {
  const std::int32_t wanted = std::exchange(count, 0);
  if (mode_ == StreamMode::kClosed) return streamresult::kWrongMode;
  count = block_.Read(buffer, wanted, positions_.read);
  return streamresult::kSuccess;
}

ResultCode TQUrlStreamImpl::ReadLine(char16_t* buffer, std::int32_t& count) {
  return ReadLineFrom(*this, mode_, buffer, count);
}

bool TQUrlStreamImpl::ReadChar(char16_t& unit) {
  return mode_ != StreamMode::kClosed && block_.ReadChar(unit, positions_.read);
}

ResultCode TQUrlStreamImpl::Write(const void* buffer, std::int32_t& count) {
  const std::int32_t size = std::exchange(count, 0);
  if (mode_ != StreamMode::kWrite) return streamresult::kWrongMode;
  const ResultCode result = block_.Write(buffer, size, positions_.write);
  if (result == streamresult::kSuccess) count = size;
  return result;
}

ResultCode TQUrlStreamImpl::WriteChar(char16_t unit) {
  const char bytes[] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  std::int32_t count = sizeof bytes;
  return Write(bytes, count);
}

bool TQUrlStreamImpl::Seek(std::int64_t position) {
  return mode_ != StreamMode::kClosed && block_.Seek(position, mode_, positions_);
}

std::int64_t TQUrlStreamImpl::GetLength() {
  if (mode_ == StreamMode::kClosed) return -1;
  return mode_ == StreamMode::kWrite ? block_.Capacity() : block_.Size();
}

int TQUrlStreamImpl::GetName(char16_t* buffer, int size) {
  return CopyName(name_.View(), buffer, size);
}

}  // namespace kelmora
