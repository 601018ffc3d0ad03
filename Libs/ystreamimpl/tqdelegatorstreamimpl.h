// TQDelegatorStreamImpl: chooses between a file and a URL by the name, and finds relative names in
// the directories of what was opened before.
//
// Failures of the inner stream, and calls without one, are raised as TQResultError. Only Open
// returns its codes: kAlreadyOpen, and kFail when nothing opened.
#pragma once

#include <memory>
#include <vector>

#include "tqcore/tqstring.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {

class TQDelegatorStreamImpl final : public YStream {
 public:
  static constexpr std::size_t kMostSearchDirectories = 10;
  // Process-wide; each ends in a separator. Open adds to it.
  static std::vector<TQString>& SearchDirectories();

  ~TQDelegatorStreamImpl() override;

  ResultCode Open(std::u16string_view name, StreamMode mode) override;
  ResultCode Close() override;
  ResultCode Read(void* buffer, std::int32_t& count) override;
  ResultCode ReadLine(char16_t* buffer, std::int32_t& count) override;
  bool ReadChar(char16_t& unit) override;
  ResultCode Write(const void* buffer, std::int32_t& count) override;
  ResultCode WriteChar(char16_t unit) override;
  bool Seek(std::int64_t position) override { return inner_ != nullptr && inner_->Seek(position); }
  std::int64_t GetLength() override { return inner_ == nullptr ? 0 : inner_->GetLength(); }
  int GetName(char16_t* buffer, int size) override;

 private:
  YStream& Inner();
  bool OpenRelative(const TQString& name, bool isUrl, StreamMode mode);

  std::unique_ptr<YStream> inner_;
};

}  // namespace kelmora
