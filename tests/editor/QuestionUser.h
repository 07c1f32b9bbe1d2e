#pragma once

#include "TypeChange.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>

/// Whether the user wants to be asked, kept in memory while this object lives. One at a time.
class AskSettingInMemory
{
public:
    explicit AskSettingInMemory(bool on = true) : m_former(meta::askSetting())
    {
        isOn = on;
        meta::askSetting() = {[] { return isOn; }, [] { isOn = false; }};
    }
    ~AskSettingInMemory() { meta::askSetting() = m_former; }
    Q_DISABLE_COPY_MOVE(AskSettingInMemory)

    static inline bool isOn = true;

private:
    const meta::AskSetting m_former;
};

/// Somebody who answers every message box that opens while this object lives, and says no to those
/// that he leaves open.
class QuestionUser
{
public:
    enum Button { Yes, YesAndNeverAgain, No };
    using Answer = std::function<void(QMessageBox &box)>;

    explicit QuestionUser(Answer answer = pressing(Yes)) : m_answer(std::move(answer))
    {
        QObject::connect(&m_timer, &QTimer::timeout, qApp, [this] { look(); });
        m_timer.start(0);
    }

    /// How many questions opened, once the events have run.
    int questions() const
    {
        QTest::qWait(5);
        return m_questions;
    }

    /// Clicks the button that stands there, counted from the left.
    static Answer pressing(int button)
    {
        return [button](QMessageBox &box) {
            QTest::mouseClick(buttons(box).at(button), Qt::LeftButton);
        };
    }
    static Answer typing(Qt::Key key)
    {
        return [key](QMessageBox &box) { QTest::keyClick(&box, key); };
    }

    /// As they stand on the screen, from left to right.
    static QList<QAbstractButton *> buttons(const QMessageBox &box)
    {
        QList<QAbstractButton *> buttons = box.buttons();
        std::sort(buttons.begin(), buttons.end(),
                  [](const QWidget *a, const QWidget *b) { return a->x() < b->x(); });
        return buttons;
    }

private:
    void look()
    {
        const QPointer<QMessageBox> box(
            qobject_cast<QMessageBox *>(QApplication::activeModalWidget()));
        if (!box)
            return;
        ++m_questions;
        m_answer(*box);
        if (box && box->isVisible())
            QTest::keyClick(box, Qt::Key_Escape);
    }

    Answer m_answer;
    int m_questions = 0;
    QTimer m_timer;
};
