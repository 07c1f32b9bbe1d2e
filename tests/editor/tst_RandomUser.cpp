#include "EditorStage.h"
#include "RandomHand.h"
#include "TypeChange.h"

#include <QLoggingCategory>

namespace {

#ifdef META_SANITIZED
constexpr int users = 10;
#else
constexpr int users = 100;
#endif
constexpr int actionsOfAUser = 200;

bool asksBeforeTypeChange = true;

/// A user who does anything, in an order that the seed decides.
class RandomUser
{
public:
    explicit RandomUser(quint32 seed) : m_dice(seed)
    {
        asksBeforeTypeChange = true;
        m_stage.factory.addType(QStringLiteral("Broken"),
                                [](MapModel *) -> Effect * { return nullptr; });
        const quint32 children = m_dice.roll(5);
        for (quint32 eid = 0; eid < children; ++eid)
            m_stage.add(eid)
                ->with("starttype", m_dice.roll(2))
                .with("startlinkeid", m_dice.roll(5));
        m_stage.effect.updateEffectTimes();
        m_stage.open();
    }

    /// Does something and tells what.
    QString act()
    {
        if (m_dice.oneIn(24))
            return play();
        if (m_dice.oneIn(24))
            return changeCycleTime();
        const QString deed = m_hand.act(m_stage.user());
        m_awaitsPass |= m_hand.leavesTimes();
        return deed;
    }

    /// Empty when all is well.
    QString complaint()
    {
        const QString insanity = m_stage.insanity();
        if (!insanity.isEmpty())
            return insanity;
        bool isLoop = false;
        const QString stale = m_stage.staleTimes(&isLoop);
        if (isLoop)
            m_awaitsPass = true; // a fill may break the loop, and starts no pass for it
        else if (stale.isEmpty())
            m_awaitsPass = false;
        return m_awaitsPass ? QString() : stale;
    }

private:
    QString play()
    {
        m_now += static_cast<int>(m_dice.roll(700));
        m_stage.frameAt(m_now);
        return QStringLiteral("frame at %1").arg(m_now);
    }

    QString changeCycleTime()
    {
        const EffectList children = m_stage.effect.getEffects();
        if (children.isEmpty())
            return QStringLiteral("no cycle time");
        const int index = static_cast<int>(m_dice.roll(static_cast<quint32>(children.count())));
        const quint32 ms = m_dice.roll(5000);
        static_cast<StubEffect *>(children.at(index))->setCycleTime(ms);
        return QStringLiteral("cycle time %1 for child %2").arg(ms).arg(index);
    }

    Dice m_dice;
    EditorStage m_stage;
    RandomHand m_hand{m_dice, {{"Roof", "Windows", ""}}};
    int m_now = 0;
    bool m_awaitsPass = false;
};

} // namespace

class tst_RandomUser : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void staysSaneWhateverTheUserDoes_data();
    void staysSaneWhateverTheUserDoes();
};

void tst_RandomUser::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    meta::askSetting() = {[] { return asksBeforeTypeChange; },
                          [] { asksBeforeTypeChange = false; }};
}

void tst_RandomUser::staysSaneWhateverTheUserDoes_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= users; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

// The actions up to the first complaint are the shortest run of this user that fails. With
// META_USER_TRACE set they are printed as they are done, for the case that one of them crashes.
void tst_RandomUser::staysSaneWhateverTheUserDoes()
{
    QFETCH(const quint32, seed);
    RandomUser user(seed);
    const bool isTraced = qEnvironmentVariableIsSet("META_USER_TRACE");
    QStringList done = {QStringLiteral("open")};
    QString complaint = user.complaint();
    for (int i = 0; i < actionsOfAUser && complaint.isEmpty(); ++i) {
        done.append(user.act());
        if (isTraced)
            fprintf(stderr, "%s\n", qPrintable(done.last()));
        complaint = user.complaint();
    }
    if (!complaint.isEmpty() && !isTraced)
        fprintf(stderr, "%s\n", qPrintable(done.join(u'\n')));
    QVERIFY2(complaint.isEmpty(), qPrintable(complaint));
}

QTEST_MAIN(tst_RandomUser)
#include "tst_RandomUser.moc"
