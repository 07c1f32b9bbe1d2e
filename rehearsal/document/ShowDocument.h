#pragma once

#include "EffectWatch.h"
#include "Show.h"
#include "UndoHistory.h"

#include <QDateTime>
#include <QObject>

namespace rehearsal {

/// What a window edits: a show, the file it is kept in, and the steps that led to it.
///
/// Edits are made on the effects themselves. The document notes that something happened and looks
/// in the next turn of the event loop whether the show's definition says something else; then that
/// is an edit, and a step of the history. What playback writes in frames is none, and neither is a
/// setting of a rule that appears as 0, as which a missing one reads.
class ShowDocument final : public QObject, private EffectWatch
{
    Q_OBJECT

public:
    enum class Replacement {
        AnotherShow,    ///< opened, new, imported or recovered
        SameShowRebuilt ///< the same show at another step of its history
    };
    Q_ENUM(Replacement)

    explicit ShowDocument(Show::TypeSetup types, QObject *parent = nullptr);
    ~ShowDocument() override;

    /// Null before the first show. Another object after every replacement.
    Show *show() const { return m_show.get(); }

    // --- Another show. What fails leaves the present document alone. ---

    /// A new show to start from: unmodified, without a file.
    bool startNew(FileFault *fault);
    bool open(const QString &file, FileFault *fault);
    /// A show from text, modified from the start.
    /// @param name stands for the text in a fault
    /// @param file the document's file; empty for none. It is not read.
    bool openText(const QByteArray &text, const QString &name, const QString &file,
                  FileFault *fault);
    /// A show from elsewhere: modified, without a file.
    void adopt(std::unique_ptr<Show> show, const QString &suggestedName);

    // --- The file. ---

    /// A fault where there is no file yet.
    bool save(FileFault *fault);
    /// From now on this is the document's file, if it could be written.
    bool saveAs(const QString &file, FileFault *fault);

    /// Whether another program wrote the file since it was opened or saved here.
    bool isFileChanged() const;

    /// Absolute; empty where there is none.
    QString file() const { return m_file; }
    /// The file's name without its folder; else the suggested name, else words for "no name".
    QString displayName() const;

    /// Whether the show is not what was last saved or opened, as of the last look.
    bool isModified() const;
    /// The text of the definition, as of the last look. UTF-8; empty before the first show.
    QByteArray text() const { return m_text; }

    // --- Edits. ---

    /// Edits under the same token, other than 0, are one step while nothing comes between. Holds
    /// for the edits that are made from now on.
    void setStepToken(quint64 token) { m_stepToken = token; }
    /// Looks now, if anything was noted.
    void flush();
    /// Whatever changed since the last look is no edit: the history stays as it is, and an
    /// unmodified document unmodified. To be called after effects wrote by themselves, as they do
    /// when an editor is filled or playing starts.
    void settle();

    bool canUndo() const { return m_history.canUndo(); }
    bool canRedo() const { return m_history.canRedo(); }
    /// The show is built anew from the step's text. False where there is no such step, or, with a
    /// fault, where it could not be built: then nothing changed.
    bool undo(FileFault *fault = nullptr);
    bool redo(FileFault *fault = nullptr);

signals:
    /// The definition changed by an edit, not by undo, redo or a replacement.
    void edited();
    /// show() is still the old one, whole; null if there was none. What views hold of it they let
    /// go here: it is deleted as soon as control is back in the event loop.
    void showAboutToBeReplaced(rehearsal::ShowDocument::Replacement replacement);
    /// show() is the new one, and everything else is up to date. What is written to its effects
    /// from within is no edit, as by settle().
    void showReplaced(rehearsal::ShowDocument::Replacement replacement);
    void modifiedChanged(bool isModified);
    /// file() or displayName() changed.
    void fileChanged();
    /// canUndo() or canRedo() may have changed.
    void historyChanged();

private:
    void effectChanged(Effect &effect, const QString &key) override;
    void effectsCameOrWent() override;

    void note();
    void look();
    void setText(const QByteArray &text);
    void record(const QByteArray &text, quint64 token);

    /// @param file absolute, or empty
    void take(std::unique_ptr<Show> show, const QString &file, const QString &suggestedName,
              bool isModified);
    bool rebuild(FileFault *fault);
    void install(std::unique_ptr<Show> show);
    bool write(const QString &file, FileFault *fault);
    void reportModified();

    Show::TypeSetup m_types;
    std::unique_ptr<Show> m_show;
    QString m_file;
    QString m_suggestedName;
    QDateTime m_fileTime; ///< when the file was last written, as far as is known here

    QByteArray m_text;    ///< of the last look
    QByteArray m_meaning; ///< of that text; what counts as an edit changes it
    /// The texts of the steps as they were made. A show built anew from one may differ from it.
    UndoHistory m_history;
    QByteArray m_savedMeaning; ///< null if the document was never saved or opened
    QByteArray m_savedStep;    ///< the history's text at that time
    bool m_wasModified = false;

    bool m_isNoted = false;
    quint64 m_notedToken = 0; ///< 0 also for edits under different tokens
    quint64 m_stepToken = 0;
    quint64 m_lastToken = 0; ///< of the newest step; 0 when it is complete
    QByteArray m_beforeStep; ///< the text of the look before the newest step
};

} // namespace rehearsal
