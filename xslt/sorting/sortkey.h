// SortKey: the values of one xsl:sort, one for each entry of the list that is to be sorted, added
// in the order of the list. All values are computed before the first comparison, in a form that
// compares fast: a text as the key of bytes of its collation, a number as 64 bits in order.
//
// This room holds the keys of sorts and the collations that they compare by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "xpath/xpathvalue.h"

namespace kelmora {

class Collation;

enum class CaseOrder : std::uint8_t { None, UpperFirst, LowerFirst };

class SortKey {
 public:
  explicit SortKey(bool descending) : Descending(descending) {}
  virtual ~SortKey() = default;

  virtual void Reserve(std::size_t count) = 0;
  virtual std::size_t Size() const = 0;

  // Of two entries by their indexes: below 0 when `a` comes first, 0 when they are equal.
  virtual int Compare(std::size_t a, std::size_t b) const = 0;
  // An entry with the smaller number comes first; for equal ones Compare decides.
  virtual std::uint64_t Leading(std::size_t entry) const = 0;

  bool Descending;
};

using SortKeyList = std::vector<std::unique_ptr<SortKey>>;

class TextSortKey final : public SortKey {
 public:
  TextSortKey(const Collation& collation, bool descending, CaseOrder caseOrder)
      : SortKey(descending), collation_(collation), caseOrder_(caseOrder) {}

  void Reserve(std::size_t count) override { ends_.reserve(count); }
  void Add(std::u16string_view text);
  std::size_t Size() const override { return ends_.size(); }
  int Compare(std::size_t a, std::size_t b) const override;
  std::uint64_t Leading(std::size_t entry) const override;

 private:
  std::size_t Start(std::size_t entry) const { return entry == 0 ? 0 : ends_[entry - 1]; }
  std::u16string_view Text(std::size_t entry) const;
  int CompareCase(std::size_t a, std::size_t b) const;

  const Collation& collation_;
  CaseOrder caseOrder_;
  std::vector<std::uint8_t> bytes_;  // all keys, one behind the other
  std::vector<std::size_t> ends_;    // where each key ends
  std::vector<char16_t> units_;      // with a case order, the texts themselves
  std::vector<std::size_t> textEnds_;
};

// NaN is below every number.
class NumberSortKey final : public SortKey {
 public:
  using SortKey::SortKey;

  void Reserve(std::size_t count) override { numbers_.reserve(count); }
  void Add(double number);
  std::size_t Size() const override { return numbers_.size(); }
  int Compare(std::size_t a, std::size_t b) const override;
  std::uint64_t Leading(std::size_t entry) const override { return numbers_[entry]; }

 private:
  std::vector<std::uint64_t> numbers_;  // in the order of the sort
};

// Sorts the list by the keys, the first one that differs deciding; equal entries go by document
// order. The positions that the entries bear stay with them. Raises code 7 for keys of another
// list.
void SortNodes(XPathNodeList& list, const SortKeyList& keys);

}  // namespace kelmora
