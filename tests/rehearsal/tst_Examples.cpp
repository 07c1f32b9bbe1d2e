#include "Effect.h"
#include "LogCapture.h"
#include "Player.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QFile>
#include <QTest>

using rehearsal::FileFault;
using rehearsal::Player;
using rehearsal::Show;

namespace {

QString fileOf(const QString &name)
{
    return QStringLiteral(META_SOURCE_DIR "/examples/") + name;
}

std::unique_ptr<Show> read(const QString &name)
{
    FileFault fault;
    std::unique_ptr<Show> show = rehearsal::readShow(fileOf(name), allTypes(), &fault);
    if (!show)
        qWarning("%s", qPrintable(fault.message()));
    return show;
}

QStringList levelsOf(const Show &show)
{
    QStringList levels;
    for (const rehearsal::StageLight *light : show.map().lights())
        levels.append(QString::number(light->shown(), 'f', 4));
    return levels;
}

} // namespace

/// The shows that come with the program.
class tst_Examples : public QObject
{
    Q_OBJECT

private slots:
    void resolvingGivesTheFileItself_data();
    void resolvingGivesTheFileItself();
    void everyLightShinesAndRestsInOneRun_data();
    void everyLightShinesAndRestsInOneRun();
    void secondRunIsLikeTheFirst_data();
    void secondRunIsLikeTheFirst();

private:
    void addFiles();
};

void tst_Examples::addFiles()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("facade") << "facade.show";
    QTest::newRow("minimal") << "minimal.show";
}

void tst_Examples::resolvingGivesTheFileItself_data()
{
    addFiles();
}

void tst_Examples::resolvingGivesTheFileItself()
{
    QFETCH(QString, file);
    const std::unique_ptr<Show> show = read(file);
    QVERIFY(show);
    QVERIFY(show->unknownTypes().empty());
    const LogCapture debugLines(QtDebugMsg);
    for (Effect *effect : show->loadedEffects()) {
        if (effect->metaObject()->indexOfSlot("updateEffectTimes()") < 0)
            continue;
        QVERIFY(QMetaObject::invokeMethod(effect, "updateEffectTimes"));
        QVERIFY(QMetaObject::invokeMethod(effect, "updateEndTime"));
    }
    QVERIFY(!debugLines.lines().isEmpty());
    QFile saved(fileOf(file));
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QCOMPARE(rehearsal::showText(*show).split(u'\n'),
             QString::fromUtf8(saved.readAll()).split(u'\n'));
}

void tst_Examples::everyLightShinesAndRestsInOneRun_data()
{
    addFiles();
}

void tst_Examples::everyLightShinesAndRestsInOneRun()
{
    QFETCH(QString, file);
    const std::unique_ptr<Show> show = read(file);
    QVERIFY(show);
    Player player(show->map(), show->effects());
    player.start();
    QSet<quint32> bright;
    QSet<quint32> dark;
    for (quint32 ms = 0; ms < player.length(); ms += 25) {
        player.frame(QTime(12, 0).addMSecs(static_cast<int>(ms)), 0);
        for (const rehearsal::StageLight *light : show->map().lights()) {
            if (light->shown() >= 0.9)
                bright.insert(light->uid());
            if (light->shown() <= 0.1)
                dark.insert(light->uid());
        }
    }
    QCOMPARE(static_cast<std::size_t>(bright.size()), show->map().lights().size());
    QCOMPARE(static_cast<std::size_t>(dark.size()), show->map().lights().size());
}

void tst_Examples::secondRunIsLikeTheFirst_data()
{
    addFiles();
}

void tst_Examples::secondRunIsLikeTheFirst()
{
    QFETCH(QString, file);
    const std::unique_ptr<Show> show = read(file);
    QVERIFY(show);
    Player player(show->map(), show->effects());
    player.start();
    QList<QStringList> first;
    const quint32 length = player.length();
    for (quint32 ms = 0; ms < 2 * length; ms += 100) {
        // The first run ends at midnight.
        player.frame(QTime(0, 0).addMSecs(static_cast<int>(ms) - static_cast<int>(length)), 0);
        if (ms < length)
            first.append(levelsOf(*show));
        else
            QCOMPARE(levelsOf(*show), first[(ms - length) / 100]);
    }
}

QTEST_GUILESS_MAIN(tst_Examples)
#include "tst_Examples.moc"
