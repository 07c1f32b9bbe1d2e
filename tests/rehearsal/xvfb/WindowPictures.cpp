// Takes the pictures of the window in the documents: WindowPictures <folder>
#include "ProgramOnScreen.h"
#include "ProgramRun.h"
#include "ShowEditing.h"

#include "TimelineView.h"

#include <QApplication>
#include <QLoggingCategory>

namespace {

/// So that nothing hangs on how fast the shown is.
bool waitUntilStill(const ProgramOnScreen &shown)
{
    return QTest::qWaitFor(
        [&shown] {
            const QImage before = shown.picture();
            QTest::qWait(500);
            return shown.picture() == before;
        },
        30000);
}

// The example in the evening's busiest moment, and a child of it that is linked on both sides.
bool takePicture(const QString &appearance, const QString &file)
{
    const QTemporaryDir home;
    const QString show = home.filePath(QStringLiteral("facade.show"));
    QFile::copy(QStringLiteral(META_SOURCE_DIR "/examples/facade.show"), show);
    ProgramOnScreen::setAppearance(home.path(), appearance);
    ProgramOnScreen shown(home.path(), {show});
    if (!shown.goToMain())
        return false;
    const WindowTwin twin(ShowEditing::exampleShow(), shown.area().size());
    const auto &timeline = twin.find<rehearsal::TimelineView>("timeline");

    const QList<quint32> windowsWake{9};
    const QRect fold = timeline.disclosureRect(windowsWake);
    shown.click(timeline.viewport()->mapTo(timeline.window(), fold.center()));
    shown.click(twin.rowAt(QStringLiteral("Round the house")));
    ShowEditing::goToSecond(shown, twin, 28);
    return waitUntilStill(shown) && shown.picture().save(file);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2)
        qFatal("usage: WindowPictures <folder>");
    for (const char *appearance : {"light", "dark"}) {
        const QString name = QLatin1String(appearance);
        if (!takePicture(name, QStringLiteral("%1/window-%2.png").arg(arguments.last(), name)))
            qFatal("no picture in the %s appearance", appearance);
    }
    return 0;
}
