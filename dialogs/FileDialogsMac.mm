#include "FileDialogsMac.h"
#include "FileDialogs.h"

#include <QVarLengthArray>

#import <Carbon/Carbon.h>
#import <Cocoa/Cocoa.h>

// These calls are the oldest that every system with native dialogs still answers.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
// The text of an alert is its format.
#pragma GCC diagnostic ignored "-Wformat-security"

namespace {

constexpr NSInteger ok = 1; // what a panel returns unless it was cancelled

// An alert takes its texts in their 8-bit form: a character beyond Latin-1 becomes "?".
NSString *eightBitString(const QString &text)
{
    return [NSString stringWithCString:text.toLatin1().constData()
                              encoding:NSISOLatin1StringEncoding];
}

NSString *wholeString(const QString &text)
{
    return [NSString stringWithCharacters:reinterpret_cast<const unichar *>(text.utf16())
                                   length:static_cast<NSUInteger>(text.size())];
}

QString toQString(NSString *string)
{
    return FileDialogs::cfstring2qstring(reinterpret_cast<CFStringRef>(string));
}

// The paths that the user chose, none if the panel was cancelled. The caller releases the array.
NSArray *mac_getOpenFileNames(const QString &fileTypes, bool canChooseFiles,
                              bool canChooseDirectories, bool allowsMultipleSelection)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSOpenPanel *panel = [NSOpenPanel openPanel];
    [panel setCanChooseFiles:canChooseFiles];
    [panel setCanChooseDirectories:canChooseDirectories];
    [panel setAllowsMultipleSelection:allowsMultipleSelection];

    // Two blanks in a row have an empty type between them, and an empty text is one empty type.
    NSArray *types = [wholeString(fileTypes) componentsSeparatedByString:@" "];
    [panel setAllowedFileTypes:types];
    NSMutableArray *paths = [[NSMutableArray alloc] init];
    if ([panel runModalForTypes:types] == ok) {
        NSArray *urls = [panel URLs];
        for (NSUInteger i = 0; i < [urls count]; ++i)
            [paths addObject:[[urls objectAtIndex:i] path]];
    }
    [pool release];
    return paths;
}

} // namespace

int mac_warningDialog(const QString &caption, const QString &text, const QString &button0,
                      const QString &button1, const QString &button2)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    // A "%" in the text is a directive without an argument; callers that mean the sign write "%%".
    NSAlert *alert = [NSAlert alertWithMessageText:eightBitString(caption)
                                     defaultButton:eightBitString(button0)
                                   alternateButton:eightBitString(button1)
                                       otherButton:eightBitString(button2)
                         informativeTextWithFormat:eightBitString(text)];
    const int index = meta::alertButton([alert runModal]);
    [pool release];
    return index;
}

namespace meta {

QStringList runOpenPanel(const QString &fileTypes, Choosing choosing)
{
    const bool isDirectory = choosing == Choosing::Directory;
    NSArray *paths =
        mac_getOpenFileNames(fileTypes, !isDirectory, isDirectory, choosing == Choosing::Files);
    QStringList result;
    for (NSUInteger i = 0; i < [paths count]; ++i)
        result.append(toQString([paths objectAtIndex:i]));
    [paths release];
    return result;
}

QString runSavePanel()
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSSavePanel *panel = [NSSavePanel savePanel];
    QString result;
    if ([panel runModal] == ok) {
        const CFStringRef path =
            CFURLCopyFileSystemPath(reinterpret_cast<CFURLRef>([panel URL]), kCFURLPOSIXPathStyle);
        result = FileDialogs::cfstring2qstring(path);
        CFRelease(path);
    }
    [pool release];
    return result;
}

int alertButton(long result)
{
    switch (result) {
    case -1: return 2; // the other button
    case 0: return 1;  // the alternate button
    default: return 0; // the default button, and an alert that failed
    }
}

std::optional<qint32> askSystem(quint32 selector)
{
    SInt32 value = 0;
    if (Gestalt(selector, &value) != noErr)
        return {};
    return value;
}

} // namespace meta

QString FileDialogs::cfstring2qstring(CFStringRef string)
{
    const CFIndex length = CFStringGetLength(string);
    if (const UniChar *units = CFStringGetCharactersPtr(string))
        return QString(reinterpret_cast<const QChar *>(units), length);
    QVarLengthArray<UniChar> copied(length);
    CFStringGetCharacters(string, CFRangeMake(0, length), copied.data());
    return QString(reinterpret_cast<const QChar *>(copied.constData()), length);
}
