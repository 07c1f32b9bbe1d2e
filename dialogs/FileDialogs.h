#pragma once

#include <QStringList>

class QWidget;

#ifdef META_NATIVE_DIALOGS
typedef const struct __CFString *CFStringRef;
#endif

/// The system's own alert and file panels where the system is new enough, otherwise the toolkit's.
/// Each operation shows a modal dialog and returns when the user has answered.
class FileDialogs
{
public:
    FileDialogs() = default;
    virtual ~FileDialogs() = default;

    /// Whether the system's own dialogs are used.
    static bool macLionOrGreater();
    /// The same as 0 or 1. The system is asked anew every time.
    static int mac_useNativeDialogs();

    /// Asks the user to press one of three buttons.
    ///
    /// @param button0 an empty text stands for "OK"
    /// @param button1 no button if the text is empty; likewise button2
    /// @param defaultButton index of the button that Return presses; the system's own alert always
    ///     takes button 0
    /// @param escapeButton index of the button that Escape and closing stand for; where it names
    ///     none of several buttons, one of them has to be pressed. The system's own alert ignores
    ///     it.
    /// @return the index of the button: 0, 1 or 2, whether the others are there or not; the escape
    ///     button if the box goes with its parent
    static int warning(QWidget *parent, const QString &caption, const QString &text,
                       const QString &button0, const QString &button1, const QString &button2,
                       int defaultButton, int escapeButton);

    // Of the four below the system's own panels heed the file types alone. The toolkit's dialogs
    // heed all but these and the name.
    //
    // startWith: the folder or file that is shown first. fileTypes: suffixes, with a single blank
    // between two. selectedFilter: may be null; otherwise holds the filter shown first and takes
    // the one that the user chose.

    /// @return an existing file; empty if the user cancelled
    static QString getOpenFileName(const QString &startWith, const QString &filter, QWidget *parent,
                                   const QString &name, const QString &caption,
                                   const QString &fileTypes, QString *selectedFilter,
                                   bool resolveSymlinks);
    /// @return existing files; empty if the user cancelled
    static QStringList getOpenFileNames(const QString &startWith, const QString &filter,
                                        QWidget *parent, const QString &name,
                                        const QString &caption, const QString &fileTypes,
                                        QString *selectedFilter, bool resolveSymlinks);
    /// @param dirOnly whether the files in the folders stay hidden
    /// @return an existing folder; empty if the user cancelled
    static QString getExistingDirectory(const QString &startWith, QWidget *parent,
                                        const QString &name, const QString &caption, bool dirOnly,
                                        bool resolveSymlinks);
    /// @return a path to save to, for which the user agreed to replace a file that is there; empty
    ///     if the user cancelled
    static QString getSaveFileName(const QString &startWith, const QString &filter, QWidget *parent,
                                   const QString &name, const QString &caption,
                                   QString *selectedFilter, bool resolveSymlinks);

#ifdef META_NATIVE_DIALOGS
    /// @param string not null
    static QString cfstring2qstring(CFStringRef string);
#endif
};
