#include "uncaughterror.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

#include "tqcore/console.h"
#include "tqcore/tqexcept.h"
#include "tqcore/tqtext.h"
#include "xmltree/treemodel.h"
#include "xmltree/xpathnode.h"
#include "xslt/tqxslterror.h"

namespace kelmora {

namespace {

// Writes without memory: standard error has no buffer of its own.
void WriteMemoryExhausted() {
  for (const char16_t unit : std::u16string_view(kMemoryExhausted)) {
    std::fputc(static_cast<char>(unit), stderr);
  }
  std::fputc('\n', stderr);
}

bool IsMemoryExhausted() {
  try {
    throw;
  } catch (const TQExcept& error) {
    return error.Code() == kAllocationFailed;
  } catch (const std::bad_alloc&) {
    return true;
  } catch (...) {
    return false;
  }
}

// An error that finds no memory to be raised in gets here without an exception.
[[noreturn]] void EndWithoutMemory() {
  if (std::current_exception() != nullptr && !IsMemoryExhausted()) std::abort();
  WriteMemoryExhausted();
  std::_Exit(0);
}

TQString Describe() {
  try {
    throw;
  } catch (const TQExcept& error) {
    return error.Code() == kAllocationFailed ? kMemoryExhausted : error.GetErrorText(false);
  } catch (const TQXSLTError& error) {
    return error.Text();
  } catch (const TQTreeLimitError& error) {
    return error.message;
  } catch (const TQXTreeException& error) {
    return TQString::Format(u"The document does not make a tree, error %d", {error.code});
  } catch (const TQResultError& error) {
    return TQString::Format(u"Error %08X", {static_cast<std::int64_t>(error.code)});
  } catch (const std::bad_alloc&) {
    return kMemoryExhausted;
  } catch (const std::exception& error) {
    return u"Internal error: " + FromNative(error.what());
  } catch (...) {
    return u"Internal error";
  }
}

}  // namespace

void HandleLostErrors() {
  std::set_terminate(&EndWithoutMemory);
}

void ReportUncaughtError() {
  try {
    const TQString text = Describe();
    Console::Write(Console::Stream::kError, text);
    Console::NewLineAndFlush(Console::Stream::kError);
  } catch (...) {  // only the text can have failed, and nothing of it is written yet
    WriteMemoryExhausted();
  }
}

}  // namespace kelmora
