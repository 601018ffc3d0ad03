// The way in is bytes, text, tree: a file or URL is read whole, its encoding detected from the
// bytes (XML 1.0, appendix F), the text decoded and parsed by the grammar of its kind, which a row
// that was given or the name's extension decides. The way out is a text, encoded piece by piece
// into a file that takes its place at the end only, or sent whole.
//
// The trap: line ends. Inside all are CR; the one that the file used is remembered, and goes out
// with what this document saves. A warning of the conversion is an error in LoadError beside a
// text that is there all the same.
#include "xmltree/loadeddocument.h"

#include <utility>

#include "encodings/encodings.h"
#include "fileerror.h"
#include "filereader.h"
#include "textencoder.h"
#include "tqcore/tqexcept.h"
#include "tqcore/tqtext.h"
#include "xmltree/documentmanager.h"
#include "xmltree/fragmentparser.h"
#include "ystreamimpl/embeddedfiles.h"
#include "ystreamimpl/filewriter.h"
#include "ystreamimpl/tqurlloader.h"

namespace kelmora {
namespace {

constexpr int kFilePath = 1;
constexpr int kUrlPath = 2;
constexpr std::u16string_view kUrlStarts[] = {u"file://", u"http://", u"https://", u"gopher://",
                                              u"ftp://"};
constexpr std::string_view kSendVerb = "PUT";

XTreeKind RootFor(GrammarKind kind) {
  if (kind == GrammarKind::DTD) return XTreeKind::DTDDocument;
  return kind == GrammarKind::Entity ? XTreeKind::Entity : XTreeKind::Document;
}

std::unique_ptr<TQUrlLoader> MakeLoader(const TransferOptions& options) {
  const bool hasLogin = !options.user.IsEmpty() || !options.password.IsEmpty();
  auto loader = hasLogin ? std::make_unique<TQUrlLoader>(options.user, options.password)
                         : std::make_unique<TQUrlLoader>();
  loader->SetShowMessages(options.showMessages);
  loader->SetAskPassword(options.askPassword);
  loader->SetUseCache(options.useCache);
  loader->SetExtraHeaders(options.extraHeaders);
  return loader;
}

bool FetchUrl(const TQString& url, EncodedBytes& bytes, LoadError& error,
              const TransferOptions& options) {
  const auto loader = MakeLoader(options);
  if (!loader->Fetch(url)) {
    error.Set(LoadError::File, LoadError::UrlUnreadable);
    return false;
  }
  const std::string fetched = loader->TakeBuffer();
  bytes.Resize(fetched.size());
  fetched.copy(bytes.Data(), fetched.size());
  return true;
}

TQString ConversionFailure() {
  return ConversionRanOutOfMemory() ? TQString(kMemoryExhausted) : TQString();
}

bool EncodeFailed(LoadError& error) {
  error.Set(LoadError::Decoding, LoadError::EncodeWarning, ConversionFailure());
  return false;
}

bool SendToUrl(const TQString& url, TextEncoder& encoder, LoadError& error,
               const TransferOptions& options) {
  std::string data;
  std::string piece;
  while (!encoder.IsDone()) {
    if (!encoder.EncodeNext(piece)) return EncodeFailed(error);
    data += piece;
  }
  const auto loader = MakeLoader(options);
  if (loader->Send(url, data, kSendVerb, ToNative(options.mediaType))) return true;
  error.Set(LoadError::File, LoadError::UrlUnreadable);
  if (loader->SystemError() != 0) SetSystemError(error, loader->SystemError());
  return false;
}

bool WriteToFile(const TQString& path, TextEncoder& encoder, LoadError& error) {
  FileWriter file(ToNative(path));
  int failure = file.Open();
  std::string piece;
  while (failure == 0 && !encoder.IsDone()) {
    if (!encoder.EncodeNext(piece)) return EncodeFailed(error);
    failure = file.Write(piece);
  }
  if (failure == 0) failure = file.Commit();
  if (failure == 0) return true;
  SetSystemError(error, failure);
  return false;
}

}  // namespace

int ClassifyPath(std::u16string_view path) {
  for (const std::u16string_view start : kUrlStarts) {
    if (EqualsIgnoringAsciiCase(path.substr(0, start.size()), start)) return kUrlPath;
  }
  return kFilePath;
}

LoadedDocument::LoadedDocument(const DocumentKindTable& kinds) : kinds_(kinds) {}
LoadedDocument::~LoadedDocument() = default;

XTreeNode* LoadedDocument::Load(const TQString& path, LoadError& error, LoadRecord* record,
                                const TransferOptions& options) {
  path_ = path;
  if (record != nullptr) record->path = path;
  if (!ReadText(path, error, options)) return nullptr;
  const DocumentKindRow* row = RowForName();
  if (row == nullptr) {
    error.Set(LoadError::Internal, LoadError::NoKindRow);
    return nullptr;
  }
  std::unique_ptr<XTree> tree = Parse(*row, error);
  XTreeNode* root = tree != nullptr ? tree->root : nullptr;
  if (root == nullptr && !error.HasError()) error.Set(LoadError::Internal, LoadError::NoTree);
  if (record != nullptr) {
    record->lineEnd = lineEnd_;
    record->kind = row->kind;
    record->cached = LookupEmbeddedFileView(path).data() != nullptr;
  }
  (record != nullptr ? record->tree : tree_) = std::move(tree);
  return root;
}

bool LoadedDocument::ReadText(const TQString& path, LoadError& error,
                              const TransferOptions& options) {
  if (path.IsEmpty()) {
    error.Set(LoadError::Internal, LoadError::EmptyName);
    return false;
  }
  EncodedBytes bytes;
  const bool wasRead = ClassifyPath(path) == kUrlPath ? FetchUrl(path, bytes, error, options)
                                                      : ReadWholeFile(path, bytes, error);
  return wasRead && Decode(std::move(bytes), error);
}

bool LoadedDocument::Decode(EncodedBytes bytes, LoadError& error) {
  const DetectedEncoding encoding = DetectEncoding(bytes);
  std::optional<TQString> text = DecodeText(std::move(bytes), encoding.id, encoding.byteOrder);
  if (!text.has_value() || UnmappableCount() > 0) {
    error.Set(LoadError::Decoding, LoadError::DecodeWarning, ConversionFailure());
  }
  if (!text.has_value()) return false;
  text_ = std::move(*text);
  lineEnd_ = text_.DetectLineEnd();
  text_.ConvertLineEnds(u"\r");
  return true;
}

const DocumentKindRow* LoadedDocument::RowForName() const {
  if (row_ != nullptr) return row_;
  return kinds_.Find(path_.Extension(true) == u"dtd" ? GrammarKind::DTD : GrammarKind::XML);
}

// An empty text is a root without children.
std::unique_ptr<XTree> LoadedDocument::Parse(const DocumentKindRow& row, LoadError& error) {
  const XTreeKind rootKind = RootFor(row.kind);
  if (!text_.IsEmpty()) return ParseXTree(row, text_, {}, rootKind, true, error);
  auto tree = std::make_unique<XTree>();
  tree->root = tree->MakeOfKind(rootKind)->AsContainer();
  return tree;
}

bool LoadedDocument::SaveText(const TQString& path, const TQString& text, LoadError& error,
                              int encodingId, const TransferOptions& options) {
  if (path.IsEmpty()) {
    error.Set(LoadError::Internal, LoadError::EmptyName);
    return false;
  }
  const EncodingId encoding =
      encodingId != 0 ? static_cast<EncodingId>(encodingId) : DeclaredEncoding(text);
  TextEncoder encoder(text, lineEnd_, encoding);
  const bool isSaved = ClassifyPath(path) == kUrlPath ? SendToUrl(path, encoder, error, options)
                                                      : WriteToFile(path, encoder, error);
  if (isSaved && encoder.Unmappable() > 0) {
    error.Set(LoadError::Decoding, LoadError::EncodeWarning);
  }
  return isSaved;
}

}  // namespace kelmora
