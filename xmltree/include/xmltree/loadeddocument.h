// LoadedDocument: one text that came in from a file or URL, decoded and parsed; and the way a text
// goes out to one.
//
// Inside, every line end of a loaded text is a single CR; LineEnd() tells what the file used. All
// offsets of the document's tree count units of Text().
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "encodings/encodedbytes.h"
#include "tqcore/tqstring.h"
#include "xmltree/documentkindtable.h"
#include "xmltree/loaderror.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

class DocumentManager;
struct LoadRecord;

// What a transfer by URL is told; files ignore it.
struct TransferOptions {
  TQString user;
  TQString password;
  bool showMessages = false;
  bool askPassword = true;
  bool useCache = false;
  std::vector<TQString> extraHeaders;
  TQString mediaType = u"text/xml";
};

// 2 for a name that begins, in any case, with file://, http://, https://, gopher:// or ftp://;
// 1, a file, for every other.
int ClassifyPath(std::u16string_view path);

class LoadedDocument {
 public:
  explicit LoadedDocument(const DocumentKindTable& kinds);
  virtual ~LoadedDocument();

  // Selects the grammar. Without a row the name decides: "dtd" as extension takes the grammar of
  // DTDs, anything else that of documents.
  void SetKind(const DocumentKindRow* row) { row_ = row; }

  // Reads, decodes, parses and tidies. Null with the reason in `error`; a decoding warning leaves
  // its code in `error` beside a tree. Directories are refused; pipes and devices are read to their
  // end, within bounds of size and of silence, beyond which the load fails. `record` (may be null)
  // takes over the tree; without one the document keeps it. The tree lives as long as its owner,
  // and needs this document's text.
  XTreeNode* Load(const TQString& path, LoadError& error, LoadRecord* record,
                  const TransferOptions& options = {});

  // Writes the text with the line ends of this class, in the encoding `encodingId`; 0 looks the
  // encoding up in the text's own declaration. An existing file is replaced as a whole or not at
  // all where the file system allows it. False, with the reason in `error`, when the text could not
  // be written; true with a code in `error` when characters had no place in the encoding.
  bool SaveText(const TQString& path, const TQString& text, LoadError& error, int encodingId,
                const TransferOptions& options = {});

  const TQString& Text() const { return text_; }
  const char16_t* LineEnd() const { return lineEnd_; }  // u"\r\n", u"\r" or u"\n"
  const TQString& Path() const { return path_; }
  const DocumentKindRow* Row() const { return row_; }

 protected:
  const char16_t* lineEnd_ = u"\r\n";

 private:
  bool ReadText(const TQString& path, LoadError& error, const TransferOptions& options);
  bool Decode(EncodedBytes bytes, LoadError& error);
  const DocumentKindRow* RowForName() const;
  std::unique_ptr<XTree> Parse(const DocumentKindRow& row, LoadError& error);

  const DocumentKindTable& kinds_;
  const DocumentKindRow* row_ = nullptr;
  TQString path_;
  TQString text_;
  std::unique_ptr<XTree> tree_;  // when no record took it over
};

// Writes results: its line end is "\r\n" with WideLineEnd, else "\n".
class ResultSaver final : public LoadedDocument {
 public:
  ResultSaver(const DocumentKindTable& kinds, bool wideLineEnd) : LoadedDocument(kinds) {
    lineEnd_ = wideLineEnd ? u"\r\n" : u"\n";
  }
};

}  // namespace kelmora
