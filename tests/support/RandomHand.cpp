#include "RandomHand.h"

#include "EffectColumns.h"
#include "EffectHost.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <functional>

using namespace meta;

namespace {

const QStringList texts = {"0",     "1.5", "2",     "10.25", "1e3", "0.001", "1234.567",   "-4",
                           "-0.25", "+7",  "",      "abc",   "1,5", "inf",   "nan",        "1e400",
                           "5e6",   " 3 ", "2 sec", "007",   ".5",  "0x10",  "4294967.295"};

/// Entries of the form's menu.
enum Entry { CutEntry, CopyEntry, PasteEntry };

void chooseFromMenu(const FormUser &user, Entry entry)
{
    user.form().m_popupMenu.actions().at(entry)->trigger();
}

} // namespace

QString RandomHand::act(const FormUser &user)
{
    m_leavesTimes = false;
    const std::function<QString()> actions[] = {
        [&] { return select(user, {}); },
        [&] { return select(user, {}); },
        [&] { return select(user, Qt::ControlModifier); },
        [&] { return select(user, Qt::ShiftModifier); },
        [&] { return walk(user); },
        [&] { return clickNowhere(user); },
        [&] { return editCell(user); },
        [&] { return editCell(user); },
        [&] { return editCell(user); },
        [&] { return typeInPanel(user); },
        [&] { return typeInPanel(user); },
        [&] { return switchRadio(user); },
        [&] { return switchRadio(user); },
        [&] { return chooseTarget(user); },
        [&] { return countCycles(user); },
        [&] { return sort(user); },
        [&] { return create(user); },
        [&] { return pickGroup(user); },
        [&] { return remove(user); },
        [&] { return copy(user); },
        [&] { return cut(user); },
        [&] { return paste(user); },
        [&] { return changeType(user); },
        [&] { return changeType(user); },
    };
    return m_dice.pick(std::vector(std::begin(actions), std::end(actions)))();
}

int RandomHand::anyRow(const FormUser &user)
{
    return static_cast<int>(m_dice.roll(static_cast<quint32>(user.table().rowCount())));
}

// Else there would be few children most of the time.
bool RandomHand::sparesTheFew(const FormUser &user)
{
    return user.table().rowCount() < 7 && !m_dice.oneIn(8);
}

QString RandomHand::select(const FormUser &user, Qt::KeyboardModifiers modifiers)
{
    static const QList<int> columns = {0, 1, 3, 4, 5, 6, 7};
    if (user.table().rowCount() == 0)
        return QStringLiteral("nothing to select");
    const int row = anyRow(user);
    const int column = m_dice.pick(columns);
    user.click(row, column, modifiers);
    return QStringLiteral("click %1, %2, modifiers %3").arg(row).arg(column).arg(int(modifiers));
}

QString RandomHand::walk(const FormUser &user)
{
    static const QList<Qt::Key> keys = {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End,
                                        Qt::Key_PageDown};
    const Qt::Key key = m_dice.pick(keys);
    QTest::keyClick(&user.table(), key);
    return QStringLiteral("key %1 in the table").arg(int(key));
}

QString RandomHand::clickNowhere(const FormUser &user)
{
    QWidget *viewport = user.table().viewport();
    QTest::mouseClick(viewport, Qt::LeftButton, {}, {5, viewport->height() - 5});
    return QStringLiteral("click below the rows");
}

QString RandomHand::editCell(const FormUser &user)
{
    static const QList<int> columns = {0, 3, 4, 5, 6, 7};
    if (user.table().rowCount() == 0)
        return QStringLiteral("nothing to edit");
    const int row = anyRow(user);
    const int column = m_dice.pick(columns);
    const QString &text = m_dice.pick(texts);
    user.typeIntoCell(row, column, text);
    return QStringLiteral("type \"%1\" into cell %2, %3").arg(text).arg(row).arg(column);
}

QString RandomHand::typeInPanel(const FormUser &user)
{
    const MetaWidget &form = user.form();
    QLineEdit *field = m_dice.pick(QList{form.m_startFixedLineEdit, form.m_startLinkOffsetLineEdit,
                                         form.m_endFixedLineEdit, form.m_endLinkOffsetLineEdit});
    const QString &text = m_dice.pick(texts);
    FormUser::typeInto(*field, text);
    return QStringLiteral("type \"%1\" into %2").arg(text, field->objectName());
}

QString RandomHand::switchRadio(const FormUser &user)
{
    const MetaWidget &form = user.form();
    QRadioButton *button = m_dice.pick(QList{
        form.m_startFixedRadioButton, form.m_startLinkedRadioButton,
        form.m_startLinkStartRadioButton, form.m_startLinkEndRadioButton,
        form.m_endFixedRadioButton, form.m_endLinkedRadioButton, form.m_endLinkStartRadioButton,
        form.m_endLinkEndRadioButton, form.m_endCyclesRadioButton});
    QTest::mouseClick(button, Qt::LeftButton, {}, {8, button->height() / 2});
    return QStringLiteral("click ") + button->objectName();
}

QString RandomHand::chooseTarget(const FormUser &user)
{
    const MetaWidget &form = user.form();
    QComboBox *chooser =
        m_dice.pick(QList{form.m_startLinkEffectComboBox, form.m_endLinkEffectComboBox});
    const Qt::Key key = m_dice.oneIn(2) ? Qt::Key_Down : Qt::Key_Up;
    QTest::keyClick(chooser, key);
    return QStringLiteral("key %1 in %2").arg(int(key)).arg(chooser->objectName());
}

QString RandomHand::countCycles(const FormUser &user)
{
    static const QList<QString> counts = {"0", "1", "3", "12", "1000", "2000", ""};
    QSpinBox *box = user.form().m_endCyclesSpinBox;
    const QString &count = m_dice.pick(counts);
    box->selectAll();
    QTest::keyClicks(box, count);
    QTest::keyClick(box, m_dice.oneIn(2) ? Qt::Key_Return : Qt::Key_Tab);
    return QStringLiteral("type \"%1\" cycles").arg(count);
}

QString RandomHand::sort(const FormUser &user)
{
    const int column = static_cast<int>(m_dice.roll(8));
    user.clickHeader(column);
    return QStringLiteral("click header %1").arg(column);
}

// A type called "Broken" is one that the host fails to make.
QString RandomHand::create(const FormUser &user)
{
    QComboBox *types = user.form().m_effectComboBox;
    if (user.table().rowCount() >= m_habits.mostChildren)
        return QStringLiteral("enough children");
    QTest::keyClick(types, Qt::Key_Home);
    for (quint32 steps = m_dice.roll(static_cast<quint32>(types->count())); steps > 0; --steps)
        QTest::keyClick(types, Qt::Key_Down);
    const QString type = types->currentText();
    const auto press = [&user] {
        QTest::mouseClick(user.form().m_newEffectButton, Qt::LeftButton);
    };
    if (type == u"Broken") {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Out of memory")));
        press();
        return QStringLiteral("no new effect");
    }
    const QString group = anyGroup();
    FormUser::answerPicker(group);
    press();
    return QStringLiteral("new %1, group \"%2\"").arg(type, group);
}

QString RandomHand::pickGroup(const FormUser &user)
{
    if (user.table().rowCount() == 0)
        return QStringLiteral("nothing to group");
    const int row = anyRow(user);
    const QString group = anyGroup();
    FormUser::answerPicker(group);
    user.click(row, GroupColumn);
    return QStringLiteral("group \"%1\" for row %2").arg(group).arg(row);
}

QString RandomHand::remove(const FormUser &user)
{
    if (sparesTheFew(user))
        return QStringLiteral("delete nothing");
    m_leavesTimes = true;
    QTest::mouseClick(user.form().m_deleteEffectButton, Qt::LeftButton);
    return QStringLiteral("delete");
}

QString RandomHand::copy(const FormUser &user)
{
    chooseFromMenu(user, CopyEntry);
    return QStringLiteral("copy");
}

QString RandomHand::cut(const FormUser &user)
{
    if (sparesTheFew(user))
        return QStringLiteral("cut nothing");
    m_leavesTimes = true;
    chooseFromMenu(user, CutEntry);
    return QStringLiteral("cut");
}

// Every other text was damaged on its way.
QString RandomHand::paste(const FormUser &user)
{
    QClipboard *clipboard = QApplication::clipboard();
    QString text = clipboard->text();
    const int before = user.table().rowCount();
    if (before >= m_habits.mostChildren || text.size() > m_habits.longestPaste)
        return QStringLiteral("enough children");
    if (m_dice.oneIn(2) && !text.isEmpty()) {
        const auto at = static_cast<qsizetype>(m_dice.roll(static_cast<quint32>(text.size())));
        if (m_dice.oneIn(2))
            text.truncate(at);
        else
            text.insert(at,
                        m_dice.oneIn(2) ? QStringLiteral("<EFFECT-ENTRY>") : QStringLiteral("</"));
        clipboard->setText(text);
    }
    chooseFromMenu(user, PasteEntry);
    return QStringLiteral("paste %1 children").arg(user.table().rowCount() - before);
}

QString RandomHand::changeType(const FormUser &user)
{
    TableWidget &table = user.table();
    if (table.rowCount() == 0)
        return QStringLiteral("no type to change");
    const int row = anyRow(user);
    const quint32 eid = table.text(row, EidColumn).toUInt();
    user.click(row, TypeColumn);
    auto *chooser = qobject_cast<QComboBox *>(table.indexWidget(table.model()->index(row, 1)));
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
    m_leavesTimes = EffectHost::level(user.effect()) > 0;
    if (!user.effect().getEffect(eid)) {
        // The child is lost, its row stays and the effect is stopped: the host tidies up.
        user.effect().removeFromTable(eid);
        user.effect().setState(true);
        m_leavesTimes = true;
    }
    return QStringLiteral("another type for row %1, answer %2").arg(row).arg(answer);
}
