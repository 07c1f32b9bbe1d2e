#include "ProgramRun.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>

namespace {

const QString page = QStringLiteral(META_SOURCE_DIR "/share/rehearsal.1");

/// Name and description, by name.
using Descriptions = QMap<QString, QString>;

QString capitalised(QString text)
{
    text[0] = text[0].toUpper();
    return text;
}

/// The lines of the help below a heading: "  name  description".
Descriptions describedIn(const QString &help, const QString &heading)
{
    Descriptions all;
    const qsizetype start = help.indexOf("\n" + heading + ":\n");
    if (start < 0)
        return all;
    const QString part = help.mid(start + 1).section("\n\n", 0, 0);
    static const QRegularExpression line(QStringLiteral("\n  (\\S.*?) {2,}(\\S.*)"));
    for (const QRegularExpressionMatch &match : line.globalMatch(part))
        all.insert(match.captured(1), capitalised(match.captured(2)));
    return all;
}

/// The items of a part of the page: the macro's words, and the text below it in one line.
Descriptions itemsOf(const QString &part)
{
    Descriptions all;
    QString item;
    for (const QString &line : part.split('\n')) {
        if (line.startsWith(".It "))
            all.insert(item = line.mid(4), QString());
        else if (!line.startsWith('.') && !item.isEmpty())
            all[item] += (all[item].isEmpty() ? "" : " ") + line;
    }
    return all;
}

/// "-o, --output OUT" as the page writes it: "Fl o , -output Ar OUT".
QString asItem(const QString &option)
{
    QStringList words;
    for (QString word : option.split(' ')) {
        const bool isFirstOfTwo = word.endsWith(',');
        if (isFirstOfTwo)
            word.chop(1);
        if (!word.startsWith('-'))
            words += {"Ar", word};
        else if (words.isEmpty())
            words += {"Fl", word.mid(1)};
        else
            words += word.mid(1);
        if (isFirstOfTwo)
            words += ",";
    }
    return words.join(' ');
}

} // namespace

/// The page and what the program says of itself are the same.
class TestManPage : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyCommandIsDescribedAndNoOther();
    void everyOptionIsDescribedAndNoOther_data();
    void everyOptionIsDescribedAndNoOther();
    void everyExitStatusIsListed();
    void itsMacrosAreSound_data();
    void itsMacrosAreSound();

private:
    QString help(const QString &command = {}) const
    {
        QStringList arguments{"--help"};
        if (!command.isEmpty())
            arguments.prepend(command);
        return QString::fromUtf8(rehearsal(arguments).out);
    }
    /// The page's part that describes a command; the commands are the first items of their part.
    QString partOf(const QString &command) const;

    QString m_page;
    QString m_commands; ///< the page's part of them
};

void TestManPage::initTestCase()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QFile file(page);
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_page = QString::fromUtf8(file.readAll());
    m_commands = m_page.section("\n.Ss Commands\n", 1).section("\n.Ss ", 0, 0);
    QVERIFY(!m_commands.isEmpty());
}

QString TestManPage::partOf(const QString &command) const
{
    if (command.isEmpty())
        return m_page.section("\n.Ss General options\n", 1).section("\n.Sh ", 0, 0);
    const QString part = m_commands.section("\n.It Cm " + command + " ", 1);
    return part.section('\n', 1).section("\n.It Cm ", 0, 0);
}

void TestManPage::everyCommandIsDescribedAndNoOther()
{
    const Descriptions commands = describedIn(help(), "Commands");
    QVERIFY(commands.size() >= 4);
    for (const auto &[command, summary] : commands.asKeyValueRange()) {
        const QString part = partOf(command);
        QVERIFY2(part.startsWith(summary), qPrintable(command + ": " + part));
        QVERIFY2(m_page.contains("\n.Nm\n.Cm " + command + "\n"), qPrintable(command));
    }
    QCOMPARE(m_commands.count("\n.It Cm "), commands.size());
}

void TestManPage::everyOptionIsDescribedAndNoOther_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("none") << QString();
    const QStringList commands = describedIn(help(), "Commands").keys();
    for (const QString &command : commands)
        QTest::newRow(qPrintable(command)) << command;
}

void TestManPage::everyOptionIsDescribedAndNoOther()
{
    QFETCH(QString, command);
    Descriptions expected = describedIn(help(command), "Options");
    QVERIFY(!expected.isEmpty());
    if (!command.isEmpty()) {
        const QStringList general = describedIn(help(), "Options").keys();
        for (const QString &option : general)
            QCOMPARE(expected.remove(option), 1);
    }
    const Descriptions items = itemsOf(partOf(command));
    for (const auto &[option, description] : expected.asKeyValueRange()) {
        const QString item = asItem(option);
        QVERIFY2(items.contains(item), qPrintable(item));
        const QString text = items[item];
        QVERIFY2(text.startsWith(description.section(';', 0, 0)), qPrintable(text));
        QVERIFY2(text.contains(description.section("; ", 1)), qPrintable(text));
    }
    QCOMPARE(items.size(), expected.size());
}

void TestManPage::everyExitStatusIsListed()
{
    const QString part = m_page.section("\n.Sh EXIT STATUS\n", 1).section("\n.Sh ", 0, 0);
    QCOMPARE(itemsOf(part).keys(), QStringList({"0", "1", "2"}));
}

void TestManPage::itsMacrosAreSound_data()
{
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("mandoc") << "mandoc" << QStringList{"-Tlint", page};
    QTest::newRow("groff") << "groff" << QStringList{"-ww", "-mandoc", "-Tutf8", "-z", page};
}

void TestManPage::itsMacrosAreSound()
{
    QFETCH(QString, tool);
    QFETCH(QStringList, arguments);
    if (QStandardPaths::findExecutable(tool).isEmpty())
        QSKIP("the tool is not here");
    const Outcome outcome = run(m_folder->path(), arguments, tool);
    QCOMPARE(outcome.out + outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
}

QTEST_GUILESS_MAIN(TestManPage)
#include "tst_ManPage.moc"
