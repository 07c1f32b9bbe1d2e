#pragma once

#include "FileFault.h"

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <map>
#include <memory>
#include <optional>

class QLockFile;

namespace rehearsal {

class ShowDocument;

/// What a program that died left of a modified show.
struct Recovery
{
    QString autosaveFile;
    QString showFile; ///< absolute; empty for a show that had no file
    QDateTime written;
    bool isOlder = false; ///< than the show's file as it is now
};

/// Keeps the unsaved state of a document on disk: what is older than the interval is there.
///
/// It is written to FILE.autosave beside the document's file; to the data folder where the document
/// has no file, or once nothing can be written beside it. The file goes when the document is saved,
/// found unmodified, replaced by another show or closed. A lock beside it tells other programs that
/// its owner lives, and is void as soon as the owner is dead. What a dead program left and nobody
/// recovered or discarded stays: as FILE.autosave.1, .2 ... once the document needs the name
/// itself.
class Autosave final : public QObject
{
    Q_OBJECT

public:
    /// @param document outlives this
    /// @param dataFolder is made when it is needed
    explicit Autosave(ShowDocument &document,
                      std::chrono::milliseconds interval = std::chrono::seconds(30),
                      const QString &dataFolder = standardDataFolder(), QObject *parent = nullptr);
    /// Leaves what is autosaved, as if the program died; see close().
    ~Autosave() override;

    static QString standardDataFolder();

    /// Writes now what is not autosaved yet.
    void saveNow();

    /// The document was closed in order: what is autosaved goes, nothing more is written until
    /// another show is opened.
    void close();

    // --- What programs that died have left. ---

    /// The newest that was left of this file, is readable, and is not what the file has.
    std::optional<Recovery> recoverable(const QString &file) const;
    /// Those of shows without a file, the newest first.
    QList<Recovery> untitledRecoverable() const;

    /// Opens it in the document, modified. The autosave stays until that document is saved or
    /// closed. False and a fault when it cannot be opened, or a living program has it by now: then
    /// the document is left alone.
    bool recover(const Recovery &recovery, FileFault *fault);
    /// Deletes it, unless a living program or the document has it for its own autosave by now, or
    /// something else has been written there.
    void discard(const Recovery &recovery);

signals:
    /// The autosave could not be written. Told once, until it works again.
    void failed(const rehearsal::FileFault &fault);
    /// After failed() or unavailable(): it works again, or there is another document.
    void working();
    /// The document has no autosave: another program has it, or there is no place for it. Told once
    /// a document, from the event loop.
    void unavailable(const QString &reason);

private:
    struct Recovered
    {
        QString autosaveFile;
        QByteArray text;
        std::unique_ptr<QLockFile> lock; ///< null where it cannot be written
    };

    void attach();
    void takeRecovered();
    void holdFirstPlace();
    void release();
    void removeOwn();
    bool write(const QByteArray &text, FileFault *fault) const;
    bool writeElsewhere(const QByteArray &text);
    void tellWorking();
    bool claim();
    std::unique_ptr<QLockFile> lockPlace(const QString &place, bool *isTaken) const;
    void tellUnavailable(const QString &reason);
    QStringList placesOf(const QString &file) const;
    QString placeInDataFolder(const QString &file) const;
    void removeCopies(const QString &autosaveFile, const QByteArray &text) const;
    /// Whether it is what the dead left at the document's own place, where nothing is written yet.
    bool isOwnRemains(const QString &autosaveFile) const;

    ShowDocument &m_document;
    QString m_dataFolder;
    QTimer m_timer;

    QString m_showFile;                ///< the document's file that the places are for
    QStringList m_places;              ///< where the autosave may be, the best first
    QString m_autosaveFile;            ///< empty while there is no place
    std::unique_ptr<QLockFile> m_lock; ///< null while there is no place
    std::map<QString, std::unique_ptr<QLockFile>> m_otherLocks; ///< of places that are not in use
    QByteArray m_writtenText; ///< null while no autosave of this document is on disk
    Recovered m_recovered;    ///< while it is being opened
    bool m_isUnavailable = false;
    bool m_hasFailed = false;
    bool m_hasTold = false; ///< that it does not work
};

} // namespace rehearsal
