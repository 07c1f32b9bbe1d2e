#pragma once

#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace rehearsal {

/// A few lines in a dialog that tell how something went. They can be selected and copied.
class MessageLine final : public QWidget
{
    Q_OBJECT

public:
    explicit MessageLine(QWidget *parent = nullptr);

    void showFault(const QString &text);
    void showResult(const QString &text);
    void clear();

    QString text() const;
    bool isFault() const { return m_isFault; }

private:
    void put(const QString &text, bool isFault);

    QLabel *m_icon;
    QPlainTextEdit *m_text;
    bool m_isFault = false;
};

} // namespace rehearsal
