// Writing the body of an attachment to a file, undoing its transfer encoding on the way. Every
// save goes through the one temporary file (staged_file.h): a save that fails leaves neither
// the temporary file nor a partial file under the destination name.
//
// Result codes: kSaveSucceeded; kSaveImpossible when the temporary file cannot be created,
// memory runs out or a Base64 block cannot be decoded; otherwise the Windows error code of the
// write or copy that failed (kErrorDiskFull, 112, is the one mail applications test for).
#ifndef MAILSLICE_ATTACH_ATTACHMENT_SAVER_H
#define MAILSLICE_ATTACH_ATTACHMENT_SAVER_H

#include <mailslice/cstring.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace mailslice::attach {

inline constexpr int kSaveSucceeded = 1;
inline constexpr int kSaveImpossible = 0;

// Base64 text is decoded in blocks of this many characters.
inline constexpr size_t kBase64BlockBytes = 131'072;
// Plain and quoted-printable bodies are written in chunks of at most this many bytes.
inline constexpr size_t kPlainChunkBytes = 13'107'200;

// Decodes Base64 and saves the bytes. Of the write and copy failures only the disk-full code
// is reported: any other failure gives kSaveSucceeded, as mail applications have always been
// told, but the destination is left as it was.
int SaveBase64File(std::string_view encoded, const std::string& destination);

// Saves the bytes as they are (7bit, 8bit, binary).
int SavePlainFile(std::string_view bytes, const std::string& destination);

// Decodes quoted-printable and saves the bytes. `chunkBytes` bounds the text decoded at once.
int SaveQuotedPrintableFile(std::string_view encoded, const std::string& destination,
                            size_t chunkBytes = kPlainChunkBytes);

// Saves the body of one part text (its header and body), chosen by its transfer encoding:
// Base64 decoded only when the encoding is written exactly "base64", everything else as it
// stands, quoted-printable included. kSaveImpossible when the text has no line break.
int SaveAttachedEmlFile(const char* partText, const std::string& destination);

// Saves an attachment body by its transfer encoding: "base64" and "quoted-printable" (in any
// letter case) are decoded, "7bit", "8bit" and anything else saved as they are.
int SaveBodyByEncoding(std::string_view body, const CString& transferEncoding,
                       const std::string& destination);

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_ATTACHMENT_SAVER_H
