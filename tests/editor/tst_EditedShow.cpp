#include "EditorStage.h"
#include "EffectHost.h"
#include "ParameterEditor.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QLoggingCategory>
#include <QTemporaryDir>

using rehearsal::FileFault;
using rehearsal::Show;

namespace {

const QString example = QStringLiteral(META_SOURCE_DIR "/examples/facade.show");

using Contents = QMap<QString, QString>;

void addContents(Contents &contents, const QString &path, const Effect &effect)
{
    for (const auto &property : EffectHost::properties(effect)) {
        if (property.text != u"0")
            contents.insert(path + u' ' + property.key, property.text);
    }
    const auto *parent = qobject_cast<const MetaEffect *>(&effect);
    const EffectList children = parent ? parent->getEffects() : EffectList();
    for (const Effect *child : children)
        addContents(contents, path + u'/' + child->getPropertyString(QStringLiteral("eid")),
                    *child);
}

/// Every property of every effect of the show, by "/eid/eid key". What is not there and what is "0"
/// are the same.
Contents contents(const Show &show)
{
    Contents found;
    for (const Effect *effect : show.effects())
        addContents(found, {}, *effect);
    return found;
}

std::unique_ptr<Show> read(const QString &file)
{
    FileFault fault;
    std::unique_ptr<Show> show = rehearsal::readShow(file, allTypes(), &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    return show;
}

/// "key: before -> after", where "0" also stands for what is not there.
QStringList changes(const Contents &before, const Contents &after)
{
    QSet<QString> keys(before.keyBegin(), before.keyEnd());
    keys.unite(QSet<QString>(after.keyBegin(), after.keyEnd()));
    QStringList lines;
    for (const QString &key : std::as_const(keys)) {
        const QString old = before.value(key, QStringLiteral("0"));
        const QString present = after.value(key, QStringLiteral("0"));
        if (old != present)
            lines.append(key + QStringLiteral(": ") + old + QStringLiteral(" -> ") + present);
    }
    lines.sort();
    return lines;
}

/// The editor of the show's first effect, and a user at it.
class ShowEditing
{
public:
    explicit ShowEditing(Show &show)
        : form(*qobject_cast<MetaWidget *>(show.effects().first()->internalGetEffectWidget())),
          table(*form.m_effectTable)
    {
        form.resize(1280, 800);
        form.show();
        if (!QTest::qWaitForWindowActive(&form))
            qFatal("the editor's window did not become active");
    }

    int rowOf(const QString &name) const
    {
        for (int row = 0; row < table.rowCount(); ++row) {
            if (table.text(row, 0) == name)
                return row;
        }
        qFatal("there is no row of %s", qPrintable(name));
        return -1;
    }

    void click(const QString &name, int column)
    {
        const QModelIndex cell = table.model()->index(rowOf(name), column);
        table.scrollTo(cell);
        QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, table.visualRect(cell).center());
    }

    void typeIntoCell(const QString &name, int column, const QString &text)
    {
        const QPersistentModelIndex cell = table.model()->index(rowOf(name), column);
        click(name, column);
        if (!table.indexWidget(cell))
            QTest::keyClick(&table, Qt::Key_F2);
        QWidget *line = table.indexWidget(cell);
        QTest::keyClick(line, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(line, text);
        QTest::keyClick(line, Qt::Key_Return);
        QCoreApplication::processEvents();
    }

    MetaWidget &form;
    meta::TableWidget &table;
};

} // namespace

/// A show is read, edited by nothing but mouse and keys, saved and read again.
class tst_EditedShow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void lookingChangesNothingThatCounts();
    void savedFileShowsExactlyTheEdits();
};

void tst_EditedShow::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    rehearsal::ParameterEditor::registerAsEditor();
}

// The count of cycles shows 1 where none is stored, and what is shown is stored.
void tst_EditedShow::lookingChangesNothingThatCounts()
{
    const auto show = read(example);
    const auto before = contents(*show);
    ShowEditing user(*show);
    for (int row = 0; row < user.table.rowCount(); ++row)
        user.click(user.table.text(row, 0), 0);
    QStringList changed = changes(before, contents(*show));
    changed.removeIf(
        [](const QString &line) { return line.endsWith(QStringLiteral("endcyclecount: 0 -> 1")); });
    QCOMPARE(changed, QStringList());
}

void tst_EditedShow::savedFileShowsExactlyTheEdits()
{
    const auto show = read(example);
    const auto before = contents(*show);
    {
        ShowEditing user(*show);
        user.typeIntoCell("Clock", 0, "Tower clock");
        EditorStage::typeInto(*user.form.m_startFixedLineEdit, "2.25");
        user.typeIntoCell("Stone by night", 6, "0.75");
        user.typeIntoCell("Marquee", 5, "36.5");
        QTest::keyClick(user.form.m_effectComboBox, Qt::Key_T); // Twinkle
        EditorStage::pickingGroup(
            "Outline", [&] { QTest::mouseClick(user.form.m_newEffectButton, Qt::LeftButton); });
        EditorStage::typeInto(*user.form.m_startFixedLineEdit, "50");
    }
    const QTemporaryDir folder;
    const QString saved = folder.filePath(QStringLiteral("edited.show"));
    FileFault fault;
    QVERIFY2(rehearsal::saveShow(*show, saved, &fault), qPrintable(fault.message()));

    // The edits, and what the rules make of them: Marquee (16) lasts 1.5 s longer, and so does
    // whatever is linked to its end; the clock (3) starts 0.75 s later and counts its cycles.
    const QStringList expected = {
        " end: 54000 -> 55500",
        "/10 end: 34600 -> 36100",
        "/11 end: 34600 -> 36100",
        "/12 end: 34600 -> 36100",
        "/16 end: 35000 -> 36500",
        "/16 endfixedtime: 15000 -> 16500",
        "/19 begin: 34000 -> 35500",
        "/19 end: 41500 -> 43000",
        "/2 end: 42100 -> 43600",
        "/2 fadein: 0 -> 750",
        "/20 begin: 41500 -> 43000",
        "/20 end: 42500 -> 44000",
        "/21 begin: 42500 -> 44000",
        "/21 end: 54000 -> 55500",
        "/22 begin: 0 -> 50000",
        "/22 cycletime: 0 -> 1000",
        "/22 density: 0 -> 0.3",
        "/22 eid: 0 -> 22",
        "/22 end: 0 -> 51000",
        "/22 endcyclecount: 0 -> 1",
        "/22 endtype: 0 -> 2",
        "/22 gid: 0 -> 11",
        "/22 level: 0 -> 1",
        "/22 name: 0 -> Effect 22",
        "/22 seed: 0 -> 1",
        "/22 startfixedtime: 0 -> 50000",
        "/22 type: 0 -> Twinkle",
        "/3 begin: 1500 -> 2250",
        "/3 end: 41500 -> 42250",
        "/3 name: Clock -> Tower clock",
        "/3 startfixedtime: 1500 -> 2250",
        "/5 end: 41500 -> 43000",
        "/7 end: 41500 -> 43000",
        "/8 end: 41500 -> 43000",
    };
    QCOMPARE(changes(before, contents(*read(saved))).join(u'\n'), expected.join(u'\n'));
}

QTEST_MAIN(tst_EditedShow)
#include "tst_EditedShow.moc"
