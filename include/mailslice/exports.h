// The exported functions of libmailslice. Every export has an undecorated (C) symbol name,
// never lets an exception escape, and reports failure through its result.
#ifndef MAILSLICE_EXPORTS_H
#define MAILSLICE_EXPORTS_H

#include <mailslice/cstring.h>
#include <mailslice/part_record.h>
#include <mailslice/visibility.h>

#if defined(__clang__)
#pragma clang diagnostic push
// CString crosses the boundary by value although the names are undecorated.
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

// The message buffer: one loaded message at a time.
MAILSLICE_API int MessageFileOpenAndMemoryAlloc(CString path);
MAILSLICE_API void MessageMemoryFree();

// Raw header values of the loaded message, unfolded and trimmed.
MAILSLICE_API CString GetFrom();
MAILSLICE_API CString GetTo();
MAILSLICE_API CString GetCc();
MAILSLICE_API CString GetBcc();
MAILSLICE_API CString GetBody();  // the Bcc value, like GetBcc
MAILSLICE_API CString GetDate();
MAILSLICE_API CString GetSubject();
MAILSLICE_API CString GetReplyTo();
MAILSLICE_API CString GetDelivered1();
MAILSLICE_API CString GetDelivered2();
MAILSLICE_API CString GetDelivered3();
MAILSLICE_API char* GetMessageText();  // owned by the library: the message buffer itself

// Read state of message files.
MAILSLICE_API char* OpeningMail(CString path);
MAILSLICE_API int IsReadingMail(CString path);
MAILSLICE_API int IsInitIndex(CString first, CString second);

// The Date header and dates and times shown to the user. `fields` points at eight entries:
// day name, day, month, year, hour, minute, second, zone. `date` is an OLE Automation date
// (days since 30 December 1899); the two leading arguments of GetDateMsg and GetTimeMsg are
// reserved. GetTimeZoneBias is in minutes, positive east of Coordinated Universal Time.
MAILSLICE_API void GetParsingDate(CString value, CString* fields);
MAILSLICE_API CString GetNewDate(CString* fields);
MAILSLICE_API CString ConvertToDisplayTime(CString time);
MAILSLICE_API CString GetDateMsg(int reserved1, int reserved2, double date);
MAILSLICE_API CString GetTimeMsg(int reserved1, int reserved2, double date);
MAILSLICE_API CString Get12hoursMsg(CString time, int marker);
MAILSLICE_API int LoadTimeFormat();
MAILSLICE_API int GetTimeZoneBias();
MAILSLICE_API CString GetDayOfWeekString(int weekday);
MAILSLICE_API CString ConvertMonthNumToString(int month);

// MIME parameters of a message or part text, and the multipart walker.
MAILSLICE_API int GetBoundary(const char* text, CString& boundary, int* offset);
MAILSLICE_API CString GetContentType(const char* text, int wholeText);
MAILSLICE_API CString GetCharSet(const char* text);
MAILSLICE_API CString GetTransEncode(const char* text);
MAILSLICE_API CString TrimContType(PartRecord** records, int index);
MAILSLICE_API CString TrimTnsEncode(PartRecord** records, int index);
MAILSLICE_API CString TrimAttFileName(PartRecord** records, int index);
MAILSLICE_API int GetMultiPart(const char* text, CString boundary, PartRecord** records);
MAILSLICE_API int GetMultiPartNoInAttachFile(const char* text, CString boundary, int* count);

// Codecs. Decoded and converted text comes in new heap blocks that the caller frees with free;
// the Base64 coder's messages belong to the coder until the matching FreeMemory call.
MAILSLICE_API char* Base64Decode(const char* text, int* length);  // length may be null
MAILSLICE_API char* QPdecode(const char* text);
MAILSLICE_API char* Encode(const unsigned char* bytes, int length);
MAILSLICE_API char* EncodeToChar(const unsigned char* bytes, int length);
MAILSLICE_API CString EncodeToCString(const unsigned char* bytes, int length, int reserved);
MAILSLICE_API void Base64CoderEncode(const char* text);  // null is ignored
MAILSLICE_API void Base64CoderDecode(const char* text);  // null is ignored
MAILSLICE_API char* Base64CoderEncodedMessage();
MAILSLICE_API char* Base64CoderDecodedMessage();
MAILSLICE_API int Base64CoderEncodedLength();
MAILSLICE_API int Base64CoderDecodedLength();
MAILSLICE_API void Base64CoderEncodedFreeMemory();
MAILSLICE_API void Base64CoderDecodedFreeMemory();
MAILSLICE_API int euc2sjs(char* text);                      // in place
MAILSLICE_API char* jis2sjs(char* dest, const char* src);   // returns dest
MAILSLICE_API void SJIStoJIS(char* dest, const char* src);  // writes no NUL of its own
MAILSLICE_API void utf72sjs(char* heapText);                // frees its argument
MAILSLICE_API char* utf82sjs(const char* text);

// The readable body. The HTML arguments: `htmlName` names the file in the temporary folder that
// receives the HTML source of an HTML body when `html1` is non-zero (GetFileNameToSaveWithHtml
// gives its path); `html2` and `html3` are reserved (pass 0).
MAILSLICE_API CString GetReadingBody(const char* text, int* alternative, CString htmlName,
                                     int html1, int html2, int html3);
MAILSLICE_API CString GetBodyFromNoBoundary(const char* text, CString htmlName, int html1,
                                            int html2, int html3);
MAILSLICE_API CString GetBodyFromIsBoundary(const char* text, CString boundary, int* alternative,
                                            CString htmlName, int html1, int html2, int html3);
MAILSLICE_API char* GetSinglePartBody(const char* text);
MAILSLICE_API char* GetMultiPartFirstBody(const char* partText);
MAILSLICE_API CString GetRemainBody(CString text);
MAILSLICE_API CString GetFileNameToSaveWithHtml(CString name);

// Attachments. GetAttachFile lists the attachments of a message into the library's
// attachment list, read back with GetAttachArrayCount and GetAttachArrayFile (an index out of
// range gives an empty string). OnDeleteMailMessage frees records made for GetMultiPart.
MAILSLICE_API int GetAttachNumber(const char* text);
MAILSLICE_API int GetAttachFile(const char* text, CString& names, int* count);
MAILSLICE_API int GetMultiPartAttachInfo(PartRecord** records, int count);
MAILSLICE_API int GetAttachArrayCount();
MAILSLICE_API CString GetAttachArrayFile(int index);
MAILSLICE_API void AttachArrayRemoveall();
MAILSLICE_API void OnDeleteMailMessage(PartRecord** records, int count);

// Saving attachments. Each save writes the whole body to a private temporary file first and
// copies it to destPath only when complete. Results: 1 saved; 0 when the temporary file cannot
// be created, memory runs out or Base64 cannot be decoded; otherwise the Windows error code of
// the failed write or copy (112: the disk is full). IsFile replaces an existing path by the
// first free "name(0).ext", "name(1).ext", ... and returns 1.
MAILSLICE_API int IsFile(int unused, CString& path);
MAILSLICE_API int SaveAttachedFile(const char* text, CString altName, CString destPath,
                                   CString boundary, CString fileName);
MAILSLICE_API int SaveAttachedEmlFile(const char* partText, CString unused1, CString destPath,
                                      CString unused2);
MAILSLICE_API int SaveBase64File(const char* start, const char* end, CString destPath);
MAILSLICE_API int SaveAttachFile(const char* start, const char* end, CString destPath);

// Display text from raw header values (as GetFrom, GetTo, GetSubject and GetCc give them):
// the sender or recipient decoded (a localised "unknown" for an empty value), the bare address
// between "<" and ">", the subject with its encoded words decoded, and the Cc addresses
// appended to the caller's list one by one.
MAILSLICE_API CString GetMailFrom(CString value);
MAILSLICE_API CString GetMailTo(CString value);
MAILSLICE_API CString GetMailFromAddress(CString value);
MAILSLICE_API CString GetParsingSubject(CString value);
MAILSLICE_API void GetCCList(CString value, CStringArray* list);

}  // extern "C"

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

#endif  // MAILSLICE_EXPORTS_H
