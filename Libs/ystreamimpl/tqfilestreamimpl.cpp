#include "tqfilestreamimpl.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "readline.h"
#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

// By StreamMode.
constexpr const char* kOpenModes[] = {"notused", "rb", "wb", "ab", "rwb"};

// From the second separator on, since the first stands behind the root. Failures show at the open.
void MakeDirectories(const std::string& path) {
  std::error_code ignored;
  std::size_t separator = path.find('/');
  while (separator != std::string::npos) {
    separator = path.find('/', separator + 1);
    if (separator == std::string::npos) break;
    std::filesystem::create_directory(path.substr(0, separator), ignored);
  }
}

}  // namespace

TQFileStreamImpl::~TQFileStreamImpl() {
  CloseQuietly(*this);
}

ResultCode TQFileStreamImpl::Open(std::u16string_view name, StreamMode mode) {
  if (mode_ != StreamMode::kClosed) return streamresult::kAlreadyOpen;
  if (name.empty()) return streamresult::kEmptyName;
  if (mode < StreamMode::kRead || mode > StreamMode::kReadWrite) return streamresult::kWrongMode;
  name_ = name;
  const std::string path = ToNative(name);
  if (mode == StreamMode::kWrite) MakeDirectories(path);
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return streamresult::kFileNotFound;
  file_ = std::fopen(path.c_str(), kOpenModes[static_cast<int>(mode)]);
  if (file_ == nullptr) return streamresult::kFileNotFound;
  mode_ = mode;
  return streamresult::kSuccess;
}

ResultCode TQFileStreamImpl::Close() {
  if (file_ == nullptr) return streamresult::kWrongMode;
  mode_ = StreamMode::kClosed;
  const int failed = std::fclose(std::exchange(file_, nullptr));
  return failed != 0 ? streamresult::kWriteFault : streamresult::kSuccess;
}

ResultCode TQFileStreamImpl::Read(void* buffer, std::int32_t& count) {
  const std::int32_t wanted = std::exchange(count, 0);
  if (!MayRead()) return streamresult::kWrongMode;
  if (wanted <= 0) return streamresult::kSuccess;
  std::clearerr(file_);  // of an earlier write that failed
  count = static_cast<std::int32_t>(std::fread(buffer, 1, static_cast<std::size_t>(wanted), file_));
  return std::ferror(file_) != 0 ? streamresult::kReadFault : streamresult::kSuccess;
}

ResultCode TQFileStreamImpl::ReadLine(char16_t* buffer, std::int32_t& count) {
  return ReadLineFrom(*this, mode_, buffer, count);
}

bool TQFileStreamImpl::ReadChar(char16_t& unit) {
  if (!MayRead()) return false;
  const int byte = std::fgetc(file_);
  if (byte == EOF) return false;
  unit = static_cast<char16_t>(byte);
  return true;
}

ResultCode TQFileStreamImpl::Write(const void* buffer, std::int32_t& count) {
  const std::int32_t size = std::exchange(count, 0);
  if (!MayWrite()) return streamresult::kWrongMode;
  if (size <= 0) return streamresult::kSuccess;
  count = static_cast<std::int32_t>(std::fwrite(buffer, 1, static_cast<std::size_t>(size), file_));
  return count == size ? streamresult::kSuccess : streamresult::kWriteFault;
}

ResultCode TQFileStreamImpl::WriteChar(char16_t unit) {
  const char byte = static_cast<char>(unit & 0xFF);
  std::int32_t count = 1;
  return Write(&byte, count);
}

bool TQFileStreamImpl::Seek(std::int64_t position) {
  if (file_ == nullptr) return true;
  return position >= 0 && fseeko(file_, position, SEEK_SET) == 0;
}

std::int64_t TQFileStreamImpl::GetLength() {
  if (file_ != nullptr && MayWrite()) std::fflush(file_);
  std::error_code error;
  const auto size = std::filesystem::file_size(ToNative(name_), error);
  return error ? -1 : static_cast<std::int64_t>(size);
}

int TQFileStreamImpl::GetName(char16_t* buffer, int size) {
  return CopyName(name_.View(), buffer, size);
}

}  // namespace kelmora
