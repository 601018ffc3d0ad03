// The stream factory, and what all stream classes share.
#include "ystreamimpl/ystream.h"

#include <algorithm>
#include <utility>

#include "readline.h"
#include "tqcore/tqerrorlogger.h"
#include "tqcore/tqfactory.h"
#include "tqcore/tqsingleton.h"
#include "tqdelegatorstreamimpl.h"
#include "tqfilestreamimpl.h"
#include "tqforwardingstream.h"
#include "tqmemorystreamimpl.h"
#include "tqurlstreamimpl.h"

namespace kelmora {

namespace {

template <class Stream>
std::unique_ptr<YStream> Make() {
  return std::make_unique<Stream>();
}

class StreamFactory : public TQFactory<YStream> {
 public:
  StreamFactory() : TQFactory(&RegisterAll) {}

 private:
  struct Row {
    StreamNumber number;
    Creator creator;
  };
  static constexpr Row kClasses[] = {
      {StreamNumber::kFile, &Make<TQFileStreamImpl>},
      {StreamNumber::kUrl, &Make<TQUrlStreamImpl>},
      {StreamNumber::kDelegator, &Make<TQDelegatorStreamImpl>},
      {StreamNumber::kModuleFile, &Make<TQModuleFileStream>},
      {StreamNumber::kResource, &Make<TQResourceStream>},
      {StreamNumber::kMemory, &Make<TQMemoryStreamImpl>},
  };

  static void RegisterAll(TQFactory& factory) {
    for (const Row& row : kClasses) {
      factory.Register(static_cast<std::int32_t>(row.number), row.creator);
    }
  }
};

constexpr const char16_t* kCallFailed = u"Method Call Failed";
constexpr const char16_t* kFile = u"ystream.cpp";

// Closing what isn't open is a fault to some classes, but destroying it is none.
bool WasNotOpen(ResultCode resultOfClose) {
  return resultOfClose == streamresult::kWrongMode;
}

}  // namespace

std::unique_ptr<YStream> CreateStream(StreamNumber number) {
  return TQSingleton<StreamFactory>::Instance().Create(static_cast<std::int32_t>(number));
}

void DestroyStream(std::unique_ptr<YStream> stream) {
  const ResultCode result = stream->Close();
  if (!WasNotOpen(result)) RaiseOnFailure(result);
}

void RaiseOnFailure(ResultCode code) {
  if (code == streamresult::kSuccess) return;
  TQErrorLogger::ReportAndRaise(code, kCallFailed, kFile, __LINE__);
}

int CopyName(std::u16string_view name, char16_t* buffer, int size) {
  if (size > 0) {
    const std::size_t copied = name.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[copied] = 0;
  }
  return static_cast<int>(name.size());
}

void CloseQuietly(YStream& stream) {
  const ResultCode result = stream.Close();
  if (result == streamresult::kSuccess || WasNotOpen(result)) return;
  TQErrorLogger::Report(result, kCallFailed, kFile, __LINE__);
}

}  // namespace kelmora
