// UnitSet: "does this unit belong to that short text", one load for ASCII.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelmora {

class UnitSet {
 public:
  // The view must outlive the set.
  explicit UnitSet(std::u16string_view units) : units_(units) {
    for (char16_t unit : units) {
      if (unit < kAsciiUnits) ascii_[unit / kWordBits] |= Bit(unit);
    }
  }

  bool Has(char16_t unit) const {
    if (unit < kAsciiUnits) return (ascii_[unit / kWordBits] & Bit(unit)) != 0;
    return units_.find(unit) != std::u16string_view::npos;
  }

 private:
  static constexpr int kAsciiUnits = 128;
  static constexpr int kWordBits = 64;
  static constexpr std::uint64_t Bit(char16_t unit) {
    return std::uint64_t{1} << (unit % kWordBits);
  }

  std::u16string_view units_;
  std::uint64_t ascii_[kAsciiUnits / kWordBits] = {};
};

}  // namespace kelmora
