#include "uncaughterror.h"

#include <exception>
#include <new>

#include "tqcore/tqexcept.h"
#include "tqcore/tqtext.h"
#include "xmltree/treemodel.h"
#include "xmltree/xpathnode.h"
#include "xslt/tqxslterror.h"

namespace kelmora {

namespace {

// A TQString raises the same code for both.
constexpr char16_t kMemoryExhausted[] = u"Out of memory, or a text beyond 2147483647 characters";

}  // namespace

TQString DescribeUncaughtError() {
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

}  // namespace kelmora
