#pragma once

#include "Show.h"

#include <QObject>

class QWidget;

namespace rehearsal {

class Autosave;
class RecentFiles;
class RenderDialog;
class ShowDocument;
struct FileFault;
struct Recovery;

/// What a user does with documents, with the questions that belong to it. Nothing that was edited
/// is lost without a question; what fails is told, and changes nothing.
class DocumentCommands final : public QObject
{
    Q_OBJECT

public:
    /// Nothing is owned; all outlive this. Dialogs belong to the window.
    DocumentCommands(ShowDocument &document, Autosave &autosave, RecentFiles &recentFiles,
                     Show::TypeSetup types, QWidget &window);

    /// What a crash left of shows that never had a file is offered first.
    void startNew();
    /// Asks for the file.
    void open();
    void open(const QString &file);
    /// A show is opened, a sequence is imported.
    void openOrImport(const QString &file);
    /// False if it was not saved.
    bool save();
    bool saveAs();
    /// Asks for the sequence where none is given.
    void import(const QString &sequence = {});
    void render();

    /// True when the document may be left: it is unmodified, was saved now, or is not wanted.
    bool mayLeave();

    /// Opens a show, or what a crash left of it if the user wants that. False and a fault if it
    /// could not be opened; then nothing of it was discarded.
    bool openAsking(const QString &file, FileFault *fault);
    /// Offers what a crash left of shows that never had a file. True if the user took one.
    bool recoverUntitled();

signals:
    /// What still stands in a field of an editor is wanted now, before the show is read.
    void typingWanted();
    /// A short word on what was done.
    void said(const QString &words);

private:
    enum class Answer { Recover, Discard, Later };

    void takeTyped();
    void openAsking(const QString &file);
    Answer ask(const Recovery &recovery, const QString &name, const QString &fault);
    bool recover(const Recovery &recovery);
    QString faultOf(const QString &file) const;
    enum class Overwriting { Replace, SaveAs, Cancel };
    Overwriting askToOverwrite();
    QString folder() const;
    void tell(const FileFault &fault);

    ShowDocument &m_document;
    Autosave &m_autosave;
    RecentFiles &m_recentFiles;
    Show::TypeSetup m_types;
    QWidget &m_window;
    RenderDialog *m_renderDialog = nullptr; ///< made when first asked for; belongs to the window
};

} // namespace rehearsal
