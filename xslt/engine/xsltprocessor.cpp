#include "xslt/xsltprocessor.h"

#include <utility>

#include "tqcore/console.h"
#include "xmlutil/documentmodel.h"

namespace kelmora {

XSLTProcessor::XSLTProcessor(DocumentManager* manager) : manager_(manager) {}

XTreeNode* XSLTProcessor::LoadExternalDocument(const TQString& url) {
  const auto known = documentsByUrl_.find(url.View());
  if (known != documentsByUrl_.end()) return known->second;
  auto record = std::make_unique<LoadRecord>();
  std::unique_ptr<LoadedDocument> document = manager_->CreateDocument();
  LoadError error;
  XTreeNode* root = document->Load(url, error, record.get());
  record->document = std::move(document);
  manager_->AdoptRecord(std::move(record));
  if (error.HasError()) {
    using enum Console::Stream;
    Console::Write(kError, u"Failed to load ");
    Console::Write(kError, url);
    Console::NewLineAndFlush(kError);
    if (!error.message.IsEmpty()) {
      Console::Write(kError, error.message);
      Console::NewLineAndFlush(kError);
    }
  }
  if (root == nullptr) return nullptr;
  documentsByUrl_.emplace(url, root);
  const std::u16string_view text = url;
  urlsByDocument_.emplace(root, TQString(text.substr(0, text.find(u'#'))));
  return root;
}

std::unique_ptr<TreeModel> XSLTProcessor::NewModel() {
  return std::make_unique<DocumentModel>(manager_);
}

TQString XSLTProcessor::DocumentUrl(const XTreeNode* root) const {
  const auto found = urlsByDocument_.find(root);
  return found == urlsByDocument_.end() ? TQString() : found->second;
}

}  // namespace kelmora
