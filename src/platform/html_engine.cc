// Linux has no system HTML engine: every markup is left to the library's own reader.
#include "platform/html_engine.h"

namespace mailslice::platform {
namespace {

class NoHtmlEngine final : public HtmlEngine {
 public:
  std::optional<std::u16string> BodyText(std::u16string_view) override { return std::nullopt; }
  bool MakesDocuments() const override { return false; }
};

}  // namespace

HtmlEngine& HostHtmlEngine() {
  static NoHtmlEngine engine;
  return engine;
}

}  // namespace mailslice::platform
