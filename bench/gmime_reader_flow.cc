#include "gmime_reader_flow.h"

#include <fcntl.h>
#include <gmime/gmime.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "simple_html_text.h"

namespace mailslice::bench {
namespace {

constexpr int kSavedFileMode = 0600;

struct PartsOfInterest {
  GMimeTextPart* plain = nullptr;
  GMimeTextPart* html = nullptr;
  std::vector<GMimeObject*> attachments;  // leaf parts and embedded messages
};

// What a mail reader lists as an attachment: a part marked "attachment", or any part with a
// disposition that names a file (pictures sent inline with a file name are offered too).
bool IsAttachment(GMimePart* part) {
  GMimeContentDisposition* disposition = g_mime_object_get_content_disposition(GMIME_OBJECT(part));
  if (disposition == nullptr) return false;
  return g_mime_content_disposition_is_attachment(disposition) ||
         g_mime_part_get_filename(part) != nullptr;
}

void NotePart(GMimeObject* /*parent*/, GMimeObject* object, gpointer data) {
  auto* parts = static_cast<PartsOfInterest*>(data);
  if (GMIME_IS_MESSAGE_PART(object)) {
    parts->attachments.push_back(object);
    return;
  }
  if (!GMIME_IS_PART(object)) return;  // a multipart: its children come by themselves
  if (IsAttachment(GMIME_PART(object))) {
    parts->attachments.push_back(object);
    return;
  }
  if (!GMIME_IS_TEXT_PART(object)) return;
  GMimeContentType* type = g_mime_object_get_content_type(object);
  if (parts->plain == nullptr && g_mime_content_type_is_type(type, "text", "plain")) {
    parts->plain = GMIME_TEXT_PART(object);
  } else if (parts->html == nullptr && g_mime_content_type_is_type(type, "text", "html")) {
    parts->html = GMIME_TEXT_PART(object);
  }
}

size_t Utf8Characters(std::string_view text) {
  size_t count = 0;
  for (char byte : text) count += (static_cast<unsigned char>(byte) & 0xC0) != 0x80 ? 1 : 0;
  return count;
}

void ReadHeaders(GMimeMessage* message) {
  for (InternetAddressList* list :
       {g_mime_message_get_from(message), g_mime_message_get_to(message),
        g_mime_message_get_cc(message)}) {
    if (list == nullptr) continue;
    g_free(internet_address_list_to_string(list, nullptr, FALSE));  // FALSE: decoded, for display
  }
  g_mime_message_get_subject(message);  // decoded by the parser
  GDateTime* date = g_mime_message_get_date(message);
  if (date == nullptr) return;
  GDateTime* local = g_date_time_to_local(date);
  g_free(g_date_time_format(local, "%Y/%m/%d %H:%M:%S"));
  g_date_time_unref(local);
}

// The body in UTF-8, as GMime converts it from the part's charset. Where the sender offers an
// HTML version, the reader shows that one, reduced to text, as mailslice's reading body does.
size_t ReadBody(const PartsOfInterest& parts) {
  GMimeTextPart* chosen = parts.html != nullptr ? parts.html : parts.plain;
  if (chosen == nullptr) return 0;
  char* text = g_mime_text_part_get_text(chosen);
  if (text == nullptr) return 0;
  size_t characters =
      chosen == parts.html ? Utf8Characters(TextOfHtml(text)) : Utf8Characters(text);
  g_free(text);
  return characters;
}

// Writes the decoded content of one attachment to a new file, measures it and removes it, as
// the mailslice side does; the size written, or -1.
off_t SaveAttachment(GMimeObject* object, const std::string& savedPath) {
  int file = open(savedPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kSavedFileMode);
  if (file < 0) return -1;
  // A pipe stream writes straight to the descriptor; a file stream would fsync on each flush,
  // which mailslice does not do either.
  GMimeStream* out = g_mime_stream_pipe_new(file);
  ssize_t written = -1;
  if (GMIME_IS_MESSAGE_PART(object)) {
    GMimeMessage* inner = g_mime_message_part_get_message(GMIME_MESSAGE_PART(object));
    if (inner != nullptr)
      written = g_mime_object_write_to_stream(GMIME_OBJECT(inner), nullptr, out);
  } else if (GMimeDataWrapper* content = g_mime_part_get_content(GMIME_PART(object))) {
    written = g_mime_data_wrapper_write_to_stream(content, out);
  }
  struct stat status {};
  off_t size = written >= 0 && fstat(file, &status) == 0 ? status.st_size : -1;
  g_object_unref(out);  // closes the file
  unlink(savedPath.c_str());
  return size;
}

GMimeMessage* ParseMessage(const std::string& path) {
  int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return nullptr;
  GMimeStream* stream = g_mime_stream_fs_new(file);  // owns the descriptor from here
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  g_object_unref(stream);
  GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
  g_object_unref(parser);
  return message;
}

}  // namespace

void StartGmime() { g_mime_init(); }

std::string GmimeVersion() {
  return std::to_string(gmime_major_version) + "." + std::to_string(gmime_minor_version) + "." +
         std::to_string(gmime_micro_version);
}

ReaderFlowTally ReadMessageThroughGmime(const std::string& path, const std::string& savedPath) {
  ReaderFlowTally tally;
  GMimeMessage* message = ParseMessage(path);
  if (message == nullptr) return tally;
  tally.messages = 1;
  ReadHeaders(message);
  PartsOfInterest parts;
  g_mime_message_foreach(message, NotePart, &parts);
  tally.bodyCharacters = ReadBody(parts);
  for (GMimeObject* attachment : parts.attachments) {
    off_t size = SaveAttachment(attachment, savedPath);
    if (size < 0) {
      ++tally.failedSaves;
      continue;
    }
    ++tally.attachments;
    tally.savedBytes += static_cast<uintmax_t>(size);
  }
  g_object_unref(message);
  return tally;
}

}  // namespace mailslice::bench
