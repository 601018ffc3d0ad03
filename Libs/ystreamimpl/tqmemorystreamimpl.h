// TQMemoryStreamImpl: a stream on a named block of process memory. Reading a name that no block
// has looks for a file that the program carries; a name that begins with "memory:" makes a new
// block when it is opened for writing.
#pragma once

#include <forward_list>

#include "streamblock.h"
#include "tqcore/tqsingleton.h"
#include "tqcore/tqstring.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {

struct MemoryBlock {
  TQString name;
  StreamBlock block;
};

// All blocks of the process. They live until it ends, so a block outlives every stream on it.
class MemoryBlockStore {
 public:
  void SetLock(TQLock* lock) { lock_ = lock; }
  TQLock* Lock() const { return lock_; }
  // Null when no block has exactly that name. The store keeps ownership in both.
  MemoryBlock* Find(std::u16string_view name);
  MemoryBlock& Add(std::u16string_view name, StreamBlock block);

 private:
  TQLock* lock_ = nullptr;
  std::forward_list<MemoryBlock> blocks_;
};

class TQMemoryStreamImpl final : public YStream {
 public:
  ~TQMemoryStreamImpl() override { TQMemoryStreamImpl::Close(); }

  ResultCode Open(std::u16string_view name, StreamMode mode) override;
  ResultCode Close() override;
  ResultCode Read(void* buffer, std::int32_t& count) override;
  ResultCode ReadLine(char16_t* buffer, std::int32_t& count) override;
  bool ReadChar(char16_t& unit) override;
  ResultCode Write(const void* buffer, std::int32_t& count) override;
  ResultCode WriteChar(char16_t unit) override;
  bool Seek(std::int64_t position) override;
  std::int64_t GetLength() override { return block_ == nullptr ? -1 : block_->block.Size(); }
  int GetName(char16_t* /*buffer*/, int /*size*/) override { return -1; }

 private:
  bool MayRead() const;
  void Attach(MemoryBlock& block, StreamMode mode);

  MemoryBlock* block_ = nullptr;  // owned by the store
  StreamPositions positions_;
  StreamMode mode_ = StreamMode::kClosed;
};

}  // namespace kelmora
