#include "EditorStage.h"
#include "RandomRules.h"
#include "TypeChange.h"

#include <QApplication>
#include <QClipboard>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QTimer>

#include <functional>

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int users = 10;
#else
constexpr int users = 100;
#endif
constexpr int actionsOfAUser = 200;
constexpr int mostChildren = 10;

const QStringList texts = {"0",     "1.5", "2",     "10.25", "1e3", "0.001", "1234.567",   "-4",
                           "-0.25", "+7",  "",      "abc",   "1,5", "inf",   "nan",        "1e400",
                           "5e6",   " 3 ", "2 sec", "007",   ".5",  "0x10",  "4294967.295"};

bool asksBeforeTypeChange = true;

/// A user who does anything, in an order that the seed decides.
class RandomUser
{
public:
    explicit RandomUser(quint32 seed) : m_dice(seed)
    {
        asksBeforeTypeChange = true;
        m_stage.factory.addType(QStringLiteral("Broken"),
                                [](MapModel *) -> Effect * { return nullptr; });
        const quint32 children = m_dice.roll(5);
        for (quint32 eid = 0; eid < children; ++eid)
            m_stage.add(eid)
                ->with("starttype", m_dice.roll(2))
                .with("startlinkeid", m_dice.roll(5));
        m_stage.effect.updateEffectTimes();
        m_stage.open();
    }

    /// Does something and tells what.
    QString act()
    {
        const std::function<QString()> actions[] = {
            [this] { return select({}); },
            [this] { return select({}); },
            [this] { return select(Qt::ControlModifier); },
            [this] { return select(Qt::ShiftModifier); },
            [this] { return walk(); },
            [this] { return clickNowhere(); },
            [this] { return editCell(); },
            [this] { return editCell(); },
            [this] { return editCell(); },
            [this] { return typeInPanel(); },
            [this] { return typeInPanel(); },
            [this] { return switchRadio(); },
            [this] { return switchRadio(); },
            [this] { return chooseTarget(); },
            [this] { return countCycles(); },
            [this] { return sort(); },
            [this] { return create(); },
            [this] { return pickGroup(); },
            [this] { return play(); },
            [this] { return changeCycleTime(); },
            [this] { return remove(); },
            [this] { return copy(); },
            [this] { return cut(); },
            [this] { return paste(); },
            [this] { return changeType(); },
            [this] { return changeType(); },
        };
        return m_dice.pick(std::vector(std::begin(actions), std::end(actions)))();
    }

    /// Empty when all is well.
    QString complaint()
    {
        const QString insanity = m_stage.insanity();
        if (!insanity.isEmpty())
            return insanity;
        bool isLoop = false;
        const QString stale = m_stage.staleTimes(&isLoop);
        if (isLoop)
            m_awaitsPass = true; // a fill may break the loop, and starts no pass for it
        else if (stale.isEmpty())
            m_awaitsPass = false;
        return m_awaitsPass ? QString() : stale;
    }

private:
    int rows() const { return m_stage.table().rowCount(); }
    int anyRow() { return static_cast<int>(m_dice.roll(static_cast<quint32>(rows()))); }

    QString select(Qt::KeyboardModifiers modifiers)
    {
        static const QList<int> columns = {0, 1, 3, 4, 5, 6, 7};
        if (rows() == 0)
            return QStringLiteral("nothing to select");
        const int row = anyRow();
        const int column = m_dice.pick(columns);
        m_stage.click(row, column, modifiers);
        return QStringLiteral("click %1, %2, modifiers %3")
            .arg(row)
            .arg(column)
            .arg(int(modifiers));
    }

    QString walk()
    {
        static const QList<Qt::Key> keys = {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End,
                                            Qt::Key_PageDown};
        const Qt::Key key = m_dice.pick(keys);
        QTest::keyClick(&m_stage.table(), key);
        return QStringLiteral("key %1 in the table").arg(int(key));
    }

    QString clickNowhere()
    {
        QTest::mouseClick(m_stage.table().viewport(), Qt::LeftButton, {},
                          {5, m_stage.table().viewport()->height() - 5});
        return QStringLiteral("click below the rows");
    }

    QString editCell()
    {
        static const QList<int> columns = {0, 3, 4, 5, 6, 7};
        if (rows() == 0)
            return QStringLiteral("nothing to edit");
        const int row = anyRow();
        const int column = m_dice.pick(columns);
        const QString &text = m_dice.pick(texts);
        m_stage.typeIntoCell(row, column, text);
        return QStringLiteral("type \"%1\" into cell %2, %3").arg(text).arg(row).arg(column);
    }

    QString typeInPanel()
    {
        static const QList<const char *> names = {"m_startFixedLineEdit",
                                                  "m_startLinkOffsetLineEdit", "m_endFixedLineEdit",
                                                  "m_endLinkOffsetLineEdit"};
        auto *field = child<QLineEdit>(m_stage.form(), m_dice.pick(names));
        const QString &text = m_dice.pick(texts);
        EditorStage::typeInto(*field, text);
        return QStringLiteral("type \"%1\" into %2").arg(text, field->objectName());
    }

    QString switchRadio()
    {
        const QList<QRadioButton *> buttons = m_stage.form().findChildren<QRadioButton *>();
        QRadioButton *button = m_dice.pick(buttons);
        QTest::mouseClick(button, Qt::LeftButton, {}, {8, button->height() / 2});
        return QStringLiteral("click ") + button->objectName();
    }

    QString chooseTarget()
    {
        static const QList<const char *> names = {"m_startLinkEffectComboBox",
                                                  "m_endLinkEffectComboBox"};
        auto *chooser = child<QComboBox>(m_stage.form(), m_dice.pick(names));
        const Qt::Key key = m_dice.oneIn(2) ? Qt::Key_Down : Qt::Key_Up;
        QTest::keyClick(chooser, key);
        return QStringLiteral("key %1 in %2").arg(int(key)).arg(chooser->objectName());
    }

    QString countCycles()
    {
        static const QList<QString> counts = {"0", "1", "3", "12", "1000", "2000", ""};
        QSpinBox *box = m_stage.form().m_endCyclesSpinBox;
        const QString &count = m_dice.pick(counts);
        box->selectAll();
        QTest::keyClicks(box, count);
        QTest::keyClick(box, m_dice.oneIn(2) ? Qt::Key_Return : Qt::Key_Tab);
        return QStringLiteral("type \"%1\" cycles").arg(count);
    }

    QString sort()
    {
        const int column = static_cast<int>(m_dice.roll(8));
        m_stage.clickHeader(column);
        return QStringLiteral("click header %1").arg(column);
    }

    QString anyGroup()
    {
        static const QList<QString> groups = {"Roof", "Windows", ""};
        return m_dice.pick(groups);
    }

    QString create()
    {
        static const QList<Qt::Key> initials = {Qt::Key_B, Qt::Key_C, Qt::Key_S};
        if (rows() >= mostChildren)
            return QStringLiteral("enough children");
        QComboBox *types = m_stage.form().m_effectComboBox;
        QTest::keyClick(types, m_dice.pick(initials));
        const auto press = [this] {
            QTest::mouseClick(m_stage.form().m_newEffectButton, Qt::LeftButton);
        };
        const QString type = types->currentText();
        if (type == u"Broken") {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Out of memory")));
            press();
            return QStringLiteral("no new effect");
        }
        const QString group = anyGroup();
        EditorStage::pickingGroup(group, press);
        return QStringLiteral("new %1, group \"%2\"").arg(type, group);
    }

    QString pickGroup()
    {
        if (rows() == 0)
            return QStringLiteral("nothing to group");
        const int row = anyRow();
        const QString group = anyGroup();
        EditorStage::pickingGroup(group, [&] { m_stage.click(row, 2); });
        return QStringLiteral("group \"%1\" for row %2").arg(group).arg(row);
    }

    QString play()
    {
        m_now += static_cast<int>(m_dice.roll(700));
        m_stage.frameAt(m_now);
        return QStringLiteral("frame at %1").arg(m_now);
    }

    QString changeCycleTime()
    {
        const EffectList children = m_stage.effect.getEffects();
        if (children.isEmpty())
            return QStringLiteral("no cycle time");
        const int index = static_cast<int>(m_dice.roll(static_cast<quint32>(children.count())));
        const quint32 ms = m_dice.roll(5000);
        static_cast<StubEffect *>(children.at(index))->setCycleTime(ms);
        return QStringLiteral("cycle time %1 for child %2").arg(ms).arg(index);
    }

    // Else there would be few children most of the time.
    bool sparesTheFew() { return rows() < 7 && !m_dice.oneIn(8); }

    QString remove()
    {
        if (sparesTheFew())
            return QStringLiteral("delete nothing");
        QTest::mouseClick(m_stage.form().m_deleteEffectButton, Qt::LeftButton);
        m_awaitsPass = true; // what was linked to the child keeps its times
        return QStringLiteral("delete");
    }

    void chooseFromMenu(int entry) { m_stage.form().m_popupMenu.actions().at(entry)->trigger(); }

    QString copy()
    {
        chooseFromMenu(1);
        return QStringLiteral("copy");
    }

    QString cut()
    {
        if (sparesTheFew())
            return QStringLiteral("cut nothing");
        chooseFromMenu(0);
        m_awaitsPass = true;
        return QStringLiteral("cut");
    }

    // Every other text was damaged on its way.
    QString paste()
    {
        if (rows() >= mostChildren)
            return QStringLiteral("enough children");
        QClipboard *clipboard = QApplication::clipboard();
        QString text = clipboard->text();
        if (m_dice.oneIn(2) && !text.isEmpty()) {
            const auto at = static_cast<qsizetype>(m_dice.roll(static_cast<quint32>(text.size())));
            if (m_dice.oneIn(2))
                text.truncate(at);
            else
                text.insert(at, m_dice.oneIn(2) ? QStringLiteral("<EFFECT-ENTRY>")
                                                : QStringLiteral("</"));
            clipboard->setText(text);
        }
        const int before = rows();
        chooseFromMenu(2);
        return QStringLiteral("paste %1 children").arg(rows() - before);
    }

    // A type called "Broken" is offered, and the host fails to make it.
    QString changeType()
    {
        if (rows() == 0)
            return QStringLiteral("no type to change");
        const int row = anyRow();
        const QString eid = m_stage.table().text(row, 8);
        m_stage.click(row, 1);
        auto *chooser = qobject_cast<QComboBox *>(
            m_stage.table().indexWidget(m_stage.table().model()->index(row, 1)));
        if (!chooser)
            return QStringLiteral("the chooser of row %1 stays closed").arg(row);
        const int answer = static_cast<int>(m_dice.roll(3));
        QTimer answering;
        answering.setSingleShot(true);
        QObject::connect(&answering, &QTimer::timeout, [answer] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
                box->buttons().at(answer)->click();
        });
        answering.start();
        QTest::keyClick(chooser, m_dice.oneIn(2) ? Qt::Key_Down : Qt::Key_Up);
        if (!m_stage.effect.getEffect(eid.toULong())) {
            // The child is lost, its row stays and the effect is stopped: the host tidies up.
            m_stage.effect.removeFromTable(eid.toULong());
            m_stage.effect.setState(true);
            m_awaitsPass = true;
        }
        return QStringLiteral("another type for row %1, answer %2").arg(row).arg(answer);
    }

    Dice m_dice;
    EditorStage m_stage;
    int m_now = 0;
    bool m_awaitsPass = false;
};

} // namespace

class tst_RandomUser : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void staysSaneWhateverTheUserDoes_data();
    void staysSaneWhateverTheUserDoes();
};

void tst_RandomUser::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    meta::askSetting() = {[] { return asksBeforeTypeChange; },
                          [] { asksBeforeTypeChange = false; }};
}

void tst_RandomUser::staysSaneWhateverTheUserDoes_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= users; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

// The actions up to the first complaint are the shortest run of this user that fails. With
// META_USER_TRACE set they are printed as they are done, for the case that one of them crashes.
void tst_RandomUser::staysSaneWhateverTheUserDoes()
{
    QFETCH(const quint32, seed);
    RandomUser user(seed);
    const bool isTraced = qEnvironmentVariableIsSet("META_USER_TRACE");
    QStringList done = {QStringLiteral("open")};
    QString complaint = user.complaint();
    for (int i = 0; i < actionsOfAUser && complaint.isEmpty(); ++i) {
        done.append(user.act());
        if (isTraced)
            fprintf(stderr, "%s\n", qPrintable(done.last()));
        complaint = user.complaint();
    }
    if (!complaint.isEmpty() && !isTraced)
        fprintf(stderr, "%s\n", qPrintable(done.join(u'\n')));
    QVERIFY2(complaint.isEmpty(), qPrintable(complaint));
}

QTEST_MAIN(tst_RandomUser)
#include "tst_RandomUser.moc"
