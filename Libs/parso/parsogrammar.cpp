#include "parso/parsogrammar.h"

#include "parsogrammarloader.h"
#include "parsoprogram.h"
#include "tqcore/texthash.h"
#include "tqcore/tqerrorlogger.h"
#include "tqcore/tqexcept.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {
namespace {

constexpr std::size_t kIndexSlots = 1024;  // a power of two, above 2 * kMaxRules
static_assert(kIndexSlots > 2 * ParsoGrammar::kMaxRules);

std::size_t SlotOf(std::u16string_view name, ParsoKind kind) {
  return (HashText(name) ^ static_cast<std::uint8_t>(kind)) & (kIndexSlots - 1);
}

// Lines of a text in memory, cut as YStream::ReadLine cuts them.
class TextLines {
 public:
  explicit TextLines(std::string_view text) : text_(text) {}

  std::u16string_view Next() {
    std::size_t length = 0;
    while (length < ParsoGrammarLoader::kLongestLine && !text_.empty()) {
      const char byte = text_.front();
      text_.remove_prefix(1);
      if (byte == '\n') break;
      if (byte == '\r') {
        if (!text_.empty()) text_.remove_prefix(1);
        break;
      }
      line_[length++] = static_cast<char16_t>(static_cast<signed char>(byte));
    }
    return {line_, length};
  }

 private:
  std::string_view text_;
  char16_t line_[ParsoGrammarLoader::kLongestLine];
};

class StreamLines {
 public:
  explicit StreamLines(YStream& stream) : stream_(stream) {}

  std::u16string_view Next() {
    auto count = static_cast<std::int32_t>(ParsoGrammarLoader::kLongestLine);
    const ResultCode code = stream_.ReadLine(line_, count);
    if (code != streamresult::kSuccess) {
      TQErrorLogger::ReportAndRaise(code, u"Could not read a deliminated file", u"parsogrammar.cpp",
                                    __LINE__);
    }
    return {line_, static_cast<std::size_t>(count)};
  }

 private:
  YStream& stream_;
  char16_t line_[ParsoGrammarLoader::kLongestLine + 1];
};

// An empty line ends the grammar, as the end of the text does.
template <class Lines>
bool Load(ParsoGrammar& grammar, Lines lines) {
  grammar.valid = true;
  ParsoGrammarLoader loader(grammar);
  for (std::u16string_view line = lines.Next(); !line.empty(); line = lines.Next()) {
    if (!loader.AddLine(line)) return false;
  }
  if (!loader.HasRules()) return false;
  loader.Finish();
  return true;
}

}  // namespace

ParsoGrammar::ParsoGrammar() = default;

ParsoGrammar::ParsoGrammar(const char16_t* fileName) : ParsoGrammar() {
  if (fileName != nullptr) Init(fileName);
}

ParsoGrammar::ParsoGrammar(YStream* stream) : ParsoGrammar() {
  if (stream != nullptr) Init(*stream);
}

ParsoGrammar::~ParsoGrammar() = default;

bool ParsoGrammar::Init(const char16_t* fileName) {
  TQErrorLogger::Report(
      0,
      u"ParsoGrammar::Init( _TCHAR* gram_file ) has been deprecated see sources for further action",
      u"parsogrammar.cpp", __LINE__);
  try {
    std::unique_ptr<YStream> stream = CreateStream(StreamNumber::kResource);
    if (stream == nullptr) {
      TQErrorLogger::ReportAndRaise(kUnexpected,
                                    u"Could not create instance of YStream::File Object",
                                    u"parsogrammar.cpp", __LINE__);
    }
    RaiseOnFailure(stream->Open(fileName, StreamMode::kRead));
    const bool loaded = Init(*stream);
    DestroyStream(std::move(stream));
    return loaded;
  } catch (const TQResultError&) {
    return false;
  }
}

bool ParsoGrammar::Init(YStream& stream) {
  try {
    return Load(*this, StreamLines(stream));
  } catch (const TQResultError&) {
    return false;
  }
}

bool ParsoGrammar::LoadText(std::string_view text) {
  return Load(*this, TextLines(text));
}

ParsoRule* ParsoGrammar::FindRule(std::u16string_view name, ParsoKind kind) const {
  if (name.empty()) return nullptr;
  if (index_.empty()) IndexAllRules();
  for (std::size_t slot = SlotOf(name, kind);; slot = (slot + 1) & (kIndexSlots - 1)) {
    ParsoRule* rule = index_[slot];
    if (rule == nullptr || (rule->kind == kind && rule->name == name)) return rule;
  }
}

ParsoRule* ParsoGrammar::CreateRule(std::u16string_view name, ParsoKind kind, bool noNode,
                                    bool keepApart, bool keepNode) {
  if (rules.size() == kMaxRules) return nullptr;
  ParsoRule* rule = arena_.Make<ParsoRule>();
  rule->name = arena_.Keep(name);
  rule->kind = name.data() == nullptr ? ParsoKind::Group : kind;
  rule->flagNoNode = noNode;
  rule->flagKeepApart = keepApart;
  rule->flagKeepNode = keepNode;
  rule->grammar = this;
  rule->index = static_cast<std::int32_t>(rules.size());
  if (rule->kind == ParsoKind::Rule) rule->grammarRule = GrammarRuleFromName(name);
  rules.push_back(rule);
  if (!index_.empty()) IndexRule(rule);
  return rule;
}

void ParsoGrammar::IndexRule(ParsoRule* rule) const {
  if (rule->name.empty()) return;
  std::size_t slot = SlotOf(rule->name, rule->kind);
  for (; index_[slot] != nullptr; slot = (slot + 1) & (kIndexSlots - 1)) {
    if (index_[slot]->kind == rule->kind && index_[slot]->name == rule->name) return;
  }
  index_[slot] = rule;
}

// The optimiser changes kinds and deletes objects, so it has the index made anew.
void ParsoGrammar::IndexAllRules() const {
  index_.assign(kIndexSlots, nullptr);
  for (ParsoRule* rule : rules) {
    if (rule != nullptr) IndexRule(rule);
  }
}

ParsoProgram& ParsoGrammar::Program() const {
  if (program_ == nullptr) program_ = std::make_unique<ParsoProgram>(*this);
  return *program_;
}

}  // namespace kelmora
