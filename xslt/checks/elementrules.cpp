// The rules of XSLT 1.0 for its own elements, as rows: kRules has one an element, and the lists in
// front of it are what its columns share. The walk that applies them is ElementDispatcher.
//
// The order inside a row is what a user sees when several things are wrong: place, attributes,
// children, then the checks from the first to the last, each with its error. A check that reads a
// value relies on those in front of it, so Required or NotEmpty stand before what takes a name
// apart.
#include "checks/elementrules.h"

#include <algorithm>
#include <iterator>

#include "checks/elementchecks.h"
#include "checks/recordmakers.h"
#include "xslt/tqxslterror.h"

namespace kelmora {

namespace {

using A = XsltAttribute;
using E = XsltElement;
using X = XsltCode;
using namespace checks;

constexpr CodeSet kNone = 0;

// Instructions and literal results. The last seven are refused by their own place, with the same
// error wherever they come in.
// clang-format off
constexpr CodeSet kContent = Codes(
    {E::Literal, E::ApplyImports, E::ApplyTemplates, E::Attribute, E::CallTemplate, E::Choose,
     E::Comment, E::Copy, E::CopyOf, E::Element, E::Fallback, E::ForEach, E::If, E::Message,
     E::Number, E::Param, E::ProcessingInstruction, E::Text, E::ValueOf, E::Variable,
     E::NamespaceAlias, E::Output, E::PreserveSpace, E::StripSpace, E::Stylesheet, E::Template});
// clang-format on

constexpr CodeSet kTopLevel =
    Codes({E::AttributeSet, E::DecimalFormat, E::Import, E::Include, E::Key, E::NamespaceAlias,
           E::Output, E::Param, E::PreserveSpace, E::StripSpace, E::Template, E::Variable});

constexpr CodeSet kDecimalFormatAttributes =
    Codes({A::Name, A::DecimalSeparator, A::GroupingSeparator, A::Infinity, A::MinusSign, A::NaN,
           A::Percent, A::PerMille, A::ZeroDigit, A::Digit, A::PatternSeparator});
constexpr CodeSet kNumberAttributes =
    Codes({A::Level, A::Count, A::From, A::Value, A::Format, A::Lang, A::LetterValue,
           A::GroupingSeparator, A::GroupingSize});
constexpr CodeSet kOutputAttributes =
    Codes({A::Method, A::Version, A::Encoding, A::OmitXmlDeclaration, A::Standalone,
           A::DoctypePublic, A::DoctypeSystem, A::CdataSectionElements, A::Indent, A::MediaType});
constexpr CodeSet kStylesheetAttributes =
    Codes({A::Id, A::ExtensionElementPrefixes, A::ExcludeResultPrefixes, A::Version});

constexpr ElementCheck kNamed[] = {{A::Name, Required, X::NameExpected}};
constexpr ElementCheck kQNamed[] = {{A::Name, Required, X::NameExpected},
                                    {A::Name, IsName, X::NotAQName}};
constexpr ElementCheck kAttributeSet[] = {{A::Name, RequiredNowhere, X::NameExpected},
                                          {A::Name, IsName, X::NotAQName}};
constexpr ElementCheck kSelecting[] = {{A::Select, Required, X::SelectExpected}};
constexpr ElementCheck kElements[] = {{A::Elements, Required, X::ElementsExpected}};
constexpr ElementCheck kHref[] = {{A::Href, Required, X::HrefExpected}};
constexpr ElementCheck kIf[] = {{A::Test, RequiredNowhere, X::TestExpected},
                                {A::Test, NotEmpty, X::ExpressionExpected}};
constexpr ElementCheck kWhen[] = {{A::Test, Required, X::TestExpected},
                                  {A::Test, NotEmpty, X::ExpressionExpected}};
constexpr ElementCheck kKey[] = {{A::Name, Required, X::NameExpected},
                                 {A::Name, IsName, X::NotAQName},
                                 {A::Match, Required, X::ModeWithoutMatch},
                                 {A::Use, Required, X::UseExpected}};
constexpr ElementCheck kMessage[] = {{A::Terminate, YesOrNo, X::UnexpectedValue}};
constexpr ElementCheck kAlias[] = {{A::StylesheetPrefix, Required, X::StylesheetPrefixExpected},
                                   {A::ResultPrefix, RequiredNowhere, X::ResultPrefixExpected},
                                   {A::StylesheetPrefix, NotEmpty, X::UnexpectedValue},
                                   {A::ResultPrefix, NotEmpty, X::UnexpectedValue}};
constexpr ElementCheck kNumber[] = {{A::Level, LevelValue, X::UnexpectedValue}};
constexpr ElementCheck kVariable[] = {{A::Name, Required, X::NameExpected},
                                      {A::Name, IsName, X::NotAQName},
                                      {A::Select, NoContentBeside, X::SelectAndContent},
                                      {A::Select, NotEmpty, X::ExpressionExpected}};
constexpr ElementCheck kParam[] = {{A::Name, ParamPlace, X::UnexpectedElement},
                                   {A::Name, Required, X::NameExpected},
                                   {A::Name, IsName, X::NotAQName},
                                   {A::Select, NoContentBeside, X::SelectAndContent},
                                   {A::Select, NotEmpty, X::ExpressionExpected}};
constexpr ElementCheck kWithParam[] = {{A::Name, Required, X::NameExpected},
                                       {A::Name, IsName, X::NotAQName},
                                       {A::Select, NotEmpty, X::ExpressionExpected}};
constexpr ElementCheck kStylesheet[] = {{A::Version, Required, X::VersionExpected},
                                        {A::Version, IsDocumentElement, X::NotARootElement}};
constexpr ElementCheck kText[] = {{A::DisableOutputEscaping, YesOrNo, X::UnexpectedValue},
                                  {A::DisableOutputEscaping, TextContent, X::UnexpectedChild}};
constexpr ElementCheck kValueOf[] = {{A::DisableOutputEscaping, YesOrNo, X::UnexpectedValue},
                                     {A::Select, Required, X::SelectExpected}};
constexpr ElementCheck kDecimalFormat[] = {{A::Name, IsName, X::NotAQName},
                                           {A::Name, PrefixBound, X::UndefinedPrefix},
                                           {A::DecimalSeparator, OneUnit, X::UnexpectedValue},
                                           {A::GroupingSeparator, OneUnit, X::UnexpectedValue},
                                           {A::Percent, OneUnit, X::UnexpectedValue},
                                           {A::PerMille, OneUnit, X::UnexpectedValue},
                                           {A::ZeroDigit, OneUnit, X::UnexpectedValue},
                                           {A::Digit, OneUnit, X::UnexpectedValue},
                                           {A::PatternSeparator, OneUnit, X::UnexpectedValue},
                                           {A::Infinity, NotEmpty, X::UnexpectedValue},
                                           {A::MinusSign, OneUnit, X::UnexpectedValue},
                                           {A::NaN, NotEmpty, X::UnexpectedValue}};
constexpr ElementCheck kOutput[] = {{A::Method, MethodValue, X::UnexpectedValue},
                                    {A::Version, NotEmpty, X::UnexpectedValue},
                                    {A::Encoding, NotEmpty, X::UnexpectedValue},
                                    {A::OmitXmlDeclaration, YesOrNo, X::UnexpectedValue},
                                    {A::Standalone, YesOrNo, X::UnexpectedValue},
                                    {A::Indent, YesOrNo, X::UnexpectedValue},
                                    {A::DoctypePublic, NotEmpty, X::UnexpectedValue},
                                    {A::DoctypeSystem, NotEmpty, X::UnexpectedValue},
                                    {A::CdataSectionElements, NameList, X::NotAQName}};

constexpr auto kInst = ElementRule::Instruction;
constexpr auto kTop = ElementRule::TopLevel;
constexpr auto kAny = ElementRule::Anywhere;

// Ascending by code.
constexpr ElementRule kRules[] = {
    {E::ApplyImports, kInst, kNone, kNone, {}},
    {E::ApplyTemplates,
     kInst,
     Codes({A::Select, A::Mode}),
     Codes({E::Sort, E::WithParam}),
     {},
     makers::ApplyTemplates},
    {E::Attribute, kInst, Codes({A::Name, A::Namespace}), kContent, kNamed, makers::Attribute},
    {E::AttributeSet, kTop, Codes({A::Name, A::UseAttributeSets}), Codes({E::Attribute}),
     kAttributeSet, makers::AttributeSet},
    {E::CallTemplate, kInst, Codes({A::Name}), Codes({E::WithParam}), kQNamed,
     makers::CallTemplate},
    {E::Choose, kInst, kNone, Codes({E::When, E::Otherwise}), {}},
    {E::Comment, kInst, kNone, kContent, {}},
    {E::Copy, kInst, Codes({A::UseAttributeSets}), kContent, {}, makers::Copy},
    {E::CopyOf, kInst, Codes({A::Select}), kNone, kSelecting, makers::Select},
    {E::DecimalFormat, kTop, kDecimalFormatAttributes, kNone, kDecimalFormat,
     makers::DecimalFormatElement},
    {E::Element, kInst, Codes({A::Name, A::Namespace, A::UseAttributeSets}), kContent, kNamed,
     makers::ElementElement},
    {E::Fallback, kInst, kNone, kContent, {}},
    {E::ForEach, kInst, Codes({A::Select}), kContent | Codes({E::Sort}), kSelecting,
     makers::Select},
    {E::If, kInst, Codes({A::Test}), kContent, kIf, makers::Test},
    {E::Import, kTop, Codes({A::Href}), kNone, kHref, makers::Import},
    {E::Include, kTop, Codes({A::Href}), kNone, kHref, makers::Import},
    {E::Key, kTop, Codes({A::Name, A::Match, A::Use}), kNone, kKey, makers::Key},
    {E::Message, kInst, Codes({A::Terminate}), kContent, kMessage, makers::Message},
    {E::NamespaceAlias, kTop, Codes({A::StylesheetPrefix, A::ResultPrefix}), kNone, kAlias,
     makers::NamespaceAlias},
    {E::Number, kInst, kNumberAttributes, kNone, kNumber, makers::Number},
    {E::Otherwise, kInst, kNone, kContent, {}},
    {E::Output, kTop, kOutputAttributes, kNone, kOutput, makers::Output},
    {E::Param, kAny, Codes({A::Name, A::Select}), kContent, kParam, makers::Binding},
    {E::PreserveSpace, kTop, Codes({A::Elements}), kNone, kElements},
    {E::ProcessingInstruction, kInst, Codes({A::Name}), kContent, kNamed,
     makers::ProcessingInstruction},
    {E::Sort,
     kInst,
     Codes({A::Select, A::Lang, A::DataType, A::Order, A::CaseOrder}),
     kNone,
     {},
     makers::Sort},
    {E::StripSpace, kTop, Codes({A::Elements}), kNone, kElements},
    {E::Stylesheet, kInst, kStylesheetAttributes, kTopLevel, kStylesheet, makers::Stylesheet},
    {E::Template,
     kTop,
     Codes({A::Match, A::Name, A::Priority, A::Mode}),
     kContent | Codes({E::Param}),
     {},
     makers::Template},
    {E::Text, kInst, Codes({A::DisableOutputEscaping}), kAnyChild, kText, makers::Text},
    {E::ValueOf, kInst, Codes({A::Select, A::DisableOutputEscaping}), kNone, kValueOf,
     makers::ValueOf},
    {E::Variable, kAny, Codes({A::Name, A::Select}), kContent, kVariable, makers::Binding},
    {E::When, kInst, Codes({A::Test}), kContent, kWhen, makers::Test},
    {E::WithParam, kInst, Codes({A::Name, A::Select}), kContent, kWithParam, makers::Binding},
};

}  // namespace

const CodeSet kContentChildren = kContent;

const ElementRule* FindElementRule(XsltElement code) {
  const auto* rule = std::ranges::lower_bound(kRules, code, {}, &ElementRule::code);
  return rule != std::end(kRules) && rule->code == code ? rule : nullptr;
}

}  // namespace kelmora
