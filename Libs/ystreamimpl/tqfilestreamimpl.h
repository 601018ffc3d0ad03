// TQFileStreamImpl: a stream on a file of the file system.
#pragma once

#include <cstdio>

#include "tqcore/tqstring.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {

class TQFileStreamImpl final : public YStream {
 public:
  ~TQFileStreamImpl() override;

  // kWrite makes the directories of the path, from the second "/" on. kReadWrite opens an existing
  // file for which the C library grants reading only: writes to it end in kWriteFault.
  ResultCode Open(std::u16string_view name, StreamMode mode) override;
  ResultCode Close() override;
  ResultCode Read(void* buffer, std::int32_t& count) override;
  ResultCode ReadLine(char16_t* buffer, std::int32_t& count) override;
  bool ReadChar(char16_t& unit) override;
  ResultCode Write(const void* buffer, std::int32_t& count) override;
  ResultCode WriteChar(char16_t unit) override;
  // True, and nothing done, without an open file.
  bool Seek(std::int64_t position) override;
  // Asks the file system for what the name, also that of a closed stream, stands for now.
  std::int64_t GetLength() override;
  int GetName(char16_t* buffer, int size) override;

 private:
  bool MayRead() const { return mode_ == StreamMode::kRead || mode_ == StreamMode::kReadWrite; }
  bool MayWrite() const { return mode_ != StreamMode::kClosed && mode_ != StreamMode::kRead; }

  std::FILE* file_ = nullptr;
  StreamMode mode_ = StreamMode::kClosed;
  TQString name_;
};

}  // namespace kelmora
