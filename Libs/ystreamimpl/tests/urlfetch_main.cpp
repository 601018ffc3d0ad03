// urlfetch: carries out the transfers named by its arguments, one process for all of them:
//
//   fetch URL, send VERB URL FILE
//   login USER PASSWORD, limit connect|stall|total|body NUMBER, trust PEM-FILE, header LINE, cache
//
// One line each for fetch and send: "true" or "false", size of the buffer or -1, user, bytes as
// hex.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tqcore/tqtext.h"
#include "ystreamimpl/tqurlloader.h"

namespace {

using kelmora::FromNative;
using kelmora::TQString;
using kelmora::TQUrlLoader;

struct Settings {
  kelmora::UrlLimits limits;
  std::vector<TQString> headers;
  bool useCache = false;
  TQString user;
  TQString password;
};

std::unique_ptr<TQUrlLoader> MakeLoader(const Settings& settings) {
  auto loader = settings.user.IsEmpty()
                    ? std::make_unique<TQUrlLoader>()
                    : std::make_unique<TQUrlLoader>(settings.user, settings.password);
  loader->SetUseCache(settings.useCache);
  loader->SetLimits(settings.limits);
  loader->SetExtraHeaders(settings.headers);
  return loader;
}

void Print(const TQUrlLoader& loader, bool succeeded) {
  constexpr std::size_t kMostBytes = 4000;
  std::printf("%s %d %s ", succeeded ? "true" : "false", loader.HasBuffer() ? loader.Size() : -1,
              loader.User().IsEmpty() ? "-" : ToNative(loader.User()).c_str());
  for (char byte : loader.Buffer().substr(0, kMostBytes)) {
    std::printf("%02x", static_cast<unsigned char>(byte));
  }
  std::printf("\n");
}

}  // namespace

int main(int, char** argv) {
  Settings settings;
  const auto next = [&]() -> std::string {
    if (*++argv == nullptr) std::exit(2);
    return *argv;
  };
  while (argv[1] != nullptr) {
    const std::string command = next();
    if (command == "limit") {
      const std::string name = next();
      const int value = std::atoi(next().c_str());
      if (name == "connect") settings.limits.connectSeconds = value;
      if (name == "stall") settings.limits.stallSeconds = value;
      if (name == "total") settings.limits.totalSeconds = value;
      if (name == "body") settings.limits.largestBody = value;
    } else if (command == "trust") {
      settings.limits.certificateAuthorities = next();
    } else if (command == "header") {
      settings.headers.push_back(FromNative(next()));
    } else if (command == "cache") {
      settings.useCache = true;
    } else if (command == "login") {
      settings.user = FromNative(next());
      settings.password = FromNative(next());
    } else if (command == "fetch") {
      const auto loader = MakeLoader(settings);
      const bool succeeded = loader->Fetch(FromNative(next()).View());
      Print(*loader, succeeded);
    } else if (command == "send") {
      const auto loader = MakeLoader(settings);
      const std::string verb = next();
      const TQString url = FromNative(next());
      std::ifstream file(next(), std::ios::binary);
      const std::string data{std::istreambuf_iterator<char>(file), {}};
      const bool succeeded = loader->Send(url, data, verb, "text/xml");
      Print(*loader, succeeded);
    }
  }
  return 0;
}
