#pragma once

#include "Show.h"
#include "ShowRender.h"

#include <QDialog>
#include <QSet>

class QCheckBox;
class QDoubleSpinBox;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QStackedLayout;

namespace rehearsal {

class FileField;
class MessageLine;
class RenderJob;

/// Asks what to write of a show, and renders it while the program goes on. Made once and shown
/// again, it keeps what was chosen. Closing it cancels a render, which leaves every file as it was;
/// one that has played its last frame still puts its files in their places.
class RenderDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit RenderDialog(const Show::TypeSetup &types, QWidget *parent = nullptr);
    ~RenderDialog() override;

    /// What the next render is of; one under way goes on with the show that it began with. Another
    /// file brings other names for what is to be written, beside it.
    /// @param text of the show
    /// @param file of the show; empty: it has none yet
    void setShow(const QByteArray &text, const QString &file);

    /// Another show is to be rendered: what the user agreed to replace was of the one before.
    void forgetPermissions() { m_replaceable.clear(); }

    bool isRendering() const { return m_job != nullptr; }

public slots:
    void done(int result) override;

signals:
    /// A render was asked for: whoever has edited the show is to call setShow() now.
    void showWanted();

private:
    struct Output
    {
        QCheckBox *box;
        FileField *field;
        /// Empty where it is not asked for.
        QString file() const;
    };

    Output makeOutput(const QString &stem, const QString &name, const QString &suffix,
                      const QString &filter);
    QWidget *makeLength();
    void layOut();
    void suggestNames();

    RenderPlan plan() const;
    /// What makes no sense in the choices, and where; empty if nothing does.
    QString faultOfChoices(QWidget **place) const;
    QStringList filesToReplace() const;

    void handleRender();
    void askToReplace(const QStringList &files);
    void start();
    void tellDone(const RenderPlan &done);
    void cancel();
    void endJob();

    void refreshButtons();
    void refreshProgress();

    Show::TypeSetup m_types;
    QByteArray m_text;
    QString m_showFile;
    QSet<QString> m_replaceable; ///< the user agreed, or they were written here

    Output m_picture;
    Output m_table;
    QDoubleSpinBox *m_fps;
    QRadioButton *m_wholeRun;
    QRadioButton *m_seconds;
    QDoubleSpinBox *m_secondsCount;
    QWidget *m_choices;
    QStackedLayout *m_outcome; ///< the progress while it renders, else the message
    QProgressBar *m_progress;
    MessageLine *m_message;
    QPushButton *m_renderButton;
    QPushButton *m_cancelButton;
    QPushButton *m_closeButton;

    RenderJob *m_job = nullptr; ///< while it is rendering; a child of this
};

} // namespace rehearsal
