#include "tqcore/sharedlibrary.h"

#include <dlfcn.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>

namespace kelmora {
namespace {

// The loader tells its failures by text alone.
constexpr std::string_view kMemoryTexts[] = {"annot allocate memory", "failed to map"};

}  // namespace

void* OpenSharedLibrary(const char* fileName) {
  void* library = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
  if (library != nullptr) return library;
  const char* reason = dlerror();
  const std::string_view text = reason != nullptr ? reason : "";
  const bool isMemory =
      std::any_of(std::begin(kMemoryTexts), std::end(kMemoryTexts),
                  [text](std::string_view known) { return text.find(known) != text.npos; });
  if (isMemory) throw std::bad_alloc();
  return nullptr;
}

void* FindSymbol(void* library, const char* name) {
  return dlsym(library, name);
}

}  // namespace kelmora
