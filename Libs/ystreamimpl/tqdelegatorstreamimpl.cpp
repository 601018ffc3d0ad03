#include "tqdelegatorstreamimpl.h"

#include <algorithm>
#include <utility>

#include "readline.h"
#include "tqcore/processstate.h"
#include "tqcore/tqerrorlogger.h"

namespace kelmora {

namespace {

constexpr std::u16string_view kSchemeEnd = u"://";

constexpr bool IsSeparator(char16_t unit) {
  return unit == u'/' || unit == u'\\';
}

// There are no drive letters here: a name is absolute by its root or its URL scheme.
bool IsRelative(const TQString& name, bool isUrl) {
  return !isUrl && name[0] != u'/';
}

void RememberDirectory(const TQString& name) {
  std::vector<TQString>& directories = TQDelegatorStreamImpl::SearchDirectories();
  TQString directory = name.Directory(true);
  if (directory.IsEmpty() || directories.size() >= TQDelegatorStreamImpl::kMostSearchDirectories) {
    return;
  }
  if (std::ranges::find(directories, directory) != directories.end()) return;
  directories.push_back(std::move(directory));
}

}  // namespace

std::vector<TQString>& TQDelegatorStreamImpl::SearchDirectories() {
  struct Directories {
    std::vector<TQString> names;
  };
  return ProcessState::Of<Directories>().names;
}

TQDelegatorStreamImpl::~TQDelegatorStreamImpl() = default;

ResultCode TQDelegatorStreamImpl::Open(std::u16string_view name, StreamMode mode) {
  if (inner_ != nullptr) return streamresult::kAlreadyOpen;
  if (name.empty()) RaiseOnFailure(streamresult::kEmptyName);
  const bool isUrl = name.find(kSchemeEnd) != std::u16string_view::npos;
  inner_ = CreateStream(isUrl ? StreamNumber::kUrl : StreamNumber::kFile);
  if (inner_ == nullptr) RaiseOnFailure(streamresult::kNoInnerClass);

  const TQString text(name);
  bool isOpen = false;
  if (IsRelative(text, isUrl)) {
    isOpen = OpenRelative(text, isUrl, mode);
  } else {
    isOpen = inner_->Open(text.View(), mode) == streamresult::kSuccess;
    if (isOpen) RememberDirectory(text);
  }
  if (isOpen) return streamresult::kSuccess;
  inner_.reset();
  return kFail;
}

bool TQDelegatorStreamImpl::OpenRelative(const TQString& name, bool isUrl, StreamMode mode) {
  const std::u16string_view tail = name.View().substr(IsSeparator(name[0]) ? 1 : 0);
  for (const TQString& directory : SearchDirectories()) {
    if (inner_->Open((directory + tail).View(), mode) == streamresult::kSuccess) return true;
  }
  return !isUrl && inner_->Open(name.View(), mode) == streamresult::kSuccess;
}

YStream& TQDelegatorStreamImpl::Inner() {
  if (inner_ == nullptr) RaiseOnFailure(streamresult::kNoInnerStream);
  return *inner_;
}

ResultCode TQDelegatorStreamImpl::Close() {
  if (inner_ == nullptr) return streamresult::kSuccess;
  const std::unique_ptr<YStream> inner = std::move(inner_);
  RaiseOnFailure(inner->Close());
  return streamresult::kSuccess;
}

ResultCode TQDelegatorStreamImpl::Read(void* buffer, std::int32_t& count) {
  RaiseOnFailure(Inner().Read(buffer, count));
  return streamresult::kSuccess;
}

ResultCode TQDelegatorStreamImpl::ReadLine(char16_t* buffer, std::int32_t& count) {
  RaiseOnFailure(Inner().ReadLine(buffer, count));
  return streamresult::kSuccess;
}

bool TQDelegatorStreamImpl::ReadChar(char16_t& unit) {
  return Inner().ReadChar(unit);
}

ResultCode TQDelegatorStreamImpl::Write(const void* buffer, std::int32_t& count) {
  RaiseOnFailure(Inner().Write(buffer, count));
  return streamresult::kSuccess;
}

ResultCode TQDelegatorStreamImpl::WriteChar(char16_t unit) {
  RaiseOnFailure(Inner().WriteChar(unit));
  return streamresult::kSuccess;
}

int TQDelegatorStreamImpl::GetName(char16_t* buffer, int size) {
  return inner_ == nullptr ? -1 : inner_->GetName(buffer, size);
}

}  // namespace kelmora
