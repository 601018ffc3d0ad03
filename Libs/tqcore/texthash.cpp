#include "tqcore/texthash.h"

#include <chrono>

#if defined(__linux__)
#include <sys/auxv.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstring>
#endif

namespace kelmora {
namespace {

struct Key {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
};

#if defined(__linux__)

// Without waiting: a system that has just started may have no random bytes for a long time.
bool AskSystem(Key& key) {
  return getrandom(&key, sizeof key, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof key);
}

// 16 random bytes that the system puts into the memory of each process.
Key KeyOfProcess() {
  Key key;
  const auto* bytes = reinterpret_cast<const void*>(getauxval(AT_RANDOM));
  if (bytes != nullptr) std::memcpy(&key, bytes, sizeof key);
  key.high += static_cast<std::uint64_t>(getpid());
  return key;
}

#else

bool AskSystem(Key&) {
  return false;
}
Key KeyOfProcess() {
  return {};
}

#endif

}  // namespace

HashState DrawHashKey(bool ask) noexcept {
  Key key;
  if (ask && AskSystem(key)) return {key.low, key.high};
  key = KeyOfProcess();
  // Hashed, since others use the same bytes as they are.
  const auto part = [&key](std::uint64_t number) {
    HashState state(key.low, key.high);
    state.Take(static_cast<std::uint64_t>(
        std::chrono::high_resolution_clock::now().time_since_epoch().count()));
    state.Take(reinterpret_cast<std::uintptr_t>(&key));
    state.Take(number);
    return state.Finish();
  };
  return {part(0), part(1)};
}

}  // namespace kelmora
