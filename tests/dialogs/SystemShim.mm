#include "SystemShim.h"

#import <Foundation/Foundation.h>

#include <vector>

namespace {

constexpr OSErr unknownSelector = -5551;

NSString *toNSString(CFStringRef string)
{
    return reinterpret_cast<NSString *>(const_cast<struct __CFString *>(string));
}

CFStringRef toCFString(NSString *string)
{
    return reinterpret_cast<CFStringRef>(string);
}

} // namespace

OSErr Gestalt(OSType selector, SInt32 *response)
{
    const auto answer = shim::systemAnswers.find(selector);
    if (answer == shim::systemAnswers.end())
        return unknownSelector;
    *response = answer->second;
    return noErr;
}

CFIndex CFStringGetLength(CFStringRef string)
{
    return static_cast<CFIndex>([toNSString(string) length]);
}

const UniChar *CFStringGetCharactersPtr(CFStringRef string)
{
    if (!shim::exposesCharacters)
        return nullptr;
    static std::vector<UniChar> units;
    units.resize([toNSString(string) length] + 1); // never without an address
    [toNSString(string) getCharacters:units.data()];
    return units.data();
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar *buffer)
{
    ++shim::copiedStrings;
    [toNSString(string) getCharacters:buffer
                                range:NSMakeRange(static_cast<NSUInteger>(range.location),
                                                  static_cast<NSUInteger>(range.length))];
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle)
{
    NSURL *location = reinterpret_cast<NSURL *>(const_cast<struct __CFURL *>(url));
    return toCFString([[location path] copy]);
}

void CFRelease(CFTypeRef object)
{
    [static_cast<id>(const_cast<void *>(object)) release];
}

CFStringRef shim::newString(const char16_t *units, CFIndex length)
{
    return toCFString([[NSString alloc] initWithCharacters:reinterpret_cast<const unichar *>(units)
                                                    length:static_cast<NSUInteger>(length)]);
}
