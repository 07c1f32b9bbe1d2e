#include "WindowEdits.h"

#include "EditorDock.h"

#include <QComboBox>
#include <QLabel>
#include <QRegularExpression>

namespace {

/// How bright the stage is where a light stands, 0 to 255.
int glow(WindowScene &scene, quint32 uid)
{
    const QImage picture = scene.stage().grab().toImage();
    const QPointF place = scene.stage().positionOf(uid) * picture.devicePixelRatio();
    return qGray(picture.pixel(place.toPoint()));
}

} // namespace

/// Stage, timeline and editor show the same show.
class tst_WindowFollows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useOwnHome(); }
    void init();

    void stageShowsTheLights();
    void stageFollowsWhilePlaying();
    void timelineShowsEveryChild();
    void editorIsTheEffectsOwn();
    void timelineFollowsEveryEdit_data() { addWindowEdits(); }
    void timelineFollowsEveryEdit();
    void timelineFollowsEveryLetter();
    void stageFollowsAnEditWhilePaused();
    void playheadFollows();
    void hintTellsTheChildUnderTheCursor();

    void boxChoosesTheEffectThatIsShown();
    void chosenEffectIsKeptByUndo();
    void choosingAnEffectIsNoEdit();
    void boxIsHiddenForOneEffect();
    void effectWithoutAnEditorIsShown();
};

void tst_WindowFollows::init()
{
    clearHome();
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin)")));
}

void tst_WindowFollows::stageShowsTheLights()
{
    WindowScene scene;
    const int dark = glow(scene, 1);
    QVERIFY(dark < 80);
    scene.playback().seek(500);
    QVERIFY(glow(scene, 1) > 150);
    QVERIFY(glow(scene, 2) <= dark + 20);
    scene.playback().seek(2500);
    QVERIFY(glow(scene, 1) <= dark + 20);
    QVERIFY(glow(scene, 2) > 150);
    scene.trigger("stopAction");
    QVERIFY(glow(scene, 2) <= dark + 20);
    QVERIFY(scene.stage().positionOf(1).x() < scene.stage().positionOf(2).x());
}

void tst_WindowFollows::stageFollowsWhilePlaying()
{
    WindowScene scene;
    scene.playback().seek(1950);
    const int dark = glow(scene, 2);
    scene.playback().play();
    QTRY_VERIFY(glow(scene, 2) > dark + 80);
    QVERIFY(scene.playback().position() >= 2000);
}

void tst_WindowFollows::timelineShowsEveryChild()
{
    WindowScene scene;
    QCOMPARE(scene.disagreement(), QString());
    QVERIFY(scene.timeline().barRect({4}).width() > 10);
    QCOMPARE(scene.timeline().model().row(scene.timeline().model().find({2})).begin, 2000);
    QVERIFY(scene.timeline().model().find({4, 1}) >= 0);
}

void tst_WindowFollows::editorIsTheEffectsOwn()
{
    WindowScene scene;
    auto &dock = scene.part<rehearsal::EditorDock>("editorDock");
    QVERIFY(dock.isVisible());
    QVERIFY(dock.isAncestorOf(&scene.form()));
    QVERIFY(scene.form().isVisible());
    QCOMPARE(scene.top().internalGetEffectWidget(), static_cast<QWidget *>(&scene.form()));
    QVERIFY(scene.table().isColumnHidden(meta::EidColumn));
}

void tst_WindowFollows::timelineFollowsEveryEdit()
{
    QFETCH(int, edit);
    const WindowEdit &made = windowEdits()[static_cast<std::size_t>(edit)];
    WindowScene scene;
    if (made.prepare)
        made.prepare(scene);
    const QByteArray before = scene.document().text();
    made.make(scene);
    QVERIFY(scene.document().text() != before);
    QCOMPARE(scene.disagreement(), QString());
    // The nested child too.
    const int deep = scene.timeline().model().find({4, 1});
    if (Effect *inner = scene.top().getEffect(4)) {
        Effect *child = qobject_cast<MetaEffect *>(inner)->getEffect(1);
        QCOMPARE(deep >= 0, child != nullptr);
        if (child) {
            const auto &row = scene.timeline().model().row(deep);
            QCOMPARE(row.name, child->getPropertyString(QStringLiteral("name")));
            QCOMPARE(row.begin - 10'000, qint64(child->getPropertyULong(QStringLiteral("begin"))));
        }
    }
}

void tst_WindowFollows::timelineFollowsEveryLetter()
{
    WindowScene scene;
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "1");
    const QList<std::pair<QString, qint64>> letters = {{QStringLiteral("2"), 12'000},
                                                       {QStringLiteral("."), 12'000},
                                                       {QStringLiteral("5"), 12'500}};
    for (const auto &[letter, begin] : letters) {
        scene.type(letter);
        const auto &model = scene.timeline().model();
        QCOMPARE(model.row(model.find({3})).begin, begin);
    }
}

void tst_WindowFollows::stageFollowsAnEditWhilePaused()
{
    WindowScene scene;
    scene.playback().seek(500);
    QCOMPARE(scene.light(1), 1.0);
    scene.select(1);
    scene.typeInto("m_startFixedLineEdit", "3");
    QCOMPARE(scene.playback().position(), 500u);
    QCOMPARE(scene.light(1), 0.0);
    QVERIFY(glow(scene, 1) < 80);
    scene.undo();
    QCOMPARE(scene.light(1), 1.0);
    QVERIFY(glow(scene, 1) > 150);
}

void tst_WindowFollows::playheadFollows()
{
    WindowScene scene;
    scene.playback().seek(2500);
    QCOMPARE(scene.timeline().position(), 2500u);
    QVERIFY(scene.timeline().isRunningShown({2}));
    QVERIFY(!scene.timeline().isRunningShown({1}));
    scene.playback().play();
    QTRY_VERIFY(scene.timeline().position() > 2600);
    QCOMPARE(scene.timeline().position(), scene.playback().position());
}

void tst_WindowFollows::hintTellsTheChildUnderTheCursor()
{
    WindowScene scene;
    const auto &hint = scene.part<QLabel>("hint");
    QVERIFY(hint.isVisible());
    QTest::mouseMove(scene.timeline().viewport(), scene.timeline().barRect({3}).center());
    QTRY_VERIFY(hint.text().contains(QStringLiteral("Last")));
}

// --- Several effects ---

void tst_WindowFollows::boxChoosesTheEffectThatIsShown()
{
    WindowScene scene(twoEffectsShow());
    auto &box = scene.part<QComboBox>("effectBox");
    QVERIFY(box.isVisible());
    QCOMPARE(box.count(), 2);
    QCOMPARE(box.itemText(1), QStringLiteral("Second"));
    QCOMPARE(scene.timeline().model().title(), QStringLiteral("First"));
    QCOMPARE(scene.table().text(0, meta::NameColumn), QStringLiteral("Left one"));
    box.setFocus();
    scene.key(Qt::Key_Down);
    QCOMPARE(scene.timeline().model().title(), QStringLiteral("Second"));
    QCOMPARE(scene.table().text(0, meta::NameColumn), QStringLiteral("Right one"));
    scene.select(1);
    scene.typeInto("m_endFixedLineEdit", "4");
    QCOMPARE(scene.timeline().model().row(0).end, 4000);
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(WindowScene::read(scene.file).contains("<property key=\"end\">4000</property>"));
}

void tst_WindowFollows::chosenEffectIsKeptByUndo()
{
    WindowScene scene(twoEffectsShow());
    auto &box = scene.part<QComboBox>("effectBox");
    box.setFocus();
    scene.key(Qt::Key_Down);
    scene.typeIntoCell(1, meta::NameColumn, "Changed");
    scene.undo();
    QCOMPARE(box.currentIndex(), 1);
    QCOMPARE(scene.table().text(0, meta::NameColumn), QStringLiteral("Right one"));
    QCOMPARE(scene.timeline().model().title(), QStringLiteral("Second"));
}

void tst_WindowFollows::choosingAnEffectIsNoEdit()
{
    WindowScene scene(twoEffectsShow());
    scene.part<QComboBox>("effectBox").setFocus();
    scene.key(Qt::Key_Down);
    scene.key(Qt::Key_Up);
    QVERIFY(!scene.window.isWindowModified());
    QVERIFY(!scene.action("undoAction").isEnabled());
}

void tst_WindowFollows::boxIsHiddenForOneEffect()
{
    WindowScene scene;
    QVERIFY(!scene.part<QComboBox>("effectBox").isVisible());
}

void tst_WindowFollows::effectWithoutAnEditorIsShown()
{
    const QByteArray unknown = "<effect type=\"Fog\"><property key=\"name\">Mist</property>"
                               "</effect>\n</show>";
    WindowScene scene(twoEffectsShow().replace("</show>", unknown));
    auto &box = scene.part<QComboBox>("effectBox");
    QCOMPARE(box.count(), 3);
    box.setFocus();
    scene.key(Qt::Key_End);
    QVERIFY(!scene.part<rehearsal::EditorDock>("editorDock").editor());
    QVERIFY(scene.timeline().model().rows().empty());
    scene.key(Qt::Key_Home);
    QCOMPARE(scene.table().rowCount(), 1);
}

QTEST_MAIN(tst_WindowFollows)
#include "tst_WindowFollows.moc"
