// The three large workloads: a 9.8 MB message with a 7 MB attachment, a 5 MB quoted-printable
// text and a 1 MB HTML newsletter.
#include "corpus/corpus.h"
#include "corpus/message_parts.h"

namespace mailslice::corpus {
namespace {

constexpr uint32_t kMixedSeed = 9800;
constexpr uint32_t kQuotedPrintableSeed = 5000;
constexpr uint32_t kNewsletterSeed = 1000;
constexpr size_t kMixedBytes = 9'800'000;  // under the 9,900,000 the largest devices load
constexpr size_t kQuotedPrintableBytes = 5'000'000;
constexpr size_t kNewsletterBytes = 1'000'000;
constexpr size_t kShortTextBytes = 1'500;
constexpr size_t kShortHtmlBytes = 6'000;

// What newsletter editors sprinkle between sentences.
constexpr const char* kEntityBits[] = {"R&amp;D",
                                       "&ldquo;Best of&rdquo;",
                                       "d&eacute;j&agrave; vu",
                                       "3&nbsp;%",
                                       "&euro;&nbsp;42",
                                       "it&#8217;s",
                                       "&#x2014;",
                                       "&hellip;",
                                       "&copy;&nbsp;2024",
                                       "&laquo;&nbsp;merci&nbsp;&raquo;",
                                       "&lt;new&gt;",
                                       "caf&eacute; &amp; cr&egrave;me"};

constexpr char kNewsletterHead[] =
    "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
    "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\r\n"
    "<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\r\n<head>\r\n"
    "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\">\r\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1.0\">\r\n"
    "<title>The Weekly Letter</title>\r\n<style type=\"text/css\">\r\n"
    "body{margin:0;padding:0;-webkit-text-size-adjust:100%;}\r\n"
    "table,td{border-collapse:collapse;mso-table-lspace:0pt;mso-table-rspace:0pt;}\r\n"
    "img{border:0;outline:none;text-decoration:none;}\r\n"
    ".article h2 a:hover{text-decoration:underline !important;}\r\n"
    "@media only screen and (max-width:620px){.container{width:100% !important;}"
    ".article{padding:16px !important;}}\r\n</style>\r\n"
    "<!--[if mso]><style>body,table,td{font-family:Arial,sans-serif !important;}</style>"
    "<![endif]-->\r\n</head>\r\n"
    "<body style=\"margin:0;padding:0;background-color:#f2f4f6;\">\r\n"
    "<div style=\"display:none;max-height:0;overflow:hidden;\">This week: prices, people &amp; "
    "a new office&nbsp;&zwnj;&nbsp;&zwnj;&nbsp;&zwnj;</div>\r\n"
    "<table role=\"presentation\" width=\"100%\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" "
    "bgcolor=\"#f2f4f6\"><tr><td align=\"center\">\r\n"
    "<table class=\"container\" role=\"presentation\" width=\"600\" cellpadding=\"0\" "
    "cellspacing=\"0\" border=\"0\" bgcolor=\"#ffffff\">\r\n"
    "<tr><td style=\"padding:20px 30px;\"><a href=\"https://news.example.com/?utm_source="
    "newsletter\"><img src=\"https://news.example.com/logo.png\" width=\"180\" height=\"40\" "
    "alt=\"The Weekly Letter\"></a></td></tr>\r\n";

constexpr char kNewsletterFoot[] =
    "<tr><td style=\"padding:20px 30px;font-family:Helvetica,Arial,sans-serif;font-size:12px;"
    "color:#888888;\">You receive this letter because you subscribed on news.example.com.<br>"
    "<a href=\"https://news.example.com/unsubscribe?u=7f3a9c\">Unsubscribe</a> &middot; "
    "<a href=\"https://news.example.com/preferences?u=7f3a9c\">Preferences</a><br>"
    "&copy;&nbsp;2024 The Weekly Letter, 12 rue de l&#8217;Exemple, 75001 Paris</td></tr>\r\n"
    "</table>\r\n</td></tr></table>\r\n</body>\r\n</html>\r\n";

std::string Title(Dice& dice) {
  std::string title = Sentence(dice, Script::kEuropean, 4, 9);
  title.pop_back();  // no full stop in a headline
  return title;
}

std::string NewsletterParagraph(Dice& dice) {
  std::string paragraph = "<p style=\"margin:0 0 12px 0;\">";
  for (uint32_t sentences = dice.Between(2, 5); sentences > 0; --sentences) {
    paragraph += Sentence(dice, Script::kEuropean, 6, 16);
    if (dice.Percent(50)) paragraph += std::string(" ") + dice.Pick(kEntityBits);
    paragraph += ' ';
  }
  return paragraph + "</p>\r\n";
}

std::string NewsletterArticle(Dice& dice, int number) {
  std::string n = std::to_string(number);
  std::string link = "https://news.example.com/2024/03/story-" + n +
                     "?utm_source=newsletter&amp;utm_medium=email&amp;utm_campaign=weekly-12";
  std::string title = Title(dice);
  std::string article =
      "<tr>\r\n<td class=\"article\" style=\"padding:24px 30px 8px 30px;font-family:Helvetica,"
      "Arial,sans-serif;font-size:15px;line-height:23px;color:#333333;\" align=\"left\">\r\n"
      "<h2 style=\"margin:0 0 10px 0;font-size:20px;line-height:26px;font-weight:bold;\">"
      "<a href=\"" +
      link + "\" target=\"_blank\" style=\"color:#1a1a1a;text-decoration:none;\">" + title +
      "</a></h2>\r\n<table role=\"presentation\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" "
      "width=\"100%\"><tr><td width=\"180\" valign=\"top\"><img src=\"https://news.example.com/"
      "img/" +
      n + ".jpg\" width=\"160\" height=\"120\" alt=\"" + title +
      "\" style=\"display:block;border:0;\"></td><td valign=\"top\">\r\n";
  for (uint32_t paragraphs = dice.Between(1, 3); paragraphs > 0; --paragraphs) {
    article += NewsletterParagraph(dice);
  }
  return article +
         "</td></tr></table>\r\n<table role=\"presentation\" cellpadding=\"0\" cellspacing=\"0\" "
         "border=\"0\"><tr><td style=\"border-radius:4px;background:#1a73e8;\"><a href=\"" +
         link +
         "\" style=\"display:inline-block;padding:10px 18px;color:#ffffff;text-decoration:none;"
         "font-weight:bold;\">Read more&nbsp;&rarr;</a></td></tr></table>\r\n</td>\r\n</tr>\r\n"
         "<tr><td height=\"16\" style=\"font-size:0;line-height:0;\">&nbsp;</td></tr>\r\n"
         "<!-- /article " +
         n + " -->\r\n";
}

// The largest attachment whose Base64 lines fit in `room` bytes.
size_t AttachmentBytesFitting(size_t room) {
  size_t bytes = room / 78 * 57;
  while (Base64LinesSize(bytes + 1) <= room) ++bytes;
  return bytes;
}

std::string PdfLikeBytes(Dice& dice, size_t size) {
  std::string bytes = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n";
  bytes.reserve(size);
  while (bytes.size() < size) bytes += dice.Byte();
  bytes.resize(size);
  return bytes;
}

}  // namespace

std::string MixedMessage() {
  Dice dice(kMixedSeed);
  std::string headers =
      MessageHeaders(dice, Script::kEuropean,
                     Utf8Words("Rapport trimestriel \xE2\x80\x93 version d\xC3\xA9"
                               "finitive",
                               false));
  std::string outer = Boundary(dice);
  std::string inner = Boundary(dice);
  std::string alternative = Multipart("alternative", inner,
                                      {PlainTextPart(dice, Script::kEuropean, kShortTextBytes),
                                       HtmlPart(dice, Script::kEuropean, kShortHtmlBytes)},
                                      false);
  std::string attachmentHead =
      "Content-Type: application/pdf;\r\n\tname=\"Rapport-T1-2023.pdf\"\r\n"
      "Content-Transfer-Encoding: base64\r\n"
      "Content-Disposition: attachment;\r\n\tfilename=\"Rapport-T1-2023.pdf\"\r\n\r\n";
  size_t frame =
      headers.size() + Multipart("mixed", outer, {alternative, attachmentHead}, true).size();
  std::string attachment =
      attachmentHead + Base64Lines(PdfLikeBytes(dice, AttachmentBytesFitting(kMixedBytes - frame)));
  return headers + Multipart("mixed", outer, {alternative, attachment}, true);
}

std::string QuotedPrintableMessage() {
  Dice dice(kQuotedPrintableSeed);
  std::string message =
      MessageHeaders(dice, Script::kEuropean,
                     Utf8Words("Compte rendu d\xC3\xA9taill\xC3\xA9 de l\xE2\x80\x99"
                               "assembl\xC3\xA9"
                               "e g\xC3\xA9n\xC3\xA9rale",
                               true)) +
      "Content-Type: text/plain; charset=UTF-8\r\nContent-Transfer-Encoding: quoted-printable\r\n"
      "\r\n";
  message.reserve(kQuotedPrintableBytes);
  for (;;) {
    std::string chunk = QuotedPrintable(Paragraph(dice, Script::kEuropean) + "\r\n\r\n");
    if (message.size() + chunk.size() > kQuotedPrintableBytes) break;
    message += chunk;
  }
  return message;
}

std::string NewsletterMessage() {
  Dice dice(kNewsletterSeed);
  std::string message =
      MessageHeaders(dice, Script::kAscii, "Your weekly digest: 25 stories you may have missed") +
      "List-Unsubscribe: <https://news.example.com/unsubscribe?u=7f3a9c>\r\n"
      "Content-Type: text/html; charset=UTF-8\r\nContent-Transfer-Encoding: quoted-printable\r\n"
      "\r\n" +
      QuotedPrintable(kNewsletterHead);
  std::string foot = QuotedPrintable(kNewsletterFoot);
  message.reserve(kNewsletterBytes);
  for (int number = 1;; ++number) {
    std::string article = QuotedPrintable(NewsletterArticle(dice, number));
    if (message.size() + article.size() + foot.size() > kNewsletterBytes) break;
    message += article;
  }
  return message + foot;
}

}  // namespace mailslice::corpus
