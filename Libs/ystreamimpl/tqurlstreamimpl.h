// TQUrlStreamImpl: a URL, fetched whole when it is opened for reading and sent whole when it is
// closed after writing.
#pragma once

#include "streamblock.h"
#include "tqcore/tqstring.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {

class TQUrlStreamImpl final : public YStream {
 public:
  ~TQUrlStreamImpl() override;

  // kRead and kWrite only.
  ResultCode Open(std::u16string_view name, StreamMode mode) override;
  // A send that fails leaves the stream open.
  ResultCode Close() override;
  ResultCode Read(void* buffer, std::int32_t& count) override;
  ResultCode ReadLine(char16_t* buffer, std::int32_t& count) override;
  bool ReadChar(char16_t& unit) override;
  ResultCode Write(const void* buffer, std::int32_t& count) override;
  ResultCode WriteChar(char16_t unit) override;
  bool Seek(std::int64_t position) override;
  // The capacity while writing, the size while reading.
  std::int64_t GetLength() override;
  int GetName(char16_t* buffer, int size) override;

 private:
  void Reset();

  TQString name_;
  StreamBlock block_;
  StreamPositions positions_;
  StreamMode mode_ = StreamMode::kClosed;
};

}  // namespace kelmora
