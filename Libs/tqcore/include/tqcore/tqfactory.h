// TQFactory: makes objects of one product type by an integer key. A concrete factory derives from
// it, names its RegisterAll function and is held by a TQSingleton:
//
//   class StreamFactory : public TQFactory<YStream> {
//    public:
//     StreamFactory() : TQFactory(&RegisterAll) {}
//   };
//
// The first Create registers every class; a program that creates nothing registers nothing.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "tqcore/tqsingleton.h"

namespace kelmora {

// `Owner` is the pointer type that a creator returns; it must have a null value.
template <class Product, class Owner = std::unique_ptr<Product>>
class TQFactory {
 public:
  using Creator = Owner (*)();
  using RegisterAllFunction = void (*)(TQFactory&);

  explicit TQFactory(RegisterAllFunction registerAll) : registerAll_(registerAll) {}
  TQFactory(const TQFactory&) = delete;
  TQFactory& operator=(const TQFactory&) = delete;

  void SetLock(TQLock* lock) { lock_ = lock; }

  // False, and no change, when the key is taken.
  bool Register(std::int32_t key, Creator creator) {
    if (IsSmall(key)) {
      Creator& place = small_[static_cast<std::size_t>(key)];
      if (place != nullptr) return false;
      place = creator;
    } else {
      const auto place = std::ranges::lower_bound(large_, key, {}, &Entry::key);
      if (place != large_.end() && place->key == key) return false;
      large_.insert(place, Entry{key, creator});
    }
    ++count_;
    return true;
  }

  // Null for a key that nobody registered. Constant time for keys 0..255, else logarithmic.
  [[nodiscard]] Owner Create(std::int32_t key) {
    if (count_ == 0) RegisterAll();
    if (IsSmall(key)) {
      const Creator creator = small_[static_cast<std::size_t>(key)];
      return creator == nullptr ? Owner() : creator();
    }
    const auto entry = std::ranges::lower_bound(large_, key, {}, &Entry::key);
    return entry == large_.end() || entry->key != key ? Owner() : entry->creator();
  }

 private:
  static constexpr std::int32_t kSmallKeys = 256;
  static constexpr bool IsSmall(std::int32_t key) { return key >= 0 && key < kSmallKeys; }

  struct Entry {
    std::int32_t key;
    Creator creator;
  };

  void RegisterAll() {
    TQLockGuard guard(lock_);
    if (count_ == 0 && registerAll_ != nullptr) registerAll_(*this);
  }

  RegisterAllFunction registerAll_;
  TQLock* lock_ = nullptr;
  std::int32_t count_ = 0;
  std::array<Creator, kSmallKeys> small_ = {};
  std::vector<Entry> large_;  // ascending by key
};

}  // namespace kelmora
