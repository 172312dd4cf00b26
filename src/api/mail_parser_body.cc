// The main parser's readable body.
#include "api/instances.h"
#include "api/mail_parser.h"
#include "mime/body_extraction.h"
#include "mime/html_body.h"

namespace mailslice::api {
namespace {

mime::HtmlArguments Html(const CString& name, int html1, int html2, int html3) {
  return mime::HtmlArguments{name, html1, html2, html3};
}

mime::WalkedText Walked(const char* text) {
  return mime::WalkedText(text, MessageBuffer().Holds(text));
}

}  // namespace

CString MailParser::GetReadingBody(const char* text, int* alternative, const CString& htmlName,
                                   int html1, int html2, int html3) const {
  return mime::GetReadingBody(Walked(text), alternative, Html(htmlName, html1, html2, html3));
}

CString MailParser::GetBodyFromNoBoundary(const char* text, const CString& htmlName, int html1,
                                          int html2, int html3) const {
  return mime::GetBodyFromNoBoundary(text, Html(htmlName, html1, html2, html3));
}

CString MailParser::GetBodyFromIsBoundary(const char* text, const CString& boundary,
                                          int* alternative, const CString& htmlName, int html1,
                                          int html2, int html3) const {
  return mime::GetBodyFromIsBoundary(Walked(text), boundary, alternative,
                                     Html(htmlName, html1, html2, html3));
}

char* MailParser::GetSinglePartBody(const char* text) const {
  return mime::GetSinglePartBody(text);
}

char* MailParser::GetMultiPartFirstBody(const char* partText) const {
  return mime::GetMultiPartFirstBody(partText);
}

CString MailParser::GetRemainBody(const CString& text) const { return mime::GetRemainBody(text); }

CString MailParser::GetFileNameToSaveWithHtml(const CString& name) const {
  return mime::HtmlSourcePath(name);
}

}  // namespace mailslice::api
