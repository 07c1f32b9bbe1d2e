#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

namespace rehearsal {

class ShowDocument;

/// Makes what is typed into one field in one go one step to undo: letter follows letter within a
/// second. Any other key, and any click, ends it; all that comes of that is one step, what is done
/// in the dialogs that it opens included. A key that is held down is one key.
class TypingSteps final : public QObject
{
    Q_OBJECT

public:
    /// Watches all input of the application. The document is not owned and outlives this.
    explicit TypingSteps(ShowDocument &document, QObject *parent = nullptr);

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    void noteKey(QObject *receiver, bool isTyping, bool isRepeated);
    void startStep();

    ShowDocument &m_document;
    QPointer<QObject> m_receiver; ///< of the newest key; null after a click
    bool m_isTyping = false;      ///< the newest key was typing into a field
    QElapsedTimer m_sinceKey;
    quint64 m_step = 0;
};

} // namespace rehearsal
