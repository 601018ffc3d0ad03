#include "flow/fallbackinstructions.h"

#include "names/xsltnames.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool FallbackHostInstruction::Execute() {
  RunFallback(FirstContent(Begin()));
  return true;
}

bool FallbackHostInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  if (cursor == nullptr || !RunFallback(NextContent(cursor))) Finish();
  return true;
}

bool FallbackHostInstruction::RunFallback(XPathNode* child) {
  while (child != nullptr && CodeOf(child) != XsltElement::Fallback) child = NextContent(child);
  if (child != nullptr) PushChild(child);
  return child != nullptr;
}

}  // namespace kelmora
