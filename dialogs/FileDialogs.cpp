#include "FileDialogs.h"

#ifdef META_NATIVE_DIALOGS
#include "FileDialogsMac.h"
#include "SystemVersion.h"
#endif

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace {

QFileDialog::Options fileOptions(bool resolveSymlinks)
{
    return resolveSymlinks ? QFileDialog::Options() : QFileDialog::DontResolveSymlinks;
}

} // namespace

bool FileDialogs::macLionOrGreater()
{
    return mac_useNativeDialogs() != 0;
}

int FileDialogs::mac_useNativeDialogs()
{
#ifdef META_NATIVE_DIALOGS
    return meta::hasNativeDialogs(meta::systemVersion(meta::askSystem)) ? 1 : 0;
#else
    return 0;
#endif
}

int FileDialogs::warning(QWidget *parent, const QString &caption, const QString &text,
                         const QString &button0, const QString &button1, const QString &button2,
                         int defaultButton, int escapeButton)
{
#ifdef META_NATIVE_DIALOGS
    if (mac_useNativeDialogs())
        return mac_warningDialog(caption, text, button0, button1, button2);
#endif

    const QPointer<QMessageBox> box(
        new QMessageBox(QMessageBox::Warning, caption, text, QMessageBox::NoButton, parent));
    const QString texts[] = {button0.isEmpty() ? QDialogButtonBox::tr("OK") : button0, button1,
                             button2};
    // Buttons of one and the same role stand on the screen in the order in which they are added.
    QPushButton *buttons[3] = {};
    for (int i = 0; i < 3; ++i) {
        if (texts[i].isEmpty())
            continue;
        buttons[i] = box->addButton(texts[i], QMessageBox::ActionRole);
        if (i == defaultButton)
            box->setDefaultButton(buttons[i]);
        if (i == escapeButton)
            box->setEscapeButton(buttons[i]);
    }

    box->exec();

    int pressed = escapeButton; // a box that went with its parent was as good as closed
    for (int i = 0; box && i < 3; ++i) {
        if (buttons[i] && buttons[i] == box->clickedButton())
            pressed = i;
    }
    delete box;
    return pressed;
}

QString FileDialogs::getOpenFileName(const QString &startWith, const QString &filter,
                                     QWidget *parent, const QString &, const QString &caption,
                                     [[maybe_unused]] const QString &fileTypes,
                                     QString *selectedFilter, bool resolveSymlinks)
{
#ifdef META_NATIVE_DIALOGS
    if (mac_useNativeDialogs())
        return meta::runOpenPanel(fileTypes, meta::Choosing::File).value(0);
#endif
    return QFileDialog::getOpenFileName(parent, caption, startWith, filter, selectedFilter,
                                        fileOptions(resolveSymlinks));
}

QStringList FileDialogs::getOpenFileNames(const QString &startWith, const QString &filter,
                                          QWidget *parent, const QString &, const QString &caption,
                                          [[maybe_unused]] const QString &fileTypes,
                                          QString *selectedFilter, bool resolveSymlinks)
{
#ifdef META_NATIVE_DIALOGS
    if (mac_useNativeDialogs())
        return meta::runOpenPanel(fileTypes, meta::Choosing::Files);
#endif
    return QFileDialog::getOpenFileNames(parent, caption, startWith, filter, selectedFilter,
                                         fileOptions(resolveSymlinks));
}

QString FileDialogs::getExistingDirectory(const QString &startWith, QWidget *parent,
                                          const QString &, const QString &caption, bool dirOnly,
                                          bool resolveSymlinks)
{
#ifdef META_NATIVE_DIALOGS
    if (mac_useNativeDialogs())
        return meta::runOpenPanel({}, meta::Choosing::Directory).value(0);
#endif
    QFileDialog::Options options = fileOptions(resolveSymlinks);
    options.setFlag(QFileDialog::ShowDirsOnly, dirOnly);
    return QFileDialog::getExistingDirectory(parent, caption, startWith, options);
}

QString FileDialogs::getSaveFileName(const QString &startWith, const QString &filter,
                                     QWidget *parent, const QString &, const QString &caption,
                                     QString *selectedFilter, bool resolveSymlinks)
{
#ifdef META_NATIVE_DIALOGS
    if (mac_useNativeDialogs())
        return meta::runSavePanel();
#endif
    return QFileDialog::getSaveFileName(parent, caption, startWith, filter, selectedFilter,
                                        fileOptions(resolveSymlinks));
}
