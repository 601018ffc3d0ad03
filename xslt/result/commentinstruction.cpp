#include "result/commentinstruction.h"

#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool CommentInstruction::Execute() {
  if (XPathNode* first = FirstContent(Begin())) {
    Fragment.reset(MakeFragmentRoot());
    PushChild(first, Fragment.get());
  }
  return true;
}

bool CommentInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  if (XPathNode* next = cursor != nullptr ? NextContent(cursor) : nullptr) {
    PushChild(next, Fragment.get());
    return true;
  }
  if (Fragment != nullptr) {
    TQString scratch;
    TQString text = Fragment->StringValue(scratch);
    Fragment.reset();
    while (text.Find(u"--") != TQString::kNotFound) text.Replace(u"--", u"- -", 0);
    if (!text.IsEmpty() && text.View().back() == u'-') text += u' ';
    AppendOrDrop(*OutputNode, MakeResultNode(XPathNodeKind::Comment, u"Comment", std::move(text)));
  }
  Finish();
  return true;
}

}  // namespace kelmora
