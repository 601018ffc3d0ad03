// The loops in which a run spends its time, one benchmark for each. Inputs are made here and are
// the same each time. The rates are units of text, nodes or entries in a second.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "collation.h"
#include "encodings/encodings.h"
#include "output/outputserializer.h"
#include "output/outputsettings.h"
#include "parso/parsogrammar.h"
#include "parso/parsoparser.h"
#include "sortkey.h"
#include "tqcore/texthash.h"
#include "tqcore/tqtext.h"
#include "xmltree/xpathnode.h"
#include "xpath/simplepattern.h"
#include "xpath/xpathexpression.h"
#include "xslt/variablemap.h"

namespace kelmora {
namespace {

std::string Document(int rows) {
  std::string text = "<rows>";
  for (int row = 0; row < rows; ++row) {
    text += "<row id='r" + std::to_string(row) + "'>R\xC3\xB6w &amp; column <b>text</b></row>\n";
  }
  return text + "</rows>";
}

struct TreeDeleter {
  void operator()(XPathNode* root) const { XPathNode::DeleteTree(root); }
};

// A tree as loading makes it, with stamps in document order: rows of two elements and two texts.
class Rows {
 public:
  explicit Rows(int count) : root_(XPathNode::Make(XPathNodeKind::Root)) {
    Stamp(*root_);
    XPathNode* rows = Add(*root_, XPathNodeKind::Element, u"rows");
    for (int i = 0; i < count; ++i) {
      XPathNode* row = Add(*rows, XPathNodeKind::Element, u"row");
      Add(*row, XPathNodeKind::Text, u"a < b & c, some more words behind it");
      XPathNode* name = Add(*row, XPathNodeKind::Element, i % 4 == 0 ? u"b" : u"i");
      Add(*name, XPathNodeKind::Text, FromNative(std::to_string(i * 7919 % count)));
    }
  }

  XPathNode* Root() const { return root_.get(); }
  int Count() const { return count_; }

 private:
  void Stamp(XPathNode& node) {
    node.documentNumber = 1;
    node.orderNumber = ++count_;
  }
  XPathNode* Add(XPathNode& parent, XPathNodeKind kind, TQString text) {
    XPathNode* node = XPathNode::Make(kind);
    Stamp(*node);
    parent.AppendChild(node);
    if (kind == XPathNodeKind::Text) {
      node->SetOwnValue(std::move(text));
    } else {
      node->SetOwnName(std::move(text));
    }
    return node;
  }

  int count_ = 0;
  std::unique_ptr<XPathNode, TreeDeleter> root_;
};

void DecodeUtf8(benchmark::State& state) {
  const std::string bytes = Document(2000);
  for (auto _ : state) {
    benchmark::DoNotOptimize(DecodeText(bytes, EncodingId::kUtf8, ByteOrder::kNone));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(DecodeUtf8);

void EncodeUtf8(benchmark::State& state) {
  const TQString text = FromNative(Document(2000));
  for (auto _ : state) {
    benchmark::DoNotOptimize(EncodeText(text, EncodingId::kUtf8, ByteOrder::kNone, false, false));
  }
  state.SetItemsProcessed(state.iterations() * text.Length());
}
BENCHMARK(EncodeUtf8);

void ParseDocument(benchmark::State& state) {
  const ParsoGrammar grammar(u"gra_xml.txt");
  const TQString text = FromNative(Document(2000));
  ParsoParser parser(&grammar);
  for (auto _ : state) {
    if (!parser.Parse(text)) state.SkipWithError("does not parse");
  }
  state.SetItemsProcessed(state.iterations() * text.Length());
}
BENCHMARK(ParseDocument);

// Names of that many units, by the hash of tables and by the library's, which has no secret.
template <class Hash>
void HashNames(benchmark::State& state) {
  const auto units = static_cast<std::size_t>(state.range(0));
  std::vector<std::u16string> names;
  for (char16_t first = u'a'; first <= u'z'; ++first) names.emplace_back(units, first);
  for (auto _ : state) {
    for (const std::u16string& name : names) benchmark::DoNotOptimize(Hash()(name));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}
BENCHMARK(HashNames<TextHash>)->Arg(3)->Arg(8)->Arg(16)->Arg(64);
BENCHMARK(HashNames<std::hash<std::u16string_view>>)->Arg(3)->Arg(8)->Arg(16)->Arg(64);

// Evaluates from the root; the argument chooses the expression.
void EvaluatePath(benchmark::State& state) {
  static const char16_t* const kPaths[] = {u"//b", u"//row[b]", u"//row/*[position() = 1]",
                                           u"//b/preceding-sibling::text()"};
  const Rows rows(10000);
  const PrefixMap prefixes;
  XPathExpression expression;
  expression.SetExpression(&prefixes, kPaths[state.range(0)], kNoPattern);
  if (!expression.Parse(true, kExprGrammar)) state.SkipWithError("does not parse");
  XPathValue value;
  for (auto _ : state) {
    if (!expression.Evaluate(rows.Root(), rows.Root(), value)) state.SkipWithError("fails");
  }
  state.SetItemsProcessed(state.iterations() * rows.Count());
}
BENCHMARK(EvaluatePath)->DenseRange(0, 3);

void MatchSimplePattern(benchmark::State& state) {
  const Rows rows(10000);
  const PrefixMap prefixes;
  XPathExpression expression;
  expression.SetExpression(&prefixes, u"rows//row/b", kTemplatePattern);
  if (!expression.Parse(true, kExprGrammar)) state.SkipWithError("does not parse");
  auto pattern =
      SimplePattern::Classify(expression.TakeTree(), prefixes, SimplePattern::Predicates::Tested);
  for (auto _ : state) {
    int matches = 0;
    for (XPathNode* node = rows.Root(); node != nullptr; node = node->NextInDocument(true)) {
      matches += pattern->Matches(node) ? 1 : 0;
    }
    benchmark::DoNotOptimize(matches);
  }
  state.SetItemsProcessed(state.iterations() * rows.Count());
}
BENCHMARK(MatchSimplePattern);

void SortTexts(benchmark::State& state) {
  std::mt19937 random(1);
  XPathNodeList list;
  const Rows rows(5000);
  for (XPathNode* node = rows.Root(); node != nullptr; node = node->NextInDocument(true)) {
    list.emplace_back(node, 1);
  }
  Collations collations;
  auto key = std::make_unique<TextSortKey>(collations.ForLanguage(u"C"), false, CaseOrder::None);
  for (std::size_t entry = 0; entry < list.size(); ++entry) {
    key->Add(FromNative("name " + std::to_string(random() % 10000)));
  }
  SortKeyList keys;
  keys.push_back(std::move(key));
  for (auto _ : state) {
    XPathNodeList sorted = list;
    SortNodes(sorted, keys);
    benchmark::DoNotOptimize(sorted.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(list.size()));
}
BENCHMARK(SortTexts);

void Serialize(benchmark::State& state) {
  const Rows rows(10000);
  struct OutputSettings settings;
  OutputSerializer serializer;
  serializer.SetResultRoot(rows.Root());
  std::int64_t units = 0;
  for (auto _ : state) units += serializer.Serialize(settings).Length();
  state.SetItemsProcessed(units);
}
BENCHMARK(Serialize);

// With as many variables in scope as the argument says.
void FindVariable(benchmark::State& state) {
  std::vector<TQString> names;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    names.push_back(FromNative("variable" + std::to_string(i)));
  }
  VariableMap map;
  for (const TQString& name : names) map.Bind(name, XPathValue());
  for (auto _ : state) {
    for (const TQString& name : names) benchmark::DoNotOptimize(map.Find(name));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FindVariable)->Arg(4)->Arg(1000);

}  // namespace
}  // namespace kelmora
