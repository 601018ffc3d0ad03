// Libraries that only some runs need, loaded when they do. They stay loaded.
#pragma once

namespace kelmora {

// Null when there is no such library. Throws std::bad_alloc when it is there and finds no room:
// what it was needed for must not silently come out otherwise.
void* OpenSharedLibrary(const char* fileName);
// Null when the library does not have it.
void* FindSymbol(void* library, const char* name);

// False, and null in `function`, when the library does not have it.
template <class Function>
bool BindSymbol(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(FindSymbol(library, name));
  return function != nullptr;
}

}  // namespace kelmora
