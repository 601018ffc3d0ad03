// Writing a file so that its name shows either the old content or the whole new one, where the
// file system allows it.
#pragma once

#include <string>
#include <string_view>

#include <sys/stat.h>

#include "filedescriptor.h"

namespace kelmora {

// A file is written beside its target and takes its name at Commit. Devices, pipes and names that
// stand for a descriptor are written to directly, and so is a file whose directory cannot be
// written or whose owner could not be kept. A symbolic link stays one: its target is replaced.
class FileWriter {
 public:
  // How long to wait for somebody who opens a pipe to read.
  static constexpr int kPipeSeconds = 60;

  explicit FileWriter(std::u16string_view path);
  ~FileWriter();  // without Commit the target stays as it was, unless it is written directly
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;

  // All operations return 0 or the system's number of the failure.
  [[nodiscard]] int Open();
  [[nodiscard]] int Write(std::string_view bytes);
  [[nodiscard]] int Commit();

 private:
  int OpenDirectly();
  int OpenPipe();
  int OpenReplacement(const struct stat* replaced);
  bool KeepOwnerAndMode(const struct stat& replaced);
  void DropReplacement();
  int CopyOverTarget();

  std::string path_;
  std::string target_;       // what `replacement_` will replace
  std::string replacement_;  // empty when the target is written directly
  FileDescriptor file_;
};

}  // namespace kelmora
