#include "EffectFactory.h"
#include "EffectTypes.h"
#include "ParameterEditor.h"
#include "StageMap.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLocale>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using rehearsal::EffectFactory;
using rehearsal::ParameterEditor;
using rehearsal::StageEffect;
using rehearsal::StageMap;

namespace {

struct Types
{
    Types() { rehearsal::addHostTypes(factory); }
    std::unique_ptr<Effect> make(const QString &type)
    {
        return std::unique_ptr<Effect>(factory.make(type));
    }

    StageMap map;
    EffectFactory factory{map};
};

/// An effect with a flag, which none of the host's own has.
class FlagEffect final : public StageEffect
{
public:
    FlagEffect() : StageEffect(nullptr, QStringLiteral("Flag"))
    {
        addPropertyBool(QStringLiteral("loop"), true, &loop);
    }
    void internalSetProperty(const QString &key, const QString &value) override
    {
        m_changes.append(key + u'=' + value);
    }
    /// "key=text" of the changes since the last call.
    QStringList takeChanges() { return std::exchange(m_changes, {}); }

    bool loop = false;

private:
    QStringList m_changes;
};

template<typename Widget>
Widget *child(QWidget &form, const char *name)
{
    auto *widget = form.findChild<Widget *>(QString::fromLatin1(name));
    if (!widget)
        qFatal("no widget %s", name);
    return widget;
}

QString text(const Effect &effect, const char *key)
{
    return effect.getPropertyString(QString::fromLatin1(key));
}

} // namespace

class tst_ParameterEditor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void fieldsAreThoseOfTheDeclaredProperties_data();
    void fieldsAreThoseOfTheDeclaredProperties();
    void fieldsShowWhatTheEffectHas();
    void typedNumbersAreWrittenKeyByKey();
    void typedFractionIsNotRewrittenWhileTyping();
    void stepIsWritten();
    void clickedFlagIsWrittenOnce();
    void changeOfTheEffectIsShownAndNotWrittenBack();
    void changeOfAnotherPropertyIsIgnored();
    void valueOutOfRangeIsShownAsTheNearestAndKept_data();
    void valueOutOfRangeIsShownAsTheNearestAndKept();
    void largestCycleTimeIsShownInFull();

    void effectGivesTheSameEditorAgain();
    void effectDeletesItsEditor();
    void editorDeletedByTheHostIsMadeAnew();
    void editorMayOutliveTheEffect();
    void deletedEditorObservesNoLonger();
};

void tst_ParameterEditor::initTestCase()
{
    QLocale::setDefault(QLocale::c());
    ParameterEditor::registerAsEditor();
}

void tst_ParameterEditor::fieldsAreThoseOfTheDeclaredProperties_data()
{
    QTest::addColumn<QStringList>("fields");
    QTest::newRow("Solid") << QStringList{"m_cycletimeSpinBox", "m_levelSpinBox"};
    QTest::newRow("Ramp") << QStringList{"m_cycletimeSpinBox", "m_fromSpinBox", "m_toSpinBox"};
    QTest::newRow("Chase") << QStringList{"m_cycletimeSpinBox", "m_widthSpinBox", "m_levelSpinBox"};
    QTest::newRow("Pulse") << QStringList{"m_cycletimeSpinBox", "m_lowSpinBox", "m_highSpinBox"};
    QTest::newRow("Strobe") << QStringList{"m_cycletimeSpinBox", "m_dutySpinBox", "m_levelSpinBox"};
    QTest::newRow("Twinkle") << QStringList{"m_cycletimeSpinBox", "m_seedSpinBox",
                                            "m_densitySpinBox", "m_levelSpinBox"};
    QTest::newRow("White Fade") << QStringList{"m_cycletimeSpinBox"};
}

void tst_ParameterEditor::fieldsAreThoseOfTheDeclaredProperties()
{
    QFETCH(QStringList, fields);
    Types types;
    const auto effect = types.make(QString::fromLatin1(QTest::currentDataTag()));
    QWidget *editor = effect->internalGetEffectWidget();
    QVERIFY(editor);
    QStringList names;
    for (const QDoubleSpinBox *box : editor->findChildren<QDoubleSpinBox *>())
        names.append(box->objectName());
    QCOMPARE(names, fields);
    QVERIFY(editor->findChildren<QCheckBox *>().isEmpty());
}

void tst_ParameterEditor::fieldsShowWhatTheEffectHas()
{
    FlagEffect effect;
    effect.setProperty(QStringLiteral("loop"), QStringLiteral("0"));
    effect.setProperty(QStringLiteral("cycletime"), QStringLiteral("2500"));
    ParameterEditor editor(effect);
    QVERIFY(!child<QCheckBox>(editor, "m_loopCheckBox")->isChecked());
    QCOMPARE(child<QDoubleSpinBox>(editor, "m_cycletimeSpinBox")->text(),
             QStringLiteral("2500 ms"));

    Types types;
    const auto strobe = types.make(QStringLiteral("Strobe"));
    QCOMPARE(child<QDoubleSpinBox>(*strobe->internalGetEffectWidget(), "m_dutySpinBox")->text(),
             QStringLiteral("0.100"));
}

void tst_ParameterEditor::typedNumbersAreWrittenKeyByKey()
{
    FlagEffect effect;
    ParameterEditor editor(effect);
    auto *box = child<QDoubleSpinBox>(editor, "m_cycletimeSpinBox");
    box->selectAll();
    QTest::keyClicks(box, QStringLiteral("2500"));
    QCOMPARE(effect.takeChanges(),
             (QStringList{"cycletime=2", "cycletime=25", "cycletime=250", "cycletime=2500"}));
    QCOMPARE(effect.getCycleTime(), 2500ul);
}

void tst_ParameterEditor::typedFractionIsNotRewrittenWhileTyping()
{
    Types types;
    const auto effect = types.make(QStringLiteral("Solid"));
    auto *box = child<QDoubleSpinBox>(*effect->internalGetEffectWidget(), "m_levelSpinBox");
    box->selectAll();
    QStringList shown;
    QStringList written;
    for (const char key : {'0', '.', '2', '5'}) {
        QTest::keyClick(box, key);
        shown.append(box->text());
        written.append(text(*effect, "level"));
    }
    QCOMPARE(shown, (QStringList{"0", "0.", "0.2", "0.25"}));
    QCOMPARE(written, (QStringList{"0", "0", "0.2", "0.25"}));
}

void tst_ParameterEditor::stepIsWritten()
{
    Types types;
    const auto effect = types.make(QStringLiteral("Twinkle"));
    QWidget &editor = *effect->internalGetEffectWidget();
    QTest::keyClick(child<QDoubleSpinBox>(editor, "m_densitySpinBox"), Qt::Key_Up);
    QTest::keyClick(child<QDoubleSpinBox>(editor, "m_seedSpinBox"), Qt::Key_Up);
    QTest::keyClick(child<QDoubleSpinBox>(editor, "m_levelSpinBox"), Qt::Key_Up);
    QTest::keyClick(child<QDoubleSpinBox>(editor, "m_cycletimeSpinBox"), Qt::Key_Down);
    QCOMPARE(text(*effect, "density"), QStringLiteral("0.35"));
    QCOMPARE(text(*effect, "seed"), QStringLiteral("2"));
    QCOMPARE(text(*effect, "level"), QStringLiteral("1"));
    QCOMPARE(text(*effect, "cycletime"), QStringLiteral("900"));
}

void tst_ParameterEditor::clickedFlagIsWrittenOnce()
{
    FlagEffect effect;
    ParameterEditor editor(effect);
    auto *box = child<QCheckBox>(editor, "m_loopCheckBox");
    QVERIFY(box->isChecked());
    box->click();
    QCOMPARE(effect.takeChanges(), QStringList{"loop=0"});
    QVERIFY(!effect.loop);
    box->click();
    QCOMPARE(effect.takeChanges(), QStringList{"loop=1"});
}

void tst_ParameterEditor::changeOfTheEffectIsShownAndNotWrittenBack()
{
    FlagEffect effect;
    ParameterEditor editor(effect);
    effect.setProperty(QStringLiteral("loop"), QStringLiteral("false"));
    effect.setProperty(QStringLiteral("cycletime"), QStringLiteral("0700"));
    QVERIFY(!child<QCheckBox>(editor, "m_loopCheckBox")->isChecked());
    QCOMPARE(child<QDoubleSpinBox>(editor, "m_cycletimeSpinBox")->value(), 700.0);
    QCOMPARE(effect.takeChanges(), (QStringList{"loop=false", "cycletime=0700"}));
}

void tst_ParameterEditor::changeOfAnotherPropertyIsIgnored()
{
    FlagEffect effect;
    ParameterEditor editor(effect);
    effect.setProperty(QStringLiteral("begin"), QStringLiteral("500"));
    effect.setProperty(QStringLiteral("name"), QStringLiteral("Door"));
    QVERIFY(child<QCheckBox>(editor, "m_loopCheckBox")->isChecked());
    QCOMPARE(child<QDoubleSpinBox>(editor, "m_cycletimeSpinBox")->value(), 1000.0);
}

void tst_ParameterEditor::valueOutOfRangeIsShownAsTheNearestAndKept_data()
{
    QTest::addColumn<QString>("level");
    QTest::addColumn<QString>("shown");
    QTest::newRow("above") << "5"
                           << "1.000";
    QTest::newRow("infinite") << "inf"
                              << "1.000";
    QTest::newRow("below") << "-0.5"
                           << "0.000";
    QTest::newRow("not a number") << "nan"
                                  << "0.000";
    QTest::newRow("no number") << "x"
                               << "0.000";
    QTest::newRow("finer than shown") << "0.12345"
                                      << "0.123";
}

void tst_ParameterEditor::valueOutOfRangeIsShownAsTheNearestAndKept()
{
    QFETCH(QString, level);
    QFETCH(QString, shown);
    Types types;
    const auto before = types.make(QStringLiteral("Solid"));
    before->setProperty(QStringLiteral("level"), level);
    QCOMPARE(child<QDoubleSpinBox>(*before->internalGetEffectWidget(), "m_levelSpinBox")->text(),
             shown);
    QCOMPARE(text(*before, "level"), level);

    const auto later = types.make(QStringLiteral("Solid"));
    auto *box = child<QDoubleSpinBox>(*later->internalGetEffectWidget(), "m_levelSpinBox");
    later->setProperty(QStringLiteral("level"), level);
    QCOMPARE(box->text(), shown);
    QCOMPARE(text(*later, "level"), level);
}

void tst_ParameterEditor::largestCycleTimeIsShownInFull()
{
    FlagEffect effect;
    ParameterEditor editor(effect);
    effect.setProperty(QStringLiteral("cycletime"), QStringLiteral("4294967295"));
    auto *box = child<QDoubleSpinBox>(editor, "m_cycletimeSpinBox");
    QCOMPARE(box->cleanText(), QStringLiteral("4294967295"));
    QTest::keyClick(box, Qt::Key_Up);
    QCOMPARE(text(effect, "cycletime"), QStringLiteral("4294967295"));
}

void tst_ParameterEditor::effectGivesTheSameEditorAgain()
{
    Types types;
    const auto effect = types.make(QStringLiteral("Pulse"));
    QWidget *editor = effect->internalGetEffectWidget();
    QVERIFY(editor);
    QCOMPARE(effect->internalGetEffectWidget(), editor);
}

void tst_ParameterEditor::effectDeletesItsEditor()
{
    Types types;
    auto effect = types.make(QStringLiteral("Pulse"));
    const QPointer<QWidget> editor = effect->internalGetEffectWidget();
    effect.reset();
    QVERIFY(editor.isNull());
}

void tst_ParameterEditor::editorDeletedByTheHostIsMadeAnew()
{
    Types types;
    const auto effect = types.make(QStringLiteral("Pulse"));
    auto frame = std::make_unique<QWidget>();
    const QPointer<QWidget> first = effect->internalGetEffectWidget();
    first->setParent(frame.get());
    frame.reset();
    QVERIFY(first.isNull());
    QWidget *second = effect->internalGetEffectWidget();
    QVERIFY(second);
    effect->setProperty(QStringLiteral("low"), QStringLiteral("0.5"));
    QCOMPARE(child<QDoubleSpinBox>(*second, "m_lowSpinBox")->value(), 0.5);
}

void tst_ParameterEditor::editorMayOutliveTheEffect()
{
    auto effect = std::make_unique<FlagEffect>();
    ParameterEditor editor(*effect);
    effect.reset();
    auto *box = child<QDoubleSpinBox>(editor, "m_cycletimeSpinBox");
    box->setValue(300);
    child<QCheckBox>(editor, "m_loopCheckBox")->click();
    QCOMPARE(box->value(), 300.0);
}

void tst_ParameterEditor::deletedEditorObservesNoLonger()
{
    FlagEffect effect;
    auto editor = std::make_unique<ParameterEditor>(effect);
    editor.reset();
    effect.setProperty(QStringLiteral("loop"), QStringLiteral("0"));
    QCOMPARE(effect.takeChanges(), QStringList{"loop=0"});
}

QTEST_MAIN(tst_ParameterEditor)
#include "tst_ParameterEditor.moc"
