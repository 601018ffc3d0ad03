#include "flow/messageinstruction.h"

#include "engine/kepttrees.h"
#include "names/elementrecord.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool MessageInstruction::Execute() {
  if (XPathNode* first = FirstContent(Begin())) {
    Fragment = Processor->Kept->KeepFragment(MakeFragmentRoot());
    PushChild(first, Fragment);
  }
  return true;
}

bool MessageInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  if (XPathNode* next = cursor != nullptr ? NextContent(cursor) : nullptr) {
    PushChild(next, Fragment);
    return true;
  }
  TQString scratch;
  const std::u16string_view text =
      Fragment != nullptr ? Fragment->StringValue(scratch) : std::u16string_view();
  if (static_cast<const MessageRecord&>(*Record).Terminate) {
    Processor->TerminateMessage = text;
    Processor->MessagePendingFlag = true;
  } else {
    Processor->Message = text;
  }
  Finish();
  return true;
}

}  // namespace kelmora
