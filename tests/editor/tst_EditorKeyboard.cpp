#include "EditorStage.h"

#include <QApplication>
#include <QLoggingCategory>

/// The editor without a mouse.
class tst_EditorKeyboard : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void tabWalksTheWindowInReadingOrder();
    void tabStillDoesWhenAnotherChildIsShown();

private:
    static QStringList tabStops(const MetaWidget &form);
};

void tst_EditorKeyboard::init()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin)")));
}

/// The names of what has the focus from the chooser of new effects on, a Tab further each.
QStringList tst_EditorKeyboard::tabStops(const MetaWidget &form)
{
    form.m_effectComboBox->setFocus();
    QStringList names;
    const QWidget *first = QApplication::focusWidget();
    do {
        names.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    } while (QApplication::focusWidget() != first && names.size() < 30);
    return names;
}

void tst_EditorKeyboard::tabWalksTheWindowInReadingOrder()
{
    EditorStage stage;
    stage.add(1)->with("starttype", 1).with("startlinkeid", 2).with("endtype", 2);
    stage.add(2);
    const MetaWidget &form = stage.open();
    stage.selectEid(1);
    auto *level = form.m_effectParameterFrame->findChild<QLineEdit *>();
    level->setObjectName("level");
    const QStringList stops = tabStops(form);
    const QStringList expected = {"m_effectComboBox",          "level",
                                  "m_startLinkedRadioButton",  "m_startLinkEndRadioButton",
                                  "m_startLinkEffectComboBox", "m_startLinkOffsetLineEdit",
                                  "m_endCyclesRadioButton",    "m_endCyclesSpinBox"};
    QCOMPARE(stops.first(expected.size()), expected);
}

void tst_EditorKeyboard::tabStillDoesWhenAnotherChildIsShown()
{
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    const MetaWidget &form = stage.open();
    for (const quint32 eid : {1u, 2u, 1u}) {
        stage.selectEid(eid);
        form.m_effectComboBox->setFocus();
        QTest::keyClick(form.m_effectComboBox, Qt::Key_Tab);
        auto *shown = stage.effect.getEffect(eid)->internalGetEffectWidget();
        QVERIFY(shown->isAncestorOf(QApplication::focusWidget()));
    }
}

QTEST_MAIN(tst_EditorKeyboard)
#include "tst_EditorKeyboard.moc"
