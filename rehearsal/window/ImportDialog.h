#pragma once

#include "SequenceImport.h"

#include <QDialog>
#include <QElapsedTimer>

class QCheckBox;
class QProgressBar;
class QPushButton;
class QStackedLayout;
class QTreeWidget;

namespace rehearsal {

class FileField;
class MessageLine;

/// Asks for a sequence, imports it while the program goes on, and tells what became of its effects.
/// Accepted once there is a show and the user wants it.
class ImportDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit ImportDialog(const Show::TypeSetup &types, QWidget *parent = nullptr);
    ~ImportDialog() override;

    void setSequenceFile(const QString &file);
    QString sequenceFile() const;

    /// The imported show, once; null before there is one, and after the dialog was left without
    /// accepting it.
    std::unique_ptr<Show> takeShow();

public slots:
    /// Cancels an import that is under way.
    void done(int result) override;

private:
    void layOut();
    void importNow();
    std::unique_ptr<Show> import(ImportSummary *summary, FileFault *fault);
    /// Serves events now and then; false when the import is not wanted any more, or `this` is gone.
    bool goOn(int percent);
    void cancel();
    void dropShow();
    void showSummary(const ImportSummary &summary);
    void refresh();

    Show::TypeSetup m_types;
    std::unique_ptr<Show> m_show;
    bool m_isImporting = false;
    bool m_isCancelled = false;
    QElapsedTimer m_sinceServed;

    QWidget *m_choices;
    FileField *m_file;
    QCheckBox *m_linkAdjacent;
    QStackedLayout *m_outcome; ///< the progress while it imports, else the message
    QProgressBar *m_progress;
    MessageLine *m_message;
    QTreeWidget *m_replaced;
    QPushButton *m_importButton;
    QPushButton *m_openButton;
    QPushButton *m_cancelButton;
};

} // namespace rehearsal
