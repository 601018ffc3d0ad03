// ElementRecord: what the checks of a stylesheet leave for the instruction of an element: pointers
// to its attribute nodes (null when absent) and, where the instruction reads them at every run, the
// values. Records belong to the StylesheetIndex.
#pragma once

#include <cstddef>
#include <vector>

#include "base/expressiontext.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/decimalformat.h"

namespace kelmora {

class TemplateRule;

struct ElementRecord {
  virtual ~ElementRecord() = default;
};

struct LiteralRecord : ElementRecord {
  std::vector<InternedURI> ExcludedPrefixes;  // their URIs
  std::vector<InternedURI> ExtensionPrefixes;
  bool ForwardCompatible = false;
  bool IsStylesheetRoot = false;
};
struct ApplyTemplatesRecord : ElementRecord {
  XPathNode* Select = nullptr;
  ExpressionText SelectText{u"node()"};
  TQString Mode;  // as written
};
struct AttributeRecord : ElementRecord {
  XPathNode* Name = nullptr;
  XPathNode* Namespace = nullptr;
};
struct AttributeSetRecord : ElementRecord {
  XPathNode* Name = nullptr;
  XPathNode* UseAttributeSets = nullptr;
};
struct CallTemplateRecord : ElementRecord {
  XPathNode* NameNode = nullptr;
  TQString Name;                         // expanded
  mutable TemplateRule* Rule = nullptr;  // of that name, when there were RuleCount rules
  mutable std::size_t RuleCount = 0;
};
struct CopyRecord : ElementRecord {
  XPathNode* UseAttributeSets = nullptr;
};
struct SelectRecord : ElementRecord {  // xsl:copy-of, xsl:for-each
  XPathNode* Select = nullptr;
  ExpressionText SelectText;
};
struct ValueOfRecord : SelectRecord {
  bool DisableOutputEscaping = false;
};
struct DecimalFormatRecord : ElementRecord {
  XPathNode* NameNode = nullptr;
  TQString Name;  // expanded; empty for the default format
  DecimalFormat Format;
};
struct ElementElementRecord : ElementRecord {  // xsl:element
  XPathNode* Name = nullptr;
  XPathNode* Namespace = nullptr;
  XPathNode* UseAttributeSets = nullptr;
};
struct TestRecord : ElementRecord {  // xsl:if, xsl:when
  XPathNode* Test = nullptr;
  ExpressionText TestText;
};
struct ImportRecord : ElementRecord {  // xsl:import, xsl:include
  XPathNode* Href = nullptr;
};
struct MessageRecord : ElementRecord {
  bool Terminate = false;
};
struct NamespaceAliasRecord : ElementRecord {
  TQString StylesheetPrefix;  // empty for #default
  TQString ResultPrefix;
};
struct NumberRecord : ElementRecord {
  XPathNode* Count = nullptr;
  XPathNode* From = nullptr;
  XPathNode* Value = nullptr;
  XPathNode* Format = nullptr;
  XPathNode* Lang = nullptr;
  XPathNode* LetterValue = nullptr;
  XPathNode* GroupingSeparator = nullptr;
  XPathNode* GroupingSize = nullptr;
  ExpressionText CountText;  // the texts of the three attributes, empty without one
  ExpressionText FromText;
  ExpressionText ValueText;
  TQString Level = u"single";
};
struct OutputRecord : ElementRecord {
  XPathNode* Method = nullptr;
  XPathNode* Version = nullptr;
  XPathNode* Encoding = nullptr;
  XPathNode* OmitDeclaration = nullptr;
  XPathNode* Standalone = nullptr;
  XPathNode* DoctypePublic = nullptr;
  XPathNode* DoctypeSystem = nullptr;
  XPathNode* CdataElementsNode = nullptr;
  XPathNode* Indent = nullptr;
  XPathNode* MediaType = nullptr;
  TQString CdataElements;  // expanded names, a blank in front of each
  bool OmitDeclarationValue = false;
  bool StandaloneValue = false;
  bool IndentValue = false;
};
struct BindingRecord : ElementRecord {  // xsl:variable, xsl:param, xsl:with-param
  XPathNode* NameNode = nullptr;
  XPathNode* SelectNode = nullptr;
  TQString Name;  // expanded
  ExpressionText SelectText;
  bool IsGlobal = false;  // the parent is xsl:stylesheet
};
struct ProcessingInstructionRecord : ElementRecord {
  XPathNode* Name = nullptr;
};
struct SortRecord : ElementRecord {
  XPathNode* Select = nullptr;
  ExpressionText SelectText{u"."};
  XPathNode* Lang = nullptr;
  XPathNode* DataType = nullptr;
  XPathNode* Order = nullptr;
  XPathNode* CaseOrder = nullptr;
};
struct StylesheetRecord : ElementRecord {
  XPathNode* Version = nullptr;
  XPathNode* ExtensionElementPrefixes = nullptr;
  XPathNode* ExcludeResultPrefixes = nullptr;
};
struct TemplateRecord : ElementRecord {
  XPathNode* Mode = nullptr;
};
struct TextRecord : ElementRecord {
  TQString Text;
  bool DisableOutputEscaping = false;
};

}  // namespace kelmora
