#include "SystemVersion.h"

#include <QHash>
#include <QRegularExpression>
#include <QTest>

#include <initializer_list>
#include <utility>

namespace {

using Answers = QHash<QByteArray, qint32>;

/// A system that knows these selectors and no other, and notes what it is asked.
class StubSystem
{
public:
    explicit StubSystem(const Answers &answers) : m_answers(answers) {}

    std::optional<qint32> operator()(quint32 selector)
    {
        QByteArray name;
        for (int shift = 24; shift >= 0; shift -= 8)
            name.append(static_cast<char>(selector >> shift & 0xFF));
        asked.append(name);
        const auto answer = m_answers.constFind(name);
        return answer == m_answers.constEnd() ? std::nullopt : std::optional(*answer);
    }

    QByteArrayList asked;

private:
    Answers m_answers;
};

} // namespace

class tst_SystemVersion : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void packedVersionIsDecodedAndOthersAreAskedNumberByNumber_data();
    void packedVersionIsDecodedAndOthersAreAskedNumberByNumber();
    void nativeDialogsComeWithTenSeven_data();
    void nativeDialogsComeWithTenSeven();
};

void tst_SystemVersion::packedVersionIsDecodedAndOthersAreAskedNumberByNumber_data()
{
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QByteArrayList>("asked");
    QTest::addColumn<QVersionNumber>("version");

    const QByteArrayList packed = {"sysv"};
    const QByteArrayList major = {"sysv", "sys1"};
    const QByteArrayList minor = {"sysv", "sys1", "sys2"};
    const QByteArrayList all = {"sysv", "sys1", "sys2", "sys3"};
    const auto version = [](int first, int second, int third) {
        return QVersionNumber(first, second, third);
    };
    const Answers lion = {{"sysv", 0x1075}, {"sys1", 10}, {"sys2", 7}, {"sys3", 5}};
    const auto without = [&lion](std::initializer_list<const char *> selectors) {
        Answers answers = lion;
        for (const char *selector : selectors)
            answers.remove(selector);
        return answers;
    };

    QTest::newRow("nothing answers") << Answers() << packed << version(10, 0, 0);
    QTest::newRow("no packed version") << without({"sysv"}) << packed << version(10, 0, 0);
    QTest::newRow("packed 9.2") << Answers{{"sysv", 0x0922}} << packed << version(9, 2, 0);
    QTest::newRow("packed 10.3.9") << Answers{{"sysv", 0x1039}} << packed << version(10, 3, 0);
    QTest::newRow("last packed") << Answers{{"sysv", 0x103F}, {"sys1", 11}} << packed
                                 << version(10, 3, 0);
    QTest::newRow("first unpacked")
        << Answers{{"sysv", 0x1040}, {"sys1", 10}, {"sys2", 4}, {"sys3", 0}} << all
        << version(10, 4, 0);
    QTest::newRow("10.6.8") << Answers{{"sysv", 0x1068}, {"sys1", 10}, {"sys2", 6}, {"sys3", 8}}
                            << all << version(10, 6, 8);
    QTest::newRow("10.7.5") << lion << all << version(10, 7, 5);
    QTest::newRow("no major number") << without({"sys1"}) << major << version(10, 0, 0);
    QTest::newRow("no minor number") << without({"sys2"}) << minor << version(10, 0, 0);
    QTest::newRow("no bug-fix number") << without({"sys3"}) << all << version(10, 7, 0);
    QTest::newRow("major number alone") << without({"sys2", "sys3"}) << minor << version(10, 0, 0);
    QTest::newRow("none of the three")
        << without({"sys1", "sys2", "sys3"}) << major << version(10, 0, 0);
    QTest::newRow("11 without a minor number")
        << Answers{{"sysv", 0x1090}, {"sys1", 11}} << minor << version(11, 0, 0);
    QTest::newRow("10.16") << Answers{{"sysv", 0x1096}, {"sys1", 10}, {"sys2", 16}, {"sys3", 0}}
                           << all << version(10, 16, 0);
    QTest::newRow("11.0") << Answers{{"sysv", 0x1090}, {"sys1", 11}, {"sys2", 0}, {"sys3", 0}}
                          << all << version(11, 0, 0);
    QTest::newRow("26.0") << Answers{{"sysv", 0x1090}, {"sys1", 26}, {"sys2", 0}, {"sys3", 0}}
                          << all << version(26, 0, 0);
}

void tst_SystemVersion::packedVersionIsDecodedAndOthersAreAskedNumberByNumber()
{
    QFETCH(Answers, answers);
    StubSystem system(answers);

    QTEST(meta::systemVersion(std::ref(system)), "version");
    QTEST(system.asked, "asked");
}

void tst_SystemVersion::nativeDialogsComeWithTenSeven_data()
{
    QTest::addColumn<QVersionNumber>("version");
    QTest::addColumn<bool>("native");

    QTest::newRow("9.9") << QVersionNumber(9, 9, 0) << false;
    QTest::newRow("10.0") << QVersionNumber(10, 0, 0) << false;
    QTest::newRow("10.3") << QVersionNumber(10, 3, 0) << false;
    QTest::newRow("10.6.8") << QVersionNumber(10, 6, 8) << false;
    QTest::newRow("10.7") << QVersionNumber(10, 7, 0) << true;
    QTest::newRow("10.7.5") << QVersionNumber(10, 7, 5) << true;
    QTest::newRow("10.16") << QVersionNumber(10, 16, 0) << true;
    QTest::newRow("11.0") << QVersionNumber(11, 0, 0) << true;
    QTest::newRow("26.0") << QVersionNumber(26, 0, 0) << true;
}

void tst_SystemVersion::nativeDialogsComeWithTenSeven()
{
    QFETCH(QVersionNumber, version);
    QTEST(meta::hasNativeDialogs(version), "native");
}

QTEST_APPLESS_MAIN(tst_SystemVersion)
#include "tst_SystemVersion.moc"
