// The string functions. Arguments are read as views where their text exists already, and each
// function is linear in its texts.

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "functions/xpathfunctionlibrary.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

constexpr std::int32_t kMostUnits = 0x7FFFFFFF;

// Towards zero, kept within 32 bits.
std::int64_t Truncate(double number) {
  if (std::isnan(number)) return 0;
  return static_cast<std::int64_t>(
      std::clamp(number, -static_cast<double>(kMostUnits), static_cast<double>(kMostUnits)));
}

}  // namespace

TQString XPathFunctionLibrary::String(Call call, Context context) const {
  if (call.ArgumentCount() == 0) return ToString(context.Input());
  TQString scratch;
  std::u16string_view text = TextArgument(call, context, 0, scratch);
  if (text.data() == scratch.c_str()) return scratch;
  return TQString(text);
}

TQString XPathFunctionLibrary::Concat(Call call, Context context) const {
  TQString result;
  TQString scratch;
  int cursor = 0;
  for (int i = 0; i < call.ArgumentCount(); ++i) {
    std::u16string_view text = TextArgument(call, context, i, scratch);
    result.AppendAt(text, cursor, std::max(cursor, 32));
  }
  return result;
}

bool XPathFunctionLibrary::StartsWith(Call call, Context context) const {
  TQString scratchA;
  TQString scratchB;
  std::u16string_view text = TextArgument(call, context, 0, scratchA);
  return text.starts_with(TextArgument(call, context, 1, scratchB));
}

bool XPathFunctionLibrary::Contains(Call call, Context context) const {
  TQString scratchA;
  TQString scratchB;
  std::u16string_view text = TextArgument(call, context, 0, scratchA);
  return FindText(text, TextArgument(call, context, 1, scratchB)) != std::u16string_view::npos;
}

TQString XPathFunctionLibrary::SubstringBefore(Call call, Context context) const {
  TQString scratchA;
  TQString scratchB;
  std::u16string_view text = TextArgument(call, context, 0, scratchA);
  std::size_t at = FindText(text, TextArgument(call, context, 1, scratchB));
  return at == std::u16string_view::npos ? TQString() : TQString(text.substr(0, at));
}

TQString XPathFunctionLibrary::SubstringAfter(Call call, Context context) const {
  TQString scratchA;
  TQString scratchB;
  std::u16string_view text = TextArgument(call, context, 0, scratchA);
  std::u16string_view mark = TextArgument(call, context, 1, scratchB);
  std::size_t at = FindText(text, mark);
  return at == std::u16string_view::npos ? TQString() : TQString(text.substr(at + mark.size()));
}

// The start counts from 1. A start that is no finite number leaves nothing, whatever the length.
TQString XPathFunctionLibrary::Substring(Call call, Context context) const {
  TQString scratch;
  std::u16string_view text = TextArgument(call, context, 0, scratch);
  double roundedStart = Round(NumberArgument(call, context, 1));
  bool hasLength = call.ArgumentCount() == 3;
  double givenLength = hasLength ? NumberArgument(call, context, 2) : 0;
  if (!std::isfinite(roundedStart)) return {};

  std::int64_t start = Truncate(roundedStart);
  std::int64_t size = static_cast<std::int64_t>(text.size());
  std::int64_t behind = std::clamp(size - start + 1, std::int64_t{0}, size);
  std::u16string_view tail = text.substr(static_cast<std::size_t>(size - behind));
  if (!hasLength) return TQString(tail);

  std::int64_t length = Truncate(Round(givenLength));
  if (start < 1) length += start - 1;
  length = std::clamp(length, std::int64_t{0}, behind);
  return TQString(tail.substr(0, static_cast<std::size_t>(length)));
}

double XPathFunctionLibrary::StringLength(Call call, Context context) const {
  TQString scratch;
  return static_cast<double>(TextOrInput(call, context, scratch).size());
}

TQString XPathFunctionLibrary::NormalizeSpace(Call call, Context context) const {
  TQString scratch;
  std::u16string_view text;
  const XPathValue& input = context.Input();
  if (call.ArgumentCount() != 0 || input.kind != XPathValue::NodeSet) {
    text = TextOrInput(call, context, scratch);
  } else if (!input.nodes.empty()) {
    // Of a list, the node at the present position.
    std::size_t index = static_cast<std::size_t>(context.position) - 1;
    text = input.nodes[index < input.nodes.size() ? index : 0].node->StringValue(scratch);
  }
  while (!text.empty() && IsWideSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsWideSpace(text.back())) text.remove_suffix(1);

  TQString result;
  result.ReserveRaw(static_cast<int>(text.size()));
  int cursor = 0;
  std::size_t at = 0;
  while (at < text.size()) {
    std::size_t end = at;
    while (end < text.size() && !IsXmlSpace(text[end])) ++end;
    result.AppendAt(text.substr(at, end - at), cursor, 0);
    if (end == text.size()) break;
    result.AppendUnitAt(u' ', cursor, 0);
    at = end;
    while (at < text.size() && IsXmlSpace(text[at])) ++at;
  }
  return result;
}

namespace {

// Where each unit stands first in the second argument of translate().
class UnitIndex {
 public:
  explicit UnitIndex(std::u16string_view units) {
    ascii_.fill(kAbsent);
    for (std::size_t i = units.size(); i-- > 0;) {
      if (units[i] < ascii_.size()) {
        ascii_[units[i]] = static_cast<std::int32_t>(i);
      } else {
        others_.push_back({units[i], static_cast<std::int32_t>(i)});
      }
    }
    std::sort(others_.begin(), others_.end());
  }

  static constexpr std::int32_t kAbsent = -1;
  std::int32_t Find(char16_t unit) const {
    if (unit < ascii_.size()) return ascii_[unit];
    auto at = std::lower_bound(others_.begin(), others_.end(), Place{unit, 0});
    return at != others_.end() && at->first == unit ? at->second : kAbsent;
  }

 private:
  using Place = std::pair<char16_t, std::int32_t>;
  std::array<std::int32_t, 128> ascii_;
  std::vector<Place> others_;
};

}  // namespace

TQString XPathFunctionLibrary::Translate(Call call, Context context) const {
  TQString scratches[3];
  std::u16string_view text = TextArgument(call, context, 0, scratches[0]);
  std::u16string_view from = TextArgument(call, context, 1, scratches[1]);
  std::u16string_view to = TextArgument(call, context, 2, scratches[2]);
  UnitIndex index(from);
  TQString result;
  result.ReserveRaw(static_cast<int>(text.size()));
  int cursor = 0;
  for (char16_t unit : text) {
    std::int32_t at = index.Find(unit);
    if (at == UnitIndex::kAbsent) {
      result.AppendUnitAt(unit, cursor, 0);
    } else if (static_cast<std::size_t>(at) < to.size()) {
      result.AppendUnitAt(to[static_cast<std::size_t>(at)], cursor, 0);
    }
  }
  return result;
}

}  // namespace kelmora
