// TQForwardingStream: a stream that is another stream under a second number.
#pragma once

#include "tqfilestreamimpl.h"
#include "tqmemorystreamimpl.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {

template <class Inner>
class TQForwardingStream : public YStream {
 public:
  ResultCode Open(std::u16string_view name, StreamMode mode) override {
    return inner_.Open(name, mode);
  }
  ResultCode Close() override { return inner_.Close(); }
  ResultCode Read(void* buffer, std::int32_t& count) override { return inner_.Read(buffer, count); }
  ResultCode ReadLine(char16_t* buffer, std::int32_t& count) override {
    return inner_.ReadLine(buffer, count);
  }
  bool ReadChar(char16_t& unit) override { return inner_.ReadChar(unit); }
  ResultCode Write(const void* buffer, std::int32_t& count) override {
    return inner_.Write(buffer, count);
  }
  ResultCode WriteChar(char16_t unit) override { return inner_.WriteChar(unit); }
  bool Seek(std::int64_t position) override { return inner_.Seek(position); }
  std::int64_t GetLength() override { return inner_.GetLength(); }
  int GetName(char16_t* buffer, int size) override { return inner_.GetName(buffer, size); }

 private:
  Inner inner_;
};

// The stream that the rest of the system asks for: the program's own files, and memory blocks.
class TQResourceStream final : public TQForwardingStream<TQMemoryStreamImpl> {};

// A file beside the executable; of the name only the part behind the last separator counts.
class TQModuleFileStream final : public TQForwardingStream<TQFileStreamImpl> {
 public:
  ResultCode Open(std::u16string_view name, StreamMode mode) override;

  // The directory of an executable, ending in a separator. A build tree's "release" directory
  // stands for everything below it.
  static TQString ModuleDirectory(const TQString& executable);
};

}  // namespace kelmora
