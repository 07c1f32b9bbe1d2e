#include "LogCapture.h"
#include "MetaStage.h"

#include <QMetaMethod>
#include <QPoint>
#include <QRegularExpression>
#include <QTest>

#include <array>
#include <bit>
#include <cstddef>

namespace {

#ifdef __GXX_ABI_VERSION
/// How many entries of its class's virtual table stand before a virtual operation's, as this
/// compiler keeps a pointer to it.
template<typename Operation>
std::ptrdiff_t tablePlace(Operation operation)
{
    const auto [place, thisShift] = std::bit_cast<std::array<std::ptrdiff_t, 2>>(operation);
    return place / static_cast<std::ptrdiff_t>(sizeof(void *));
}

struct OpenObject : QObject
{
    using QObject::disconnectNotify; // the last of its virtual operations
};
#endif

// Every slot, in the order that hosts and connections by index rely on.
const char *const slotSignatures[] = {
    "handleCycleTimeChanged(unsigned long)",
    "removeFromTable(unsigned long)",
    "deleteEffect(Effect*)",
    "handleCutEffect()",
    "handleCopyEffect()",
    "handlePasteEffect()",
    "handleDeleteEffect()",
    "handleValueChanged(int,int)",
    "handleCurrentChanged(int,int)",
    "handleSelectionChanged()",
    "handleSharedPropertyChanged(int,int)",
    "handleClicked(int,int,int,const QPoint&)",
    "handleHeaderClicked(int)",
    "handleContextMenuRequested(int,int,const QPoint&)",
    "handleNewEffectClicked()",
    "handleDeleteSelectedEffectsClicked()",
    "changeEffectType(Effect*,QString)",
    "startFixedToggled(bool)",
    "startLinkedToggled(bool)",
    "startFixedTimeChanged(const QString&)",
    "startLinkStartToggled(bool)",
    "startLinkEndToggled(bool)",
    "startLinkEffectActivated(int)",
    "startLinkOffsetChanged(const QString&)",
    "endFixedToggled(bool)",
    "endLinkedToggled(bool)",
    "endCyclesToggled(bool)",
    "endFixedTimeChanged(const QString&)",
    "endLinkStartToggled(bool)",
    "endLinkEndToggled(bool)",
    "endLinkEffectActivated(int)",
    "endLinkOffsetChanged(const QString&)",
    "endCyclesChanged(int)",
    "updateEffectTimes()",
    "updateEffectTime(Effect*)",
    "updateEndTime()",
    "resizeTable()",
};

} // namespace

class tst_MetaEffectSlots : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void classIsMetaEffectOnEffect();
    void thereIsOneSignal();
    void slotStandsAtItsPlace_data();
    void slotStandsAtItsPlace();
    void thereIsNothingElse();
    void operationsOfTheHostFollowThoseOfQObject();

    void editorSlotDoesNothingWithoutEditor_data();
    void editorSlotDoesNothingWithoutEditor();
};

void tst_MetaEffectSlots::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

void tst_MetaEffectSlots::classIsMetaEffectOnEffect()
{
    MetaEffect effect(nullptr, 0);
    const QMetaObject *meta = effect.metaObject();

    QCOMPARE(meta->className(), "MetaEffect");
    QCOMPARE(meta->superClass()->className(), "Effect");
    QCOMPARE(meta->superClass()->superClass()->className(), "QObject");
}

void tst_MetaEffectSlots::thereIsOneSignal()
{
    const QMetaObject &meta = MetaEffect::staticMetaObject;
    const QMetaMethod signal = meta.method(meta.methodOffset());

    QCOMPARE(signal.methodType(), QMetaMethod::Signal);
    QCOMPARE(signal.methodSignature(),
             QMetaObject::normalizedSignature("endTimeChanged(unsigned long)"));
    QCOMPARE(meta.method(meta.methodOffset() + 1).methodType(), QMetaMethod::Slot);
}

void tst_MetaEffectSlots::slotStandsAtItsPlace_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<QByteArray>("signature");

    int place = 0;
    for (const char *signature : slotSignatures) {
        QTest::addRow("%d %s", place, signature) << place << QByteArray(signature);
        ++place;
    }
    QCOMPARE(place, 37);
}

void tst_MetaEffectSlots::slotStandsAtItsPlace()
{
    QFETCH(int, place);
    QFETCH(QByteArray, signature);
    constexpr int signalCount = 1;
    const QMetaObject &meta = MetaEffect::staticMetaObject;

    const QMetaMethod slot = meta.method(meta.methodOffset() + signalCount + place);

    QCOMPARE(slot.methodSignature(), QMetaObject::normalizedSignature(signature));
    QCOMPARE(slot.methodType(), QMetaMethod::Slot);
    QCOMPARE(slot.access(), QMetaMethod::Public);
    QCOMPARE(slot.returnType(), static_cast<int>(QMetaType::Void));
    QVERIFY(!(slot.attributes() & QMetaMethod::Cloned));
}

void tst_MetaEffectSlots::thereIsNothingElse()
{
    const QMetaObject &meta = MetaEffect::staticMetaObject;

    QCOMPARE(meta.methodCount() - meta.methodOffset(), 38);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
}

// A host that was built before calls them by their places.
void tst_MetaEffectSlots::operationsOfTheHostFollowThoseOfQObject()
{
#ifdef __GXX_ABI_VERSION
    const std::ptrdiff_t places[] = {tablePlace(&Effect::getCycleTime),
                                     tablePlace(&Effect::getVersion),
                                     tablePlace(&Effect::getBuildNumber),
                                     tablePlace(&Effect::isDirty),
                                     tablePlace(&Effect::resetStartTime),
                                     tablePlace(&Effect::init),
                                     tablePlace(&Effect::internalUpdateLights),
                                     tablePlace(&Effect::internalGetEffectWidget),
                                     tablePlace(&Effect::internalSave),
                                     tablePlace(&Effect::internalSetProperty),
                                     tablePlace(&Effect::setLevel),
                                     tablePlace(&Effect::addChild)};
    std::ptrdiff_t expected = tablePlace(&OpenObject::disconnectNotify);
    for (const std::ptrdiff_t place : places)
        QCOMPARE(place, ++expected);
#else
    QSKIP("How this compiler keeps pointers to virtual operations is not known here");
#endif
}

void tst_MetaEffectSlots::editorSlotDoesNothingWithoutEditor_data()
{
    QTest::addColumn<QByteArray>("signature");

    // Those that work without an editor, or ask a question of their own.
    const QByteArrayList others{"handleCycleTimeChanged(unsigned long)",
                                "deleteEffect(Effect*)",
                                "handleCutEffect()",
                                "handleCopyEffect()",
                                "handlePasteEffect()",
                                "handleDeleteEffect()",
                                "handleDeleteSelectedEffectsClicked()",
                                "changeEffectType(Effect*,QString)",
                                "updateEffectTimes()",
                                "updateEffectTime(Effect*)",
                                "updateEndTime()"};
    for (const char *signature : slotSignatures) {
        if (!others.contains(signature))
            QTest::newRow(signature) << QByteArray(signature);
    }
}

void tst_MetaEffectSlots::editorSlotDoesNothingWithoutEditor()
{
    QFETCH(QByteArray, signature);
    MetaStage stage;
    stage.add(0)->with("endtype", 2).with("endcyclecount", 3).with("startfixedtime", 400);
    stage.add(1)->with("starttype", 1).with("startlinkeid", 0);
    const QString before = savedText(stage.effect);
    const QMetaObject *meta = stage.effect.metaObject();
    const int index = meta->indexOfSlot(QMetaObject::normalizedSignature(signature));
    QVERIFY(index >= 0);

    const LogCapture debugLines(QtDebugMsg);
    const QMetaMethod slot = meta->method(index);
    int number = 1;
    unsigned long eid = 1;
    bool on = true;
    const QString text = QStringLiteral("2.5");
    const QPoint point(3, 4);
    QGenericArgument arguments[4];
    for (int i = 0; i < slot.parameterCount(); ++i) {
        switch (slot.parameterType(i)) {
        case QMetaType::Int: arguments[i] = Q_ARG(int, number); break;
        case QMetaType::ULong: arguments[i] = Q_ARG(unsigned long, eid); break;
        case QMetaType::Bool: arguments[i] = Q_ARG(bool, on); break;
        case QMetaType::QString: arguments[i] = Q_ARG(QString, text); break;
        case QMetaType::QPoint: arguments[i] = Q_ARG(QPoint, point); break;
        default: QFAIL("an argument of an unexpected type");
        }
    }
    QVERIFY(slot.invoke(&stage.effect, Qt::DirectConnection, arguments[0], arguments[1],
                        arguments[2], arguments[3]));

    QCOMPARE(savedText(stage.effect), before);
    QVERIFY(!stage.effect.ownDirty());
    QCOMPARE(stage.effect.getEffects().count(), 2);
    QCOMPARE(debugLines.lines(), QStringList());
}

QTEST_GUILESS_MAIN(tst_MetaEffectSlots)
#include "tst_MetaEffectSlots.moc"
