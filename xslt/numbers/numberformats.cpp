#include "numbers/numberformats.h"

#include <tuple>

namespace kelmora {

NumberFormat& NumberFormats::FormatOf(const TQString& format, const NumberGrouping& grouping) {
  if (last_ != formats_.end() && last_->first.first == format && last_->first.second == grouping) {
    return last_->second;
  }
  last_ = formats_.find({format, grouping});
  if (last_ != formats_.end()) return last_->second;
  if (formats_.size() == kKeptFormats) formats_.clear();
  last_ = formats_
              .emplace(std::piecewise_construct, std::forward_as_tuple(format, grouping),
                       std::forward_as_tuple(format.View(), grouping))
              .first;
  return last_->second;
}

}  // namespace kelmora
