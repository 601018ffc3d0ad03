// TQSingleton: the holder of one shared object of a type, made at its first use and destroyed at
// the end of the program, in the reverse order of creation.
#pragma once

#include <new>

#include "tqcore/tqerrorlogger.h"

namespace kelmora {

// The seam for threads; the system has one thread, so this lock does nothing.
class TQLock {
 public:
  virtual ~TQLock() = default;
  virtual void Lock() {}
  virtual void Unlock() {}
};

class TQLockGuard {
 public:
  explicit TQLockGuard(TQLock* lock) : lock_(lock) {
    if (lock_ != nullptr) lock_->Lock();
  }
  ~TQLockGuard() {
    if (lock_ != nullptr) lock_->Unlock();
  }
  TQLockGuard(const TQLockGuard&) = delete;
  TQLockGuard& operator=(const TQLockGuard&) = delete;

 private:
  TQLock* lock_;
};

template <class Held>
class TQSingleton {
 public:
  // Raises TQResultError kUnexpected once the object is gone, or when it can't be made. A held
  // object that has SetLock(TQLock*) is given the holder's lock.
  static Held& Instance() {
    if (instance_ != nullptr) return *instance_;
    return MakeInstance();
  }

 private:
  struct Holder {
    Held held;
    ~Holder() {
      instance_ = nullptr;
      destroyed_ = true;
    }
  };

  static Held& MakeInstance() {
    static TQLock lock;
    TQLockGuard guard(&lock);
    if (instance_ != nullptr) return *instance_;
    if (destroyed_) {
      TQErrorLogger::ReportAndRaise(kUnexpected, u"This class has already been destroyed",
                                    u"tqsingleton.h", __LINE__);
    }
    try {
      static Holder holder;
      if constexpr (requires { holder.held.SetLock(&lock); }) holder.held.SetLock(&lock);
      instance_ = &holder.held;
    } catch (const std::bad_alloc&) {
      TQErrorLogger::ReportAndRaise(kUnexpected, u"The Individual Factory Could Not Be Created",
                                    u"tqsingleton.h", __LINE__);
    }
    return *instance_;
  }

  static inline Held* instance_ = nullptr;
  static inline bool destroyed_ = false;
};

}  // namespace kelmora
