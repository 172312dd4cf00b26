#include "corpus/message_parts.h"

#include <cstdio>

namespace mailslice::corpus {
namespace {

constexpr unsigned kQpGrowthPercent = 115;  // European prose grows about that much encoded
constexpr char kHexDigits[] = "0123456789ABCDEF";

struct AttachmentKind {
  const char* stem;
  const char* extension;
  const char* contentType;
  bool text;
  bool picture;
};

constexpr AttachmentKind kAttachmentKinds[] = {
    {"invoice", "pdf", "application/pdf", false, false},
    {"photo", "jpg", "image/jpeg", false, true},
    {"diagram", "png", "image/png", false, true},
    {"minutes", "docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document",
     false, false},
    {"archive", "zip", "application/zip", false, false},
    {"notes", "txt", "text/plain", true, false},
    {"figures", "csv", "text/csv", true, false}};

// File-name stems European senders give their files.
constexpr const char* kEuropeanStems[] = {
    "Résumé",     "Übersicht",         "Présentation", "Angebot für Müller",
    "Año fiscal", "Sprawozdanie Łódź", "Reçu"};

constexpr const char* kMailers[] = {"X-Mailer: Microsoft Outlook 16.0",
                                    "X-Mailer: Apple Mail (2.3445.104.11)",
                                    "User-Agent: Mozilla Thunderbird 115.6.0"};

std::string Hex(Dice& dice, int digits) {
  std::string hex;
  for (int digit = 0; digit < digits; ++digit) hex += kHexDigits[dice.Below(16)];
  return hex;
}

std::string Received(Dice& dice) {
  char text[256];
  unsigned relay = dice.Below(100);
  unsigned address = dice.Below(255);
  unsigned exchanger = dice.Below(10);
  std::snprintf(text, sizeof text,
                "Received: from mail-%u.example.net (mail-%u.example.net [203.0.113.%u])\r\n"
                "\tby mx%u.example.com (Postfix) with ESMTPS id ",
                relay, relay, address, exchanger);
  std::string received = text + Hex(dice, 11);
  return received + "\r\n\tfor <alice.martin@example.com>; " + MailDate(dice) + kCrLf;
}

std::string PercentEncoded(const std::string& utf8) {
  std::string text;
  for (char byte : utf8) {
    unsigned char code = static_cast<unsigned char>(byte);
    bool plain = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
                 (code >= 'a' && code <= 'z') || byte == '.' || byte == '-' || byte == '_';
    text += plain ? std::string(1, byte)
                  : std::string{'%', kHexDigits[code >> 4], kHexDigits[code & 15]};
  }
  return text;
}

// An inline word now and then, the way people format mail in an HTML editor.
std::string HtmlSentence(Dice& dice, Script script) {
  std::string sentence = Sentence(dice, script, 5, 16);
  switch (dice.Below(10)) {
    case 0:
      return "<b>" + sentence + "</b>";
    case 1: {
      std::string link = "https://www.example.com/doc/" + Hex(dice, 8);
      link += "?ref=mail&amp;id=" + Hex(dice, 4);
      return "<a href=\"" + link + "\">" + sentence + "</a>";
    }
    case 2:
      return sentence + "&nbsp;&mdash; R&amp;D";
    default:
      return sentence;
  }
}

std::string HtmlParagraph(Dice& dice, Script script) {
  uint32_t sentences = dice.Between(2, 6);
  std::string paragraph = "<p>";
  for (uint32_t number = 0; number < sentences; ++number) {
    if (script == Script::kJapanese) {
      paragraph += JisRun(Sentence(dice, script, 2, 6)) + "<br>\r\n";
    } else {
      if (number > 0) paragraph += ' ';
      paragraph += HtmlSentence(dice, script);
    }
  }
  return paragraph + "</p>\r\n";
}

struct FileName {
  std::string contentTypeName;  // the name= parameter, quotes and all
  std::string dispositionName;  // the filename parameter, spelling and all
};

std::string Quoted(const std::string& value) {
  std::string quoted(1, '"');
  return quoted.append(value).append(1, '"');
}

FileName ChooseFileName(Dice& dice, Script script, const AttachmentKind& kind, int ordinal) {
  std::string suffix = std::string("-") + std::to_string(dice.Between(100, 999)) +
                       std::to_string(ordinal) + "." + kind.extension;
  if (script == Script::kJapanese && dice.Percent(50)) {
    std::string word = Quoted(std::string("=?ISO-2022-JP?B?") +
                              Base64(JisRun(JapanesePhrase(dice)) + suffix) + "?=");
    return {word, "filename=" + word};
  }
  if (script == Script::kEuropean && dice.Percent(40)) {
    std::string name = dice.Pick(kEuropeanStems) + suffix;
    std::string word = Quoted(Utf8Words(name, dice.Percent(50)));
    if (dice.Percent(30)) return {word, "filename*=UTF-8''" + PercentEncoded(name)};
    return {word, "filename=" + word};
  }
  std::string quoted = Quoted(kind.stem + suffix);
  return {quoted, "filename=" + quoted};
}

struct EncodedContent {
  std::string charset;   // "; charset=..." for text, else empty
  std::string encoding;  // the transfer encoding
  std::string body;
};

EncodedContent AttachmentContent(Dice& dice, Script script, const AttachmentKind& kind,
                                 size_t bytes) {
  if (!kind.text) {
    std::string content(bytes, '\0');
    for (char& byte : content) byte = dice.Byte();
    return {"", "base64", Base64Lines(content)};
  }
  if (script != Script::kEuropean) {
    return {"; charset=us-ascii", "7bit", Prose(dice, Script::kAscii, bytes, true)};
  }
  std::string text = Prose(dice, Script::kEuropean, bytes, true);
  if (dice.Percent(60)) return {"; charset=UTF-8", "quoted-printable", QuotedPrintable(text)};
  return {"; charset=UTF-8", "base64", Base64Lines(text)};
}

}  // namespace

std::string Subject(Dice& dice, Script script) {
  uint32_t prefix = dice.Below(100);
  std::string subject = prefix < 20 ? "Re: " : prefix < 25 ? "Fwd: " : "";
  switch (script) {
    case Script::kAscii:
      return subject + Sentence(dice, script, 3, 9);
    case Script::kEuropean: {
      std::string sentence = Sentence(dice, script, 3, 9);
      return subject + Utf8Words(sentence, dice.Percent(50));
    }
    case Script::kJapanese:
      return subject + Iso2022JpWords(Sentence(dice, script, 1, 4));
  }
  return subject;
}

std::string MessageHeaders(Dice& dice, Script script, const std::string& subject) {
  std::string headers = "Return-Path: <bounce-" + Hex(dice, 6) + "@example.net>\r\n";
  for (uint32_t hops = dice.Between(1, 3); hops > 0; --hops) headers += Received(dice);
  headers += "From: " + Mailbox(dice, script) + kCrLf;
  headers += "To: " + Mailbox(dice, script);
  for (uint32_t more = dice.Below(3); more > 0; --more) {
    headers += ",\r\n " + Mailbox(dice, dice.Percent(70) ? script : Script::kAscii);
  }
  headers += kCrLf;
  if (dice.Percent(30)) headers += "Cc: " + Mailbox(dice, Script::kAscii) + kCrLf;
  headers += "Subject: " + subject + kCrLf;
  headers += "Date: " + MailDate(dice) + kCrLf;
  headers += "Message-ID: <" + Hex(dice, 16);
  headers += "." + Hex(dice, 6) + "@example.com>\r\n";
  if (dice.Percent(40)) headers += dice.Pick(kMailers) + std::string(kCrLf);
  return headers + "MIME-Version: 1.0\r\n";
}

// Pieces of a boundary in the style of one mailer, thrown one after the other.
std::string Boundary(Dice& dice) {
  std::string boundary;
  switch (dice.Below(5)) {
    case 0:  // Outlook
      boundary = "----=_NextPart_000_" + Hex(dice, 4);
      boundary += "_" + Hex(dice, 8);
      return boundary + "." + Hex(dice, 8);
    case 1:  // JavaMail
      boundary = "----=_Part_" + std::to_string(dice.Below(100000));
      boundary += "_" + std::to_string(dice.Below(1000000000));
      return boundary + "." + std::to_string(dice.Below(1000000));
    case 2:  // Gmail
      return "000000000000" + Hex(dice, 16);
    case 3:  // Apple Mail
      boundary = "Apple-Mail=_" + Hex(dice, 8);
      for (int group : {4, 4, 4, 12}) boundary.append("-").append(Hex(dice, group));
      return boundary;
    default:  // Thunderbird
      boundary = "------------" + std::to_string(dice.Below(1000000000));
      return boundary + std::to_string(dice.Below(1000000000));
  }
}

std::string PlainTextPart(Dice& dice, Script script, size_t budget) {
  if (script == Script::kJapanese) {
    return "Content-Type: text/plain; charset=ISO-2022-JP\r\nContent-Transfer-Encoding: "
           "7bit\r\n\r\n" +
           Prose(dice, script, budget, true);
  }
  if (script == Script::kAscii) {
    std::string type = dice.Percent(70) ? "us-ascii" : "UTF-8; format=flowed";
    return "Content-Type: text/plain; charset=" + type +
           "\r\nContent-Transfer-Encoding: 7bit\r\n\r\n" + Prose(dice, script, budget, true);
  }
  uint32_t encoding = dice.Below(100);
  std::string head = "Content-Type: text/plain; charset=UTF-8\r\nContent-Transfer-Encoding: ";
  if (encoding < 50) {
    return head + "quoted-printable\r\n\r\n" +
           QuotedPrintable(Prose(dice, script, budget * 100 / kQpGrowthPercent, false));
  }
  if (encoding < 85) return head + "8bit\r\n\r\n" + Prose(dice, script, budget, true);
  return head + "base64\r\n\r\n" + Base64Lines(Prose(dice, script, budget * 57 / 78, true));
}

std::string HtmlPart(Dice& dice, Script script, size_t budget) {
  bool japanese = script == Script::kJapanese;
  std::string charset = japanese ? "ISO-2022-JP" : "UTF-8";
  std::string head =
      "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=" + charset +
      "\"><style>p{margin:0 0 1em 0}</style></head>\r\n"
      "<body><div dir=\"ltr\">\r\n";
  std::string tail =
      "</div><div class=\"signature\">-- <br>" + Sentence(dice, Script::kAscii, 2, 3) +
      "<br><a href=\"https://www.example.com\">www.example.com</a></div>\r\n</body></html>\r\n";
  std::string body = japanese ? head : QuotedPrintable(head);
  while (body.size() < budget) {
    std::string paragraph = HtmlParagraph(dice, script);
    body += japanese ? paragraph : QuotedPrintable(paragraph);
  }
  body += japanese ? tail : QuotedPrintable(tail);
  std::string encoding = japanese ? "7bit" : "quoted-printable";
  return "Content-Type: text/html; charset=" + charset +
         "\r\nContent-Transfer-Encoding: " + encoding + "\r\n\r\n" + body;
}

std::string AttachmentPart(Dice& dice, Script script, int ordinal, size_t bytes) {
  const AttachmentKind& kind = dice.Pick(kAttachmentKinds);
  FileName name = ChooseFileName(dice, script, kind, ordinal);
  EncodedContent content = AttachmentContent(dice, script, kind, bytes);
  std::string separator = dice.Percent(50) ? ";\r\n\t" : "; ";  // folded or on one line
  bool inlinePicture = kind.picture && dice.Percent(25);
  std::string part = "Content-Type: " + std::string(kind.contentType) + content.charset +
                     separator + "name=" + name.contentTypeName + kCrLf +
                     "Content-Transfer-Encoding: " + content.encoding + kCrLf +
                     "Content-Disposition: " + (inlinePicture ? "inline" : "attachment") +
                     separator + name.dispositionName + kCrLf;
  if (inlinePicture) part += "Content-ID: <" + Hex(dice, 12) + "@example.com>\r\n";
  return part + kCrLf + content.body;
}

std::string Multipart(const std::string& subtype, const std::string& boundary,
                      const std::vector<std::string>& parts, bool withPreamble) {
  std::string text =
      "Content-Type: multipart/" + subtype + ";\r\n\tboundary=\"" + boundary + "\"\r\n\r\n";
  if (withPreamble) text += "This is a multi-part message in MIME format.\r\n\r\n";
  for (const std::string& part : parts) text += "--" + boundary + kCrLf + part;
  return text + "--" + boundary + "--\r\n";
}

}  // namespace mailslice::corpus
