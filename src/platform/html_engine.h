// The host's own HTML engine: it parses markup as a browser would and hands back the text of
// the body element. The handheld has one; the Linux host has none, and the library's own HTML
// reader then does the work.
#ifndef MAILSLICE_PLATFORM_HTML_ENGINE_H
#define MAILSLICE_PLATFORM_HTML_ENGINE_H

#include <optional>
#include <string>
#include <string_view>

namespace mailslice::platform {

class HtmlEngine {
 public:
  virtual ~HtmlEngine() = default;
  // Nothing when the engine could not make a document of the markup; an empty text when the
  // document has no body element; otherwise the body's text as the engine renders it.
  virtual std::optional<std::u16string> BodyText(std::u16string_view markup) = 0;
  // False for a host without an engine, whose BodyText never makes a document: a caller then
  // need not prepare the markup for it.
  virtual bool MakesDocuments() const { return true; }
};

// The engine of this host.
HtmlEngine& HostHtmlEngine();

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_HTML_ENGINE_H
