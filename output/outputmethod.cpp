#include "output/outputmethod.h"

#include "resultwriter.h"
#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

constexpr OutputMethod kMethods[] = {
#define METHOD(writer, name, indents) {name, indents, writer},
#include "outputmethods.def"
#undef METHOD
};

}  // namespace

const OutputMethod* FindOutputMethod(std::u16string_view name) {
  for (const OutputMethod& method : kMethods) {
    if (EqualsIgnoringAsciiCase(name, method.name)) return &method;
  }
  return nullptr;
}

const OutputMethod& DefaultOutputMethod() {
  return kMethods[0];
}

}  // namespace kelmora
