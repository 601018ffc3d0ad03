#include "codepage.h"

#include <algorithm>
#include <map>

namespace kelmora {

namespace {

using namespace std::string_view_literals;

#include "data/codepages_generated.inc"

constexpr std::size_t kSingleByteCodes = 256;
constexpr std::size_t kAllUnits = 65536;
// Codes below this stand for themselves in every encoding, unless a pair says otherwise.
constexpr char16_t kFirstMappedCode = 32;

// The JIS X 0208 code of a double Shift-JIS code. Lead bytes come in two blocks, 81 to 9F and E0
// up, and each covers two rows: trail bytes below 9F are the odd one, with a gap at 7F.
char16_t JisFromShiftJis(char16_t code) {
  const int lead = code >> 8;
  const int trail = code & 0xFF;
  const bool isOddRow = trail < 0x9F;
  const int row = (lead - (lead < 0xA0 ? 0x70 : 0xB0)) * 2 - (isOddRow ? 1 : 0);
  const int cell = trail - (isOddRow ? (trail > 0x7F ? 0x20 : 0x1F) : 0x7E);
  return static_cast<char16_t>(row * 256 + cell);
}

// What the encoding `id` writes for a code of its page. The vendor rows behind JIS row 94 have
// no valid EUC form; their characters all have a second code, whose pair comes later and wins.
char16_t CodeIn(EncodingId id, char16_t code) {
  if (code < 0x100) return code;
  if (id == EncodingId::kIso2022Jp) return JisFromShiftJis(code);
  if (id == EncodingId::kEucJp) return static_cast<char16_t>(JisFromShiftJis(code) + 0x8080);
  return code;
}

template <typename Visit>
void ForEachPair(EncodingId id, Visit visit) {
  const CodePage& page = *FindCodePage(id);
  const char16_t* character = page.characters.data();
  for (const CodeRun& run : page.runs) {
    for (std::uint16_t i = 0; i < run.count; ++i) {
      visit(CodeIn(id, static_cast<char16_t>(run.first + i)), *character++);
    }
  }
}

LookupTable NewTable(std::size_t size, char16_t unmapped) {
  LookupTable table(size, unmapped);
  for (char16_t code = 0; code < kFirstMappedCode; ++code) table[code] = code;
  return table;
}

LookupTable MakeDecodingTable(EncodingId id) {
  LookupTable table = NewTable(id < kFirstMultibyte ? kSingleByteCodes : kAllUnits, kReplacement);
  ForEachPair(id, [&](char16_t code, char16_t character) { table[code] = character; });
  return table;
}

LookupTable MakeEncodingTable(EncodingId id) {
  LookupTable table = NewTable(kAllUnits, kSubstitute);
  ForEachPair(id, [&](char16_t code, char16_t character) { table[character] = code; });
  return table;
}

using TablesById = std::map<EncodingId, LookupTable>;

const LookupTable& FindOrMake(TablesById& tables, EncodingId id, LookupTable (*make)(EncodingId)) {
  const auto found = tables.find(id);
  return found != tables.end() ? found->second : tables.emplace(id, make(id)).first->second;
}

}  // namespace

const CodePage* FindCodePage(EncodingId id) {
  if (id == EncodingId::kEucJp || id == EncodingId::kIso2022Jp) id = EncodingId::kShiftJis;
  const auto page = std::find_if(std::begin(kCodePages), std::end(kCodePages),
                                 [id](const CodePage& candidate) { return candidate.id == id; });
  return page == std::end(kCodePages) ? nullptr : page;
}

const LookupTable& DecodingTable(EncodingId id) {
  static TablesById tables;
  return FindOrMake(tables, id, MakeDecodingTable);
}

const LookupTable& EncodingTable(EncodingId id) {
  static TablesById tables;
  return FindOrMake(tables, id, MakeEncodingTable);
}

}  // namespace kelmora
