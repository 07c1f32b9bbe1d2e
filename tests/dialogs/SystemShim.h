#pragma once

#include <cstdint>
#include <map>

// What FileDialogsMac.mm uses of Carbon and Core Foundation. A CFStringRef is an NSString here, and
// a CFURLRef an NSURL.

typedef std::int16_t OSErr;
typedef std::uint32_t OSType;
typedef std::int32_t SInt32;
typedef std::uint16_t UniChar;
typedef long CFIndex;
typedef const void *CFTypeRef;
typedef const struct __CFString *CFStringRef;
typedef const struct __CFURL *CFURLRef;

struct CFRange
{
    CFIndex location;
    CFIndex length;
};

enum { noErr = 0 };
enum CFURLPathStyle { kCFURLPOSIXPathStyle = 0 };

OSErr Gestalt(OSType selector, SInt32 *response);

inline CFRange CFRangeMake(CFIndex location, CFIndex length)
{
    return {location, length};
}
CFIndex CFStringGetLength(CFStringRef string);
const UniChar *CFStringGetCharactersPtr(CFStringRef string);
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar *buffer);
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);
void CFRelease(CFTypeRef object);

namespace shim {

/// What Gestalt answers; it fails for any other selector.
inline std::map<OSType, SInt32> systemAnswers;

/// Whether strings expose their characters.
inline bool exposesCharacters = true;

/// How often characters were copied out of a string.
inline int copiedStrings = 0;

/// A string that is to be released.
CFStringRef newString(const char16_t *units, CFIndex length);

} // namespace shim
