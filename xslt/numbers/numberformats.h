// NumberFormats: the formats of xsl:number that are in use. They are kept, since a stylesheet
// numbers many nodes by few of them.
#pragma once

#include <cstddef>
#include <map>
#include <utility>

#include "numbers/numberformat.h"
#include "tqcore/tqstring.h"

namespace kelmora {

class NumberFormats {
 public:
  // Lives until the next call.
  NumberFormat& FormatOf(const TQString& format, const NumberGrouping& grouping);

 private:
  static constexpr std::size_t kKeptFormats = 64;  // more come from computed texts only
  using FormatMap = std::map<std::pair<TQString, NumberGrouping>, NumberFormat>;

  FormatMap formats_;
  FormatMap::iterator last_ = formats_.end();
};

}  // namespace kelmora
