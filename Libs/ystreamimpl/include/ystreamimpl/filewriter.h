// Writing a file so that its name shows either the old content or the whole new one, where the
// file system allows it.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <sys/stat.h>

#include "ystreamimpl/filedescriptor.h"

namespace kelmora {

// A file is written beside its target and takes its name at Commit; until then it has no name,
// where the file system has such files, so that nothing is left of a run that is killed. Devices,
// pipes and names that stand for a descriptor are written to directly, and so is a file whose
// directory cannot be written or whose owner could not be kept. A symbolic link stays one: its
// target is replaced.
class FileWriter {
 public:
  // How long to wait for somebody who opens a pipe to read.
  static constexpr int kPipeSeconds = 10;

  explicit FileWriter(std::string path) : path_(std::move(path)) {}
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
  int MakeReplacement(mode_t mode);
  int NameReplacement();
  template <class Take>
  int TakeName(const Take& take);
  bool KeepOwnerAndMode(const struct stat& replaced);
  void DropReplacement();
  int CopyOverTarget();

  std::string path_;
  std::string target_;       // what the new file will replace; empty when it is written directly
  std::string replacement_;  // the name of the new file, as long as it has one of its own
  FileDescriptor file_;
};

}  // namespace kelmora
