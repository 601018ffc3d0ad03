// SlabList: the memory behind arenas and pools, in slabs each of which is twice as big as the one
// before, up to a huge page. All of them are given back when the list dies.
#pragma once

#include <cstddef>
#include <vector>

namespace kelmora {

class SlabList {
 public:
  struct Slab {
    std::byte* begin;
    std::size_t bytes;
  };

  SlabList() = default;
  SlabList(const SlabList&) = delete;
  SlabList& operator=(const SlabList&) = delete;
  ~SlabList();

  std::size_t NextSize() const { return nextBytes_; }
  // A new slab, of NextSize() bytes or, without effect on the others, of a size of its own. It is
  // aligned for every type. Throws std::bad_alloc.
  Slab Add();
  Slab AddOfSize(std::size_t bytes);

 private:
  static constexpr std::size_t kFirstSlab = 4096;

  std::vector<Slab> slabs_;
  std::size_t nextBytes_ = kFirstSlab;
};

}  // namespace kelmora
