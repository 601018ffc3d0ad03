// FileTarget: where a path leads.
#pragma once

#include <string>

#include <sys/stat.h>

#include "ystreamimpl/filedescriptor.h"

namespace kelmora {

// A directory, held open, and a name in it that is no symbolic link, be there something of that
// name or not. No whole path is ever made of them, so the directory may lie deeper than a path can
// tell.
class FileTarget {
 public:
  // Returns 0 or the system's number of the failure.
  [[nodiscard]] int Resolve(const std::string& path);

  int Directory() const { return directory_.Number(); }
  const char* Name() const { return name_.c_str(); }

  // Whether the name in the directory is that of the file: the name of the target if none is given.
  bool IsNameOf(const struct stat& file, const char* name = nullptr) const;

 private:
  int Enter(const std::string& path);

  FileDescriptor directory_;
  std::string name_;
};

}  // namespace kelmora
