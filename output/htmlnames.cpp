// No name here is longer than ten letters and digits, so each packs into one 64-bit key of six
// bits a character, in which the two cases of a letter are the same. The lists become two small
// hash tables over these keys at compile time; a lookup is the packing and mostly one comparison.
#include "htmlnames.h"

#include <array>
#include <cstddef>
#include <optional>

namespace kelmora {

namespace {

using Name = std::u16string_view;

constexpr Name HtmlEmptyElements[] = {u"AREA",  u"BASE", u"BASEFONT", u"BR",    u"COL",
                                      u"FRAME", u"HR",   u"IMG",      u"INPUT", u"ISINDEX",
                                      u"LINK",  u"META", u"PARAM"};
constexpr Name HtmlNonEmptyElements[] = {
    u"A",        u"ABBR",       u"ACRONYM",  u"ADDRESS",  u"APPLET",   u"B",      u"BDO",
    u"BIG",      u"BLOCKQUOTE", u"BUTTON",   u"CAPTION",  u"CENTER",   u"CITE",   u"CODE",
    u"DEL",      u"DFN",        u"DIR",      u"DIV",      u"DL",       u"EM",     u"FIELDSET",
    u"FONT",     u"FORM",       u"FRAMESET", u"H1",       u"H2",       u"H3",     u"H4",
    u"H5",       u"H6",         u"I",        u"IFRAME",   u"INS",      u"KBD",    u"LABEL",
    u"LEGEND",   u"MAP",        u"MENU",     u"NOFRAMES", u"NOSCRIPT", u"OBJECT", u"OL",
    u"OPTGROUP", u"PRE",        u"Q",        u"S",        u"SAMP",     u"SCRIPT", u"SELECT",
    u"SMALL",    u"SPAN",       u"STRIKE",   u"STRONG",   u"STYLE",    u"SUB",    u"SUP",
    u"TABLE",    u"TEXTAREA",   u"TITLE",    u"TT",       u"U",        u"UL",     u"VAR"};
constexpr Name HtmlBlockElements[] = {
    u"ADDRESS", u"BLOCKQUOTE", u"CENTER", u"DIR",      u"DIV",      u"DL", u"FIELDSET",
    u"FORM",    u"H1",         u"H2",     u"H3",       u"H4",       u"H5", u"H6",
    u"HR",      u"ISINDEX",    u"MENU",   u"NOFRAMES", u"NOSCRIPT", u"OL", u"P",
    u"PRE",     u"TABLE",      u"UL",     u"TR",       u"TD"};
constexpr Name HtmlRawElements[] = {u"SCRIPT", u"STYLE"};
constexpr Name HtmlHeadElements[] = {u"HEAD"};

constexpr Name HtmlBooleanAttributes[] = {
    u"checked", u"compact",  u"declare", u"defer",  u"disabled", u"ismap",   u"multiple",
    u"nohref",  u"noresize", u"noshade", u"nowrap", u"readonly", u"selected"};
constexpr Name HtmlUriAttributes[] = {u"action",   u"background", u"cite",  u"classid",
                                      u"codebase", u"data",       u"href",  u"longdesc",
                                      u"profile",  u"src",        u"usemap"};

constexpr std::size_t kLongestName = 10;
constexpr int kBitsPerCharacter = 6;

// 0 when the name holds anything but ASCII letters and digits, or is too long for every list.
constexpr std::uint64_t PackName(Name name) {
  if (name.size() > kLongestName) return 0;
  std::uint64_t key = 0;
  for (char16_t unit : name) {
    std::uint64_t code = 0;
    if (const char16_t lower = unit | 0x20; lower >= u'a' && lower <= u'z') {
      code = static_cast<std::uint64_t>(lower - u'a') + 1;
    } else if (unit >= u'0' && unit <= u'9') {
      code = static_cast<std::uint64_t>(unit - u'0') + 27;
    } else {
      return 0;
    }
    key = key << kBitsPerCharacter | code;
  }
  return key;
}

class NameTable {
 public:
  template <std::size_t Count>
  constexpr void Add(const Name (&names)[Count], std::uint8_t trait) {
    for (Name name : names) {
      Slot& slot = slots_[SlotOf(PackName(name))];
      slot.key = PackName(name);
      slot.traits |= trait;
    }
  }
  constexpr unsigned Find(Name name) const {
    const std::uint64_t key = PackName(name);
    return key == 0 ? 0 : slots_[SlotOf(key)].traits;
  }

 private:
  struct Slot {
    std::uint64_t key = 0;
    std::uint8_t traits = 0;
  };
  static constexpr int kSlotBits = 8;  // about a third of the slots of the larger table are taken

  // The slot that holds the key, or the free one where it would go.
  constexpr std::size_t SlotOf(std::uint64_t key) const {
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
    std::size_t index = (key * kGoldenRatio) >> (64 - kSlotBits);
    while (slots_[index].key != 0 && slots_[index].key != key) index = (index + 1) % slots_.size();
    return index;
  }

  std::array<Slot, std::size_t{1} << kSlotBits> slots_{};
};

constexpr NameTable MakeElements() {
  NameTable table;
  table.Add(HtmlEmptyElements, HtmlEmpty);
  table.Add(HtmlNonEmptyElements, HtmlNonEmpty);
  table.Add(HtmlBlockElements, HtmlBlock);
  table.Add(HtmlRawElements, HtmlRaw);
  table.Add(HtmlHeadElements, HtmlHead);
  return table;
}

constexpr NameTable MakeAttributes() {
  NameTable table;
  table.Add(HtmlBooleanAttributes, HtmlBoolean);
  table.Add(HtmlUriAttributes, HtmlUri);
  return table;
}

constexpr NameTable kElements = MakeElements();
constexpr NameTable kAttributes = MakeAttributes();

}  // namespace

unsigned HtmlElementTraits(std::u16string_view name) {
  return kElements.Find(name);
}

unsigned HtmlAttributeTraits(std::u16string_view name) {
  return kAttributes.Find(name);
}

}  // namespace kelmora
