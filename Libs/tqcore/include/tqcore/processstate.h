// ProcessState: what the process keeps outside of all objects that somebody owns: counters,
// budgets, reports of the last call. There is one thread, so nothing is locked.
//
// Each library declares its part as a plain struct with its values at the start, and reaches it by
// ProcessState::Of. docs/ARCHITECTURE.md lists the parts. Pools, and tables that are made once and
// never change, are no state.
#pragma once

namespace kelmora {

class ProcessState {
 public:
  // The one object of that type, made by the first call. The reference is good for ever.
  template <class Part>
  static Part& Of() {
    static Entry<Part> entry;
    return entry.part;
  }

  // Gives all parts their values at the start, for tests.
  static void Reset() {
    for (Link* link = first_; link != nullptr; link = link->next) link->Reset();
  }

 private:
  struct Link {
    Link() : next(first_) { first_ = this; }
    virtual void Reset() = 0;
    Link* next;

   protected:
    ~Link() = default;
  };
  template <class Part>
  struct Entry final : Link {
    void Reset() override { part = Part(); }
    Part part;
  };

  static inline Link* first_ = nullptr;
};

}  // namespace kelmora
