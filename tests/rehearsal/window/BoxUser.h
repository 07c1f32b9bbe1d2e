#pragma once

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>

/// Somebody who answers the dialogs that open while this object lives, one after the other, and
/// leaves with Escape those that he was not told how to answer.
class BoxUser
{
public:
    using Answer = std::function<void(QDialog &)>;

    explicit BoxUser(QList<Answer> answers = {}) : m_answers(std::move(answers))
    {
        QObject::connect(&m_timer, &QTimer::timeout, qApp, [this] { look(); });
        m_timer.start(1);
    }

    /// The object names of the dialogs that opened.
    QStringList seen;
    /// The texts of the message boxes among them.
    QStringList texts;

    static Answer press(QMessageBox::StandardButton button)
    {
        return [button](QDialog &box) {
            QTest::mouseClick(static_cast<QMessageBox &>(box).button(button), Qt::LeftButton);
        };
    }
    static Answer click(const char *button)
    {
        return [button](QDialog &dialog) {
            auto *found = dialog.findChild<QAbstractButton *>(QString::fromLatin1(button));
            if (!found)
                qFatal("there is no %s", button);
            QTest::mouseClick(found, Qt::LeftButton);
        };
    }
    static Answer type(Qt::Key key)
    {
        return [key](QDialog &dialog) { QTest::keyClick(&dialog, key); };
    }
    /// In a file dialog.
    static Answer choose(const QString &file)
    {
        return [file](QDialog &dialog) {
            auto *name = dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            if (!name)
                qFatal("this is no file dialog");
            name->setText(file);
            QTest::keyClick(name, Qt::Key_Return);
        };
    }

private:
    void look()
    {
        const QPointer<QDialog> dialog(qobject_cast<QDialog *>(QApplication::activeModalWidget()));
        if (!dialog || dialog == m_answered)
            return;
        m_answered = dialog;
        seen.append(dialog->objectName());
        if (const auto *box = qobject_cast<QMessageBox *>(dialog.data()))
            texts.append(box->text());
        // An answer may bring up the next dialog before it returns.
        const Answer answer = m_answers.isEmpty() ? type(Qt::Key_Escape) : m_answers.takeFirst();
        QTimer::singleShot(0, dialog, [dialog, answer] { answer(*dialog); });
    }

    QList<Answer> m_answers;
    QPointer<QDialog> m_answered;
    QTimer m_timer;
};
