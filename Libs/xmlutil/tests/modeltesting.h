// The fixture of the tests of DTDs and schemas.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "tqcore/tqtext.h"
#include "xmltree/documentmanager.h"
#include "xmlutil/documentmodel.h"

namespace kelmora {

inline std::string Repeat(const std::string& text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

// The text with the number for each "#".
inline std::string Numbered(std::string_view text, int number) {
  std::string out;
  for (char unit : text) {
    if (unit == '#') {
      out += std::to_string(number);
    } else {
      out += unit;
    }
  }
  return out;
}

// A document on disk with its files, loaded and built; prints its tree in one line.
class ModelTest : public testing::Test {
 protected:
  ModelTest() {
    TQString ignored;
    kinds_.Fill(false, ignored);
    std::string name = (std::filesystem::temp_directory_path() / "model_XXXXXX").string();
    directory_ = mkdtemp(name.data());
  }
  ~ModelTest() override {
    XPathNode::DeleteTree(root_);
    std::filesystem::remove_all(directory_);
  }

  void Write(const std::string& name, const std::string& text) {
    std::ofstream(directory_ / name, std::ios::binary) << text;
  }

  // Loads `text` as a document and builds it; the dump of the tree below the root.
  std::string Build(const std::string& text) {
    Write("in.xml", text);
    XPathNode::DeleteTree(root_);
    root_ = nullptr;
    model_.reset();
    builder_ = std::make_unique<XPathTreeBuilder>();
    manager_ = std::make_unique<DocumentManager>(kinds_);  // forgets the files of the last build
    const TQString path = FromNative((directory_ / "in.xml").string());
    auto record = std::make_unique<LoadRecord>();
    auto document = manager_->CreateDocument();
    document->SetKind(manager_->RowFor(GrammarKind::XML));
    LoadError error;
    document->Load(path, error, record.get());
    record->document = std::move(document);
    EXPECT_FALSE(error.HasError()) << ToNative(error.message);
    XTreeNode* tree = manager_->AdoptRecord(std::move(record))->Root();
    if (tree == nullptr) return "no tree";
    model_ = std::make_unique<DocumentModel>(manager_.get());
    root_ = builder_->Build(*tree, *model_, true, path);
    std::string out;
    for (XPathNode* child = root_->firstChild; child != nullptr; child = child->next) {
      if (child->kind == XPathNodeKind::Element) Dump(*child, out);
    }
    return out;
  }

  ModelCode Error() const { return model_->Error().Code(); }
  std::string ErrorText() const { return ToNative(model_->Error().Text()); }

  static void Dump(const XPathNode& node, std::string& out) {
    out += '(';
    out += ToNative(node.GetName());
    for (XPathNode* child = node.firstChild; child != nullptr; child = child->next) {
      if (child->kind == XPathNodeKind::Element) {
        Dump(*child, out);
      } else if (child->kind == XPathNodeKind::Attribute) {
        if (child->GetLocalName().ends_with(u"chemaLocation")) continue;
        out += ' ';
        out += ToNative(child->GetName());
        out += '=';
        out += ToNative(child->GetValue());
      } else if (child->kind != XPathNodeKind::Namespace) {
        out += '\'';
        out += ToNative(child->GetValue());
        out += '\'';
      }
    }
    out += ")";
  }

  std::filesystem::path directory_;
  DocumentKindTable kinds_;
  std::unique_ptr<DocumentManager> manager_;
  std::unique_ptr<XPathTreeBuilder> builder_;
  std::unique_ptr<DocumentModel> model_;
  XPathNode* root_ = nullptr;
};

}  // namespace kelmora
