#include "tqmemorystreamimpl.h"

#include <utility>

#include "readline.h"
#include "ystreamimpl/embeddedfiles.h"

namespace kelmora {

namespace {

constexpr std::u16string_view kMemoryPrefix = u"memory:";

MemoryBlockStore& Store() {
  return TQSingleton<MemoryBlockStore>::Instance();
}

}  // namespace

MemoryBlock* MemoryBlockStore::Find(std::u16string_view name) {
  for (MemoryBlock& block : blocks_) {
    if (block.name == name) return &block;
  }
  return nullptr;
}

MemoryBlock& MemoryBlockStore::Add(std::u16string_view name, StreamBlock block) {
  return blocks_.emplace_front(MemoryBlock{TQString(name), std::move(block)});
}

ResultCode TQMemoryStreamImpl::Open(std::u16string_view name, StreamMode mode) {
  if (name.empty()) return streamresult::kFileNotFound;
  if (mode_ != StreamMode::kClosed) return streamresult::kAlreadyOpen;
  if (mode < StreamMode::kRead || mode > StreamMode::kReadWrite) return streamresult::kWrongMode;
  const TQLockGuard guard(Store().Lock());
  if (MemoryBlock* found = Store().Find(name)) {
    Attach(*found, mode);
    return streamresult::kSuccess;
  }
  StreamBlock block;
  if (mode == StreamMode::kRead) {
    const std::string_view file = LookupEmbeddedFileView(name);
    if (file.data() == nullptr) return streamresult::kFileNotFound;
    block.Borrow(file);
  } else {
    if (!name.starts_with(kMemoryPrefix)) return streamresult::kFileNotFound;
    if (!block.MakeEmpty()) return streamresult::kNoMemoryForBlock;
  }
  MemoryBlock& added = Store().Add(name, std::move(block));
  Attach(added, mode);
  return streamresult::kSuccess;
}

void TQMemoryStreamImpl::Attach(MemoryBlock& block, StreamMode mode) {
  block_ = &block;
  mode_ = mode;
  const std::int64_t capacity = block.block.Capacity();
  switch (mode) {
    case StreamMode::kClosed:
      break;
    case StreamMode::kRead:
      positions_ = {0, StreamPositions::kNone};
      break;
    case StreamMode::kWrite:
      positions_ = {0, 0};
      break;
    case StreamMode::kAppend:
      positions_ = {StreamPositions::kNone, capacity};
      break;
    case StreamMode::kReadWrite:
      positions_ = {0, capacity};
      break;
  }
}

ResultCode TQMemoryStreamImpl::Close() {
  block_ = nullptr;
  positions_ = {};
  mode_ = StreamMode::kClosed;
  return streamresult::kSuccess;
}

bool TQMemoryStreamImpl::MayRead() const {
  return mode_ == StreamMode::kRead || mode_ == StreamMode::kWrite ||
         mode_ == StreamMode::kReadWrite;
}

ResultCode TQMemoryStreamImpl::Read(void* buffer, std::int32_t& count) {
  const std::int32_t wanted = std::exchange(count, 0);
  if (!MayRead()) return streamresult::kWrongMode;
  const TQLockGuard guard(Store().Lock());
  count = block_->block.Read(buffer, wanted, positions_.read);
  return streamresult::kSuccess;
}

ResultCode TQMemoryStreamImpl::ReadLine(char16_t* buffer, std::int32_t& count) {
  return ReadLineFrom(*this, mode_, buffer, count);
}

bool TQMemoryStreamImpl::ReadChar(char16_t& unit) {
  return MayRead() && block_->block.ReadChar(unit, positions_.read);
}

ResultCode TQMemoryStreamImpl::Write(const void* buffer, std::int32_t& count) {
  const std::int32_t size = std::exchange(count, 0);
  if (mode_ == StreamMode::kClosed || mode_ == StreamMode::kRead) return streamresult::kWrongMode;
  const TQLockGuard guard(Store().Lock());
  const ResultCode result = block_->block.Write(buffer, size, positions_.write);
  if (result == streamresult::kSuccess) count = size;
  return result;
}

ResultCode TQMemoryStreamImpl::WriteChar(char16_t unit) {
  const char bytes[] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  std::int32_t count = sizeof bytes;
  return Write(bytes, count);
}

bool TQMemoryStreamImpl::Seek(std::int64_t position) {
  return block_ != nullptr && block_->block.Seek(position, mode_, positions_);
}

}  // namespace kelmora
