// SharedHandle: shared ownership of an object that counts its own references. The system has one
// thread, so counting is plain arithmetic; handles of incomplete types can be copied and destroyed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace kelmora {

class SharedCount {
 public:
  SharedCount() = default;
  SharedCount(const SharedCount&) = delete;
  SharedCount& operator=(const SharedCount&) = delete;
  virtual ~SharedCount() = default;

 private:
  template <class T>
  friend class SharedHandle;
  mutable std::int32_t references_ = 0;
};

template <class T>
class SharedHandle {
 public:
  SharedHandle() = default;
  SharedHandle(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)
  explicit SharedHandle(T* object) : object_(object), count_(object) { Retain(); }
  SharedHandle(const SharedHandle& other) : object_(other.object_), count_(other.count_) {
    Retain();
  }
  SharedHandle(SharedHandle&& other) noexcept
      : object_(std::exchange(other.object_, nullptr)),
        count_(std::exchange(other.count_, nullptr)) {}
  SharedHandle& operator=(SharedHandle other) noexcept {
    std::swap(object_, other.object_);
    std::swap(count_, other.count_);
    return *this;
  }
  ~SharedHandle() {
    if (count_ != nullptr && --count_->references_ == 0) delete count_;
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }
  void reset() { *this = SharedHandle(); }
  friend bool operator==(const SharedHandle& a, const SharedHandle& b) {
    return a.object_ == b.object_;
  }

 private:
  void Retain() {
    if (count_ != nullptr) ++count_->references_;
  }

  T* object_ = nullptr;
  const SharedCount* count_ = nullptr;
};

}  // namespace kelmora
