#include "sorting/sortkey.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "engine/resultconstruction.h"
#include "sorting/collation.h"
#include "unicode/unicodedata.h"
#include "xslt/tqxslterror.h"

namespace kelmora {

namespace {

bool IsLowerCaseLetter(char16_t unit) {
  return std::u16string_view(GeneralCategory(unit)) == u"Ll";
}

}  // namespace

void TextSortKey::Add(std::u16string_view text) {
  collation_.AppendKey(text, caseOrder_ != CaseOrder::None, bytes_);
  ends_.push_back(bytes_.size());
  if (caseOrder_ == CaseOrder::None) return;
  units_.insert(units_.end(), text.begin(), text.end());
  textEnds_.push_back(units_.size());
}

std::u16string_view TextSortKey::Text(std::size_t entry) const {
  const std::size_t start = entry == 0 ? 0 : textEnds_[entry - 1];
  return {units_.data() + start, textEnds_[entry] - start};
}

int TextSortKey::Compare(std::size_t a, std::size_t b) const {
  const std::size_t lengthA = ends_[a] - Start(a);
  const std::size_t lengthB = ends_[b] - Start(b);
  const std::size_t common = std::min(lengthA, lengthB);
  int result = common == 0 ? 0 : std::memcmp(&bytes_[Start(a)], &bytes_[Start(b)], common);
  if (result == 0 && lengthA != lengthB) result = lengthA < lengthB ? -1 : 1;
  if (result == 0 && caseOrder_ != CaseOrder::None) result = CompareCase(a, b);
  return Descending ? -result : result;
}

// Of two texts that differ in case at most; the first unit that differs decides.
int TextSortKey::CompareCase(std::size_t a, std::size_t b) const {
  const std::u16string_view textA = Text(a);
  const std::u16string_view textB = Text(b);
  const auto [atA, atB] = std::ranges::mismatch(textA, textB);
  if (atA == textA.end() && atB == textB.end()) return 0;
  const bool isLower = atA != textA.end() && IsLowerCaseLetter(*atA);
  return isLower == (caseOrder_ == CaseOrder::LowerFirst) ? -1 : 1;
}

std::uint64_t TextSortKey::Leading(std::size_t entry) const {
  std::uint64_t leading = 0;
  const std::size_t length = std::min(ends_[entry] - Start(entry), sizeof leading);
  for (std::size_t at = 0; at < sizeof leading; ++at) {
    leading = leading << 8 | (at < length ? bytes_[Start(entry) + at] : 0);
  }
  return Descending ? ~leading : leading;
}

void NumberSortKey::Add(double number) {
  number += 0.0;              // the negative zero becomes the positive one
  std::uint64_t ordered = 0;  // NaN
  if (!std::isnan(number)) {
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    const auto bits = std::bit_cast<std::uint64_t>(number);
    ordered = (bits & kSign) != 0 ? ~bits : bits | kSign;
  }
  numbers_.push_back(Descending ? ~ordered : ordered);
}

int NumberSortKey::Compare(std::size_t a, std::size_t b) const {
  if (numbers_[a] == numbers_[b]) return 0;
  return numbers_[a] < numbers_[b] ? -1 : 1;
}

void SortNodes(XPathNodeList& list, const SortKeyList& keys) {
  if (keys.empty()) return;
  for (const auto& key : keys) {
    if (key->Size() != list.size()) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  }
  struct Item {
    std::uint64_t leading;  // of the first key
    std::size_t entry;
  };
  std::vector<Item> items;
  items.reserve(list.size());
  for (std::size_t entry = 0; entry < list.size(); ++entry) {
    items.push_back({keys.front()->Leading(entry), entry});
  }
  // A merge sort, since a case order can rank two texts first at the same time.
  std::ranges::stable_sort(items, [&list, &keys](const Item& a, const Item& b) {
    if (a.leading != b.leading) return a.leading < b.leading;
    for (const auto& key : keys) {
      const int result = key->Compare(a.entry, b.entry);
      if (result != 0) return result < 0;
    }
    return list[a.entry].node->orderNumber < list[b.entry].node->orderNumber;
  });
  XPathNodeList sorted;
  sorted.reserve(list.size());
  for (const Item& item : items) sorted.push_back(list[item.entry]);
  list.swap(sorted);
}

}  // namespace kelmora
