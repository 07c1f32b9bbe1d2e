#include "DocumentCommands.h"

#include "Autosave.h"
#include "FileFault.h"
#include "ImportDialog.h"
#include "RecentFiles.h"
#include "RenderDialog.h"
#include "ShowDocument.h"
#include "ShowFile.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

namespace rehearsal {

namespace {

QString showFilter()
{
    return DocumentCommands::tr("Shows (*.show);;All files (*)");
}

} // namespace

DocumentCommands::DocumentCommands(ShowDocument &document, Autosave &autosave,
                                   RecentFiles &recentFiles, Show::TypeSetup types, QWidget &window)
    : m_document(document),
      m_autosave(autosave),
      m_recentFiles(recentFiles),
      m_types(std::move(types)),
      m_window(window)
{
    connect(&recentFiles, &RecentFiles::picked, this,
            qOverload<const QString &>(&DocumentCommands::open));
}

// --- Another document ---

void DocumentCommands::startNew()
{
    if (!mayLeave() || recoverUntitled())
        return;
    FileFault fault;
    if (!m_document.startNew(&fault))
        tell(fault);
}

void DocumentCommands::open()
{
    if (!mayLeave())
        return;
    const QString file =
        QFileDialog::getOpenFileName(&m_window, tr("Open a Show"), folder(), showFilter());
    if (!file.isEmpty())
        openAsking(file);
}

void DocumentCommands::open(const QString &file)
{
    if (mayLeave())
        openAsking(file);
}

void DocumentCommands::openOrImport(const QString &file)
{
    if (QFileInfo(file).suffix().compare(u"xsq", Qt::CaseInsensitive) == 0)
        import(file);
    else
        open(file);
}

void DocumentCommands::openAsking(const QString &file)
{
    FileFault fault;
    if (openAsking(file, &fault))
        return;
    tell(fault);
    if (!QFileInfo::exists(file) && !m_autosave.recoverable(file))
        m_recentFiles.remove(file);
}

bool DocumentCommands::openAsking(const QString &file, FileFault *fault)
{
    const std::optional<Recovery> recovery = m_autosave.recoverable(file);
    Answer answer = Answer::Later;
    if (recovery)
        answer = ask(*recovery, QFileInfo(file).fileName(), faultOf(file));
    if (answer == Answer::Recover && recover(*recovery))
        return true;
    if (!m_document.open(file, fault))
        return false;
    // Not before there is something else to go on with.
    if (answer == Answer::Discard)
        m_autosave.discard(*recovery);
    m_recentFiles.add(file);
    return true;
}

bool DocumentCommands::recoverUntitled()
{
    for (const Recovery &recovery : m_autosave.untitledRecoverable()) {
        const Answer answer = ask(recovery, tr("a new show"), {});
        if (answer == Answer::Later)
            return false;
        if (answer == Answer::Discard)
            m_autosave.discard(recovery);
        else if (recover(recovery))
            return true;
    }
    return false;
}

bool DocumentCommands::recover(const Recovery &recovery)
{
    FileFault fault;
    if (!m_autosave.recover(recovery, &fault)) {
        tell(fault);
        return false;
    }
    if (!recovery.showFile.isEmpty())
        m_recentFiles.add(recovery.showFile);
    emit said(tr("Recovered %1; it is not saved yet").arg(m_document.displayName()));
    return true;
}

// Why the show cannot be opened; empty if it can be.
QString DocumentCommands::faultOf(const QString &file) const
{
    FileFault fault;
    return readShow(file, m_types, &fault) ? QString() : fault.message();
}

// What is older than the file is not to be taken by a hasty Return, and what is all that there is
// not to be thrown away.
DocumentCommands::Answer DocumentCommands::ask(const Recovery &recovery, const QString &name,
                                               const QString &fault)
{
    m_window.show();
    QMessageBox box(QMessageBox::Question, DocumentCommands::tr("Recover"),
                    DocumentCommands::tr("The program did not end in order the last time, and left "
                                         "edits of \"%1\" that were not saved.")
                        .arg(name),
                    QMessageBox::NoButton, &m_window);
    box.setObjectName(QStringLiteral("recoverBox"));
    box.setTextFormat(Qt::PlainText);
    const QString time = QLocale().toString(recovery.written, QLocale::ShortFormat);
    const bool isOlder = recovery.isOlder && fault.isEmpty();
    if (!fault.isEmpty())
        box.setInformativeText(
            tr("They are of %1. The show itself cannot be opened (%2). Recover them?")
                .arg(time, fault));
    else if (isOlder)
        box.setInformativeText(
            tr("They are of %1; the show was saved since then. Recover them all the same?")
                .arg(time));
    else
        box.setInformativeText(tr("They are of %1. Recover them?").arg(time));
    QPushButton *recover = box.addButton(DocumentCommands::tr("&Recover"), QMessageBox::AcceptRole);
    recover->setObjectName(QStringLiteral("recoverButton"));
    QPushButton *discard = nullptr;
    if (fault.isEmpty()) {
        discard =
            box.addButton(DocumentCommands::tr("&Discard Them"), QMessageBox::DestructiveRole);
        discard->setObjectName(QStringLiteral("discardButton"));
    }
    QPushButton *later = box.addButton(DocumentCommands::tr("&Later"), QMessageBox::RejectRole);
    later->setObjectName(QStringLiteral("laterButton"));
    box.setDefaultButton(isOlder ? later : recover);
    box.setEscapeButton(later);
    box.exec();
    if (box.clickedButton() == recover)
        return Answer::Recover;
    return discard && box.clickedButton() == discard ? Answer::Discard : Answer::Later;
}

// --- Files ---

bool DocumentCommands::save()
{
    takeTyped();
    if (m_document.file().isEmpty())
        return saveAs();
    if (m_document.isFileChanged()) {
        const Overwriting answer = askToOverwrite();
        if (answer != Overwriting::Replace)
            return answer == Overwriting::SaveAs && saveAs();
    }
    FileFault fault;
    if (!m_document.save(&fault)) {
        tell(fault);
        return false;
    }
    emit said(tr("Saved %1").arg(m_document.displayName()));
    return true;
}

DocumentCommands::Overwriting DocumentCommands::askToOverwrite()
{
    QMessageBox box(QMessageBox::Warning, tr("Save the Show"),
                    tr("Another program has changed \"%1\" since it was opened here.")
                        .arg(m_document.displayName()),
                    QMessageBox::Cancel, &m_window);
    box.setObjectName(QStringLiteral("changedBox"));
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(tr("What is in the file now is lost if you replace it."));
    QPushButton *replace = box.addButton(tr("&Replace"), QMessageBox::DestructiveRole);
    replace->setObjectName(QStringLiteral("replaceButton"));
    QPushButton *saveAs = box.addButton(tr("Save &As..."), QMessageBox::AcceptRole);
    saveAs->setObjectName(QStringLiteral("saveAsButton"));
    box.setDefaultButton(saveAs);
    box.exec();
    if (box.clickedButton() == replace)
        return Overwriting::Replace;
    return box.clickedButton() == saveAs ? Overwriting::SaveAs : Overwriting::Cancel;
}

bool DocumentCommands::saveAs()
{
    takeTyped();
    QFileDialog dialog(&m_window, tr("Save the Show"), folder(), showFilter());
    dialog.setObjectName(QStringLiteral("saveDialog"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("show"));
    const QFileInfo present(m_document.file());
    dialog.selectFile(present.filePath().isEmpty()
                          ? m_document.displayName() + QStringLiteral(".show")
                          : present.fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    const QString file = dialog.selectedFiles().first();
    FileFault fault;
    if (!m_document.saveAs(file, &fault)) {
        tell(fault);
        return false;
    }
    m_recentFiles.add(file);
    emit said(tr("Saved %1").arg(m_document.displayName()));
    return true;
}

void DocumentCommands::import(const QString &sequence)
{
    if (!mayLeave())
        return;
    ImportDialog dialog(m_types, &m_window);
    if (!sequence.isEmpty())
        dialog.setSequenceFile(sequence);
    dialog.exec();
    if (std::unique_ptr<Show> show = dialog.takeShow()) {
        m_document.adopt(std::move(show), QFileInfo(dialog.sequenceFile()).completeBaseName());
        emit said(tr("Imported %1").arg(QFileInfo(dialog.sequenceFile()).fileName()));
    }
}

void DocumentCommands::render()
{
    takeTyped();
    if (!m_renderDialog) {
        m_renderDialog = new RenderDialog(m_types, &m_window);
        connect(m_renderDialog, &RenderDialog::showWanted, this, [this] {
            takeTyped();
            m_renderDialog->setShow(m_document.text(), m_document.file());
        });
        connect(&m_document, &ShowDocument::fileChanged, m_renderDialog, [this] {
            m_renderDialog->forgetPermissions();
            m_renderDialog->setShow(m_document.text(), m_document.file());
        });
    }
    m_renderDialog->setShow(m_document.text(), m_document.file());
    m_renderDialog->show();
    m_renderDialog->raise();
    m_renderDialog->activateWindow();
}

bool DocumentCommands::mayLeave()
{
    takeTyped();
    if (!m_document.isModified())
        return true;
    QMessageBox box(QMessageBox::Warning, tr("Save the Show"),
                    tr("Save the changes to \"%1\"?").arg(m_document.displayName()),
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, &m_window);
    box.setObjectName(QStringLiteral("saveQuestion"));
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(tr("They are lost if you do not save them."));
    box.button(QMessageBox::Discard)->setText(tr("Do&n't Save"));
    box.setDefaultButton(QMessageBox::Save);
    const int answer = box.exec();
    if (answer == QMessageBox::Save)
        return save();
    return answer == QMessageBox::Discard;
}

void DocumentCommands::takeTyped()
{
    emit typingWanted();
    m_document.flush();
}

QString DocumentCommands::folder() const
{
    const QString file = m_document.file();
    if (!file.isEmpty())
        return QFileInfo(file).absolutePath();
    const QStringList recent = m_recentFiles.files();
    return recent.isEmpty() ? QDir::homePath() : QFileInfo(recent.first()).absolutePath();
}

void DocumentCommands::tell(const FileFault &fault)
{
    QMessageBox box(QMessageBox::Critical, tr("Rehearsal"), fault.message(), QMessageBox::Ok,
                    &m_window);
    box.setObjectName(QStringLiteral("faultBox"));
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

} // namespace rehearsal
