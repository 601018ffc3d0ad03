// Storage, search and editing of TQString.
//
// Every text has a block of its own, allocated for capacity + 1 units; the shared block empty_
// stands for "no block" and is recognised by its address. The length is stored, so each operation
// that changes the text ends in SetLength, which also writes the terminating 0. Text that comes
// in as a view may hold a unit of value 0 and may be a part of this very string: the first is cut
// on the way in, the second survives because views are turned into offsets before a block moves.
#include "tqcore/tqstring.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "textblocks.h"
#include "tqcore/largememory.h"
#include "tqcore/tqexcept.h"
#include "tqcore/tqtext.h"
#include "unitset.h"

namespace kelmora {

namespace {

constexpr const char16_t* kFile = u"tqstring.cpp";
constexpr int kRounding = 10;
// Room for the rounding and the terminator, so that no 32-bit count overflows.
constexpr std::int64_t kLargestCapacity = std::numeric_limits<std::int32_t>::max() - 2 * kRounding;

// Of a block for `capacity` units and their terminating 0, in bytes.
constexpr std::size_t BlockSize(std::int64_t capacity) {
  constexpr std::size_t kHead = 2 * sizeof(std::int32_t);
  return kHead + (static_cast<std::size_t>(capacity) + 1) * sizeof(char16_t);
}

std::int64_t RoundUp(std::int64_t capacity) {
  return ((capacity - 1) / kRounding + 1) * kRounding;
}

// The capacity itself, or, for a block of huge pages, one that leaves no part of the last unused:
// what is touched in small pages stays in small pages.
std::int64_t FillHugePages(std::int64_t capacity) {
  const std::size_t size = BlockSize(capacity);
  if (size < kHugePage) return capacity;
  const std::size_t unused = (kHugePage - size % kHugePage) % kHugePage;
  return capacity + static_cast<std::int64_t>(unused / sizeof(char16_t));
}

void CopyUnits(char16_t* to, const char16_t* from, std::size_t count) {
  if (count != 0) std::memmove(to, from, count * sizeof(char16_t));
}

int ToIndex(std::size_t position) {
  return position == std::u16string_view::npos ? TQString::kNotFound : static_cast<int>(position);
}

}  // namespace

struct TQString::EmptyBlock {
  Block block;
  char16_t terminator[2];
};
constinit TQString::EmptyBlock TQString::empty_ = {};

// --- storage ---------------------------------------------------------------------------------

TQString::TQString(const TQString& other) : block_(Empty()) {
  if (other.IsEmpty()) return;
  Reallocate(other.Length(), 0);
  CopyUnits(Text(), other.Text(), static_cast<std::size_t>(other.Length()));
  SetLength(other.Length());
}

TQString::TQString(std::u16string_view text) : block_(Empty()) {
  text = CutAtZero(text);
  if (text.empty()) return;
  Reallocate(static_cast<std::int64_t>(text.size()), 0);
  CopyUnits(Text(), text.data(), text.size());
  SetLength(static_cast<int>(text.size()));
}

TQString::TQString(const char16_t* text)
    : TQString(text == nullptr ? std::u16string_view() : std::u16string_view(text)) {}

TQString::TQString(char16_t unit) : TQString(std::u16string_view(&unit, 1)) {}

TQString& TQString::operator=(const TQString& other) {
  if (this == &other) return *this;
  if (!other.IsEmpty()) return Assign(other.View());
  if (OwnsBlock()) SetLength(0);
  return *this;
}

TQString& TQString::operator=(TQString&& other) noexcept {
  if (this == &other) return *this;
  Clear();
  block_ = other.block_;
  other.block_ = Empty();
  return *this;
}

TQString& TQString::operator=(std::u16string_view text) {
  return Assign(CutAtZero(text));
}

TQString& TQString::operator=(const char16_t* text) {
  return Assign(text == nullptr ? std::u16string_view() : std::u16string_view(text));
}

TQString& TQString::Assign(std::u16string_view text) {
  if (text.empty()) {
    Clear();
    return *this;
  }
  // A part of this string always fits, so growing never pulls the text away.
  if (text.size() > static_cast<std::size_t>(Capacity())) {
    Reallocate(RoundUp(static_cast<std::int64_t>(text.size())), 0);
  }
  CopyUnits(Text(), text.data(), text.size());
  SetLength(static_cast<int>(text.size()));
  return *this;
}

void TQString::Free() noexcept {
  FreeTextBlock(block_, BlockSize(block_->capacity));
  block_ = Empty();
}

bool TQString::Holds(const char16_t* position) const {
  const std::less<const char16_t*> before;
  const char16_t* end = Text() + block_->capacity + 1;
  return OwnsBlock() && !before(position, Text()) && before(position, end);
}

// Gives the string a block of exactly `capacity` units, in which the first `keep` units of the
// text stay. With nothing to keep the old block goes first, so that both are never held at once.
void TQString::Reallocate(std::int64_t capacity, int keep) {
  if (capacity > kLargestCapacity) throw TQExcept(kAllocationFailed, __LINE__, kFile);
  if (keep == 0) Clear();
  const std::size_t size = BlockSize(capacity);
  static_assert(BlockSize(0) == sizeof(Block) + sizeof(char16_t));
  void* memory = OwnsBlock() ? ResizeTextBlock(block_, BlockSize(block_->capacity), size)
                             : ResizeTextBlock(nullptr, 0, size);
  if (memory == nullptr) throw TQExcept(kAllocationFailed, __LINE__, kFile);
  block_ = static_cast<Block*>(memory);
  block_->capacity = static_cast<std::int32_t>(capacity);
  Text()[capacity] = 0;
  SetLength(keep);
}

// Room for `needed` units and `margin` more, but at least half as much again as before, so that
// a text appended to piece by piece is copied a constant number of times.
void TQString::Grow(std::int64_t needed, std::int64_t margin, int keep) {
  const std::int64_t geometric = std::int64_t{Capacity()} + Capacity() / 2;
  const std::int64_t least = std::max(needed + std::max<std::int64_t>(margin, 0), geometric);
  const std::int64_t wanted = FillHugePages(least);
  Reallocate(std::max(needed, std::min(wanted, kLargestCapacity)), keep);
}

void TQString::Resize(int capacity) {
  if (capacity <= 0) return Clear();
  Reallocate(capacity, std::min(Length(), capacity));
}

void TQString::Reserve(int capacity) {
  if (capacity > Capacity()) Reallocate(RoundUp(capacity), Length());
}

void TQString::ReserveEmpty(int capacity) {
  if (capacity > Capacity()) Reallocate(RoundUp(capacity), 0);
  if (OwnsBlock()) SetLength(0);
}

void TQString::ReserveRaw(int capacity) {
  if (capacity > Capacity()) Reallocate(RoundUp(capacity), 0);
}

char16_t* TQString::WriteBuffer(int capacity) {
  Reallocate(std::max(capacity, 1), 0);
  return Text();
}

void TQString::FinishWriting(int length) {
  SetLength(length);
  Resize(length);
}

void TQString::RaiseBadIndex() {
  throw TQExcept(kIndexBeyondCapacity, __LINE__, kFile);
}

// --- search ----------------------------------------------------------------------------------

int TQString::Find(std::u16string_view text, int start) const {
  if (start >= Length()) return kNotFound;
  return ToIndex(FindText(View(), text, static_cast<std::size_t>(std::max(start, 0))));
}

int TQString::Find(char16_t unit, int start) const {
  if (start >= Length()) return kNotFound;
  return ToIndex(FindUnit(View(), unit, static_cast<std::size_t>(std::max(start, 0))));
}

int TQString::FindOneOf(std::u16string_view set, int start) const {
  const UnitSet units(set);
  for (int i = std::max(start, 0); i < Length(); ++i) {
    if (units.Has(Text()[i])) return i;
  }
  return kNotFound;
}

int TQString::ReverseFind(char16_t unit) const {
  return ToIndex(View().rfind(unit));
}

// --- changing in place -----------------------------------------------------------------------

TQString& TQString::operator+=(std::u16string_view text) {
  return Append(CutAtZero(text));
}

TQString& TQString::operator+=(const char16_t* text) {
  return text == nullptr ? *this : Append(std::u16string_view(text));
}

TQString& TQString::operator+=(char16_t unit) {
  if (unit == 0) return *this;
  const int length = Length();
  if (length == Capacity()) Grow(RoundUp(std::int64_t{length} + 1), 0, length);
  Text()[length] = unit;
  SetLength(length + 1);
  return *this;
}

TQString& TQString::Append(std::u16string_view text) {
  const std::int64_t needed = Length() + static_cast<std::int64_t>(text.size());
  int cursor = Length();
  Put(text, cursor, static_cast<int>(RoundUp(needed) - needed));
  return *this;
}

void TQString::AppendAt(std::u16string_view text, int& cursor, int margin) {
  Put(CutAtZero(text), cursor, margin);
}

void TQString::Put(std::u16string_view text, int& cursor, int margin) {
  if (text.empty()) {
    if (cursor < Length()) SetLength(cursor);
    return;
  }
  const std::int64_t needed = cursor + static_cast<std::int64_t>(text.size());
  const char16_t* source = text.data();
  if (needed > Capacity()) {
    const bool own = Holds(source);
    const std::ptrdiff_t offset = own ? source - Text() : 0;
    Grow(needed, margin, own ? std::max(cursor, Length()) : cursor);
    if (own) source = Text() + offset;
  }
  CopyUnits(Text() + cursor, source, text.size());
  cursor = static_cast<int>(needed);
  SetLength(cursor);
}

void TQString::Insert(std::u16string_view text, int position) {
  text = CutAtZero(text);
  const int length = Length();
  if (text.empty() || position < 0 || position > length) return;
  if (Holds(text.data())) return Insert(TQString(text).View(), position);
  const std::int64_t needed = length + static_cast<std::int64_t>(text.size());
  if (needed > Capacity()) Grow(RoundUp(needed), 0, length);
  char16_t* at = Text() + position;
  CopyUnits(at + text.size(), at, static_cast<std::size_t>(length - position));
  CopyUnits(at, text.data(), text.size());
  SetLength(static_cast<int>(needed));
}

void TQString::Delete(int position, int count) {
  const int length = Length();
  if (position < 0 || position >= length || count <= 0) return;
  const int removed = std::min(count, length - position);
  char16_t* at = Text() + position;
  CopyUnits(at, at + removed, static_cast<std::size_t>(length - position - removed));
  SetLength(length - removed);
}

void TQString::Replace(char16_t from, char16_t to) {
  if (to == 0) {
    const std::size_t first = FindUnit(View(), from);
    if (first != std::u16string_view::npos) SetLength(static_cast<int>(first));
    return;
  }
  for (int i = 0; i < Length(); ++i) {
    if (Text()[i] == from) Text()[i] = to;
  }
}

void TQString::Replace(std::u16string_view find, std::u16string_view with, int limit) {
  if (find.empty()) return;
  const std::u16string_view text = View();
  std::size_t found = FindText(text, find);
  if (found == std::u16string_view::npos) return;
  TQString result;
  int cursor = 0;
  std::size_t copied = 0;
  for (int count = 0; found != std::u16string_view::npos; found = FindText(text, find, copied)) {
    result.Put(text.substr(copied, found - copied), cursor, Length());
    result.AppendAt(with, cursor, 0);
    copied = found + find.size();
    if (++count == limit) break;
  }
  result.Put(text.substr(copied), cursor, 0);
  *this = std::move(result);
}

void TQString::MakeLower() {
  for (int i = 0; i < Length(); ++i) Text()[i] = LowerCase(Text()[i]);
}

void TQString::TrimLeft(std::u16string_view set) {
  const UnitSet units(set);
  int first = 0;
  while (first < Length() && units.Has(Text()[first])) ++first;
  Delete(0, first);
}

void TQString::TrimRight(std::u16string_view set) {
  const UnitSet units(set);
  int end = Length();
  while (end > 0 && units.Has(Text()[end - 1])) --end;
  if (end < Length()) SetLength(end);
}

namespace {
constexpr std::u16string_view kWideSpaces = u" \t\n\v\f\r";
}

void TQString::TrimLeft() {
  if (IsWideSpace(Text()[0])) TrimLeft(kWideSpaces);
}

void TQString::TrimRight() {
  if (!IsEmpty() && IsWideSpace(Text()[Length() - 1])) TrimRight(kWideSpaces);
}

void TQString::Squeeze(std::u16string_view set, char16_t replacement, std::u16string_view quotes) {
  if (IsEmpty()) return;
  const UnitSet units(set);
  const UnitSet quoteUnits(quotes);
  bool quoted = false;
  bool inRun = false;
  char16_t* out = Text();
  for (char16_t unit : View()) {
    if (!quotes.empty() && quoteUnits.Has(unit)) {
      quoted = !quoted;
    } else if (!quoted && units.Has(unit)) {
      if (!inRun) *out++ = replacement;
      inRun = true;
      continue;
    }
    inRun = false;
    *out++ = unit;
  }
  SetLength(static_cast<int>(out - Text()));
}

// --- parts -----------------------------------------------------------------------------------

TQString TQString::Left(int count) const {
  return Mid(0, count);
}

TQString TQString::Right(int count) const {
  return Mid(Length() - std::clamp(count, 0, Length()));
}

TQString TQString::Mid(int start) const {
  return Mid(start, Length());
}

TQString TQString::Mid(int start, int count) const {
  TQString result;
  if (start < 0 || start >= Length() || count <= 0) return result;
  const int size = std::min(count, Length() - start);
  result.Reallocate(size, 0);
  CopyUnits(result.Text(), Text() + start, static_cast<std::size_t>(size));
  result.SetLength(size);
  return result;
}

TQString TQString::Tokenize(std::u16string_view delimiters, int& position,
                            std::u16string_view quotes) const {
  const UnitSet delimiterUnits(delimiters);
  const UnitSet quoteUnits(quotes);
  int i = std::max(position, 0);
  while (i < Length() && delimiterUnits.Has(Text()[i])) ++i;
  const int start = i;
  for (bool quoted = false; i < Length(); ++i) {
    if (quoteUnits.Has(Text()[i])) {
      quoted = !quoted;
    } else if (!quoted && delimiterUnits.Has(Text()[i])) {
      break;
    }
  }
  position = i;
  return Mid(start, i - start);
}

bool TQString::IsBlank() const {
  return kelmora::IsBlank(View());
}

TQString TQString::Prefix() const {
  return TQString(PrefixOf(View()));
}

TQString TQString::LocalPart() const {
  return TQString(LocalPartOf(View()));
}

const char16_t* TQString::LocalPartPointer() const {
  return LocalPartOf(View()).data();
}

// --- joining ---------------------------------------------------------------------------------

TQString operator+(const TQString& left, std::u16string_view right) {
  TQString result;
  result.Resize(static_cast<int>(left.View().size() + right.size()));
  result += left;
  result += right;
  return result;
}

TQString operator+(const TQString& left, const TQString& right) {
  return left + right.View();
}

TQString operator+(const TQString& left, const char16_t* right) {
  return left + (right == nullptr ? std::u16string_view() : std::u16string_view(right));
}

TQString operator+(const char16_t* left, const TQString& right) {
  return TQString(left) + right.View();
}

TQString operator+(char16_t left, const TQString& right) {
  return TQString(left) + right.View();
}

}  // namespace kelmora
