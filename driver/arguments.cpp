#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>

#include "driver.h"
#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

enum class Option { kXml, kXsl, kOut, kParam, kXslStack };

struct OptionName {
  std::u16string_view name;
  Option option;
  bool anyCase;
};
constexpr OptionName kOptionNames[] = {
    {u"xml", Option::kXml, false},          {u"xsl", Option::kXsl, true},
    {u"out", Option::kOut, true},           {u"param", Option::kParam, true},
    {u"xslstack", Option::kXslStack, true},
};

const OptionName* FindOption(std::u16string_view argument) {
  if (!argument.starts_with(u'-') && !argument.starts_with(u'/')) return nullptr;
  argument.remove_prefix(1);
  for (const OptionName& row : kOptionNames) {
    if (row.anyCase ? EqualsIgnoringAsciiCase(argument, row.name) : argument == row.name) {
      return &row;
    }
  }
  return nullptr;
}

constexpr std::u16string_view kUsageText =
    u"Kelmora XSLT Processor\n"
    u"Version " KELMORA_VERSION u"\n"
    u"\n"
    u"    -xml       [file name]      input xml\n"
    u"    -xsl       [file name]      input xslt\n"
    u"    -out       [file name]      ouput result\n"
    u"    -param     [name=expr]      stylesheet parameter value\n"
    u"    -xslstack  [number >= 100 ] maximum xsl template call depth\n";

constexpr std::int32_t kLeastStackLimit = 100;

// The rule of the C library: white space, a sign, digits; no digits are 0. A number out of range
// becomes the nearest that fits.
std::int32_t ReadInteger(const std::string& text) {
  const long long value = std::strtoll(text.c_str(), nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(
      value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

void Driver::WriteUsage() {
  WriteLine(Console::Stream::kOutput, kUsageText);
}

bool Driver::ParseArguments(int argc, const char* const* argv) {
  if (argc < 2) return false;
  for (int i = 1; i < argc; i += 2) {
    const OptionName* found = FindOption(FromNative(argv[i]));
    if (found == nullptr || i + 1 == argc) return false;
    TQString value = FromNative(argv[i + 1]);
    switch (found->option) {
      case Option::kXml:
        XmlFile = std::move(value);
        XmlGiven = true;
        break;
      case Option::kXsl:
        XslFile = std::move(value);
        XslGiven = true;
        break;
      case Option::kOut:
        OutFile = std::move(value);
        OutGiven = true;
        break;
      case Option::kParam:
        Processor->AddParameter(value);
        break;
      case Option::kXslStack:
        if (!TakeStackLimit(argv[i + 1])) return false;
        break;
    }
  }
  return CheckRequired();
}

bool Driver::TakeStackLimit(const char* value) {
  StackLimit = ReadInteger(value);
  if (StackLimit >= kLeastStackLimit) return true;
  WriteLine(Console::Stream::kError, u"Error");
  WriteLine(Console::Stream::kError, u"XSLT stack size should be at least 100");
  Console::NewLineAndFlush(Console::Stream::kError);
  return false;
}

bool Driver::CheckRequired() const {
  const struct {
    bool given;
    std::u16string_view message;
  } kRequired[] = {
      {XslGiven, u"An input XSL file must be supplied"},
      {XmlGiven, u"An input XML file must be supplied"},
      {OutGiven, u"An output file must be specified"},
  };
  for (const auto& row : kRequired) {
    if (row.given) continue;
    WriteLine(Console::Stream::kError, row.message);
    Console::NewLineAndFlush(Console::Stream::kError);
    return false;
  }
  return true;
}

}  // namespace kelmora
