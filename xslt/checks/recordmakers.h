// The makers of element records that the rows of elementrules.cpp name. They run behind the checks,
// so values are known to be well-formed.
#pragma once

#include <memory>

#include "checks/checkedelement.h"
#include "names/elementrecord.h"

namespace kelmora::makers {

using RecordPtr = std::unique_ptr<ElementRecord>;
using Element = const CheckedElement&;

RecordPtr ApplyTemplates(Element element);
RecordPtr Attribute(Element element);
RecordPtr AttributeSet(Element element);
RecordPtr Binding(Element element);
RecordPtr CallTemplate(Element element);
RecordPtr Copy(Element element);
RecordPtr DecimalFormatElement(Element element);
RecordPtr ElementElement(Element element);
RecordPtr Import(Element element);
RecordPtr Key(Element element);  // also enters the key in the processor's Keys; makes no record
RecordPtr Message(Element element);
RecordPtr NamespaceAlias(Element element);
RecordPtr Number(Element element);
RecordPtr Output(Element element);
RecordPtr ProcessingInstruction(Element element);
RecordPtr Select(Element element);
RecordPtr Sort(Element element);
RecordPtr Stylesheet(Element element);
RecordPtr Template(Element element);
RecordPtr Test(Element element);
RecordPtr Text(Element element);
RecordPtr ValueOf(Element element);

// Of a literal result element; null when it has none of the attributes that go into it.
RecordPtr Literal(const XPathNode* element);

}  // namespace kelmora::makers
