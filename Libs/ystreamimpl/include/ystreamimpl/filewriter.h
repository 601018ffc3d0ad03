// Writing a file so that its name shows either the old content or the whole new one.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <sys/stat.h>

#include "ystreamimpl/filedescriptor.h"

namespace kelmora {

class FileTarget;

// Devices, pipes and names that stand for a descriptor are written to directly. Everything else is
// a file that is written as a copy first, which at Commit becomes the file:
// - by taking its name. The copy lies beside its target and has no name until then, where the file
//   system has such files. A symbolic link stays one: what it leads to is replaced or made.
// - by being written over it, where nothing can be put beside the target, where the owner could not
//   be kept, or where the target cannot be replaced (a mount point of its own). When that fails,
//   the old content is written back. A process that is killed meanwhile leaves a mixture.
class FileWriter {
 public:
  // How long to wait for somebody who opens a pipe to read.
  static constexpr int kPipeSeconds = 10;

  explicit FileWriter(std::string path);
  ~FileWriter();  // without Commit the target stays as it was, unless it is written directly
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;

  // All operations return 0 or the system's number of the failure.
  [[nodiscard]] int Open();
  [[nodiscard]] int Write(std::string_view bytes);
  [[nodiscard]] int Commit();

 private:
  enum class Manner { kDirect, kReplace, kOverwrite };

  int OpenDirectly();
  int OpenPipe();
  int OpenCopy(const struct stat* replaced);
  int MakeReplacement(mode_t mode);
  int NameReplacement();
  template <class Take>
  int TakeName(const Take& take);
  bool LinkNameless(const char* name);
  bool IsCopy(const FileDescriptor& file) const;
  bool RemoveLeftover() const;
  bool KeepOwnerAndMode(const struct stat& replaced);
  void DropReplacement();
  int ReplaceTarget();
  int OverwriteTarget();

  std::string path_;
  Manner manner_ = Manner::kDirect;
  std::unique_ptr<FileTarget> target_;  // none when it is written directly
  bool isNew_ = false;                  // there was no file at Open
  std::string replacement_;             // the copy's name beside the target, while it has one
  FileDescriptor file_;
};

}  // namespace kelmora
