#include "ChildKeys.h"
#include "EditorStage.h"
#include "EffectColumns.h"
#include "EffectHost.h"
#include "LogCapture.h"
#include "PickerUser.h"
#include "QuestionUser.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>

using namespace meta;

namespace {

const QString chase = QStringLiteral("Chase");

/// Every carried key, in the order of writing.
const QStringList carriedKeys =
    QStringLiteral("name gid transparency priority begin end fadein fadeout eid "
                   "starttype startfixedtime startlinkstart startlinkeid startlinkoffset "
                   "endtype endfixedtime endlinkeid endlinkstart endlinkoffset endcyclecount")
        .split(u' ');

/// A stub that calls back.
class HookStub : public WidgetStub
{
public:
    using WidgetStub::WidgetStub;

    void init() override
    {
        WidgetStub::init();
        if (onInit)
            onInit();
    }
    void setLevel(int newLevel) override
    {
        WidgetStub::setLevel(newLevel);
        if (onLevel)
            onLevel();
    }
    QWidget *internalGetEffectWidget() override
    {
        if (onWidget)
            onWidget();
        return WidgetStub::internalGetEffectWidget();
    }

    std::function<void()> onInit;
    std::function<void()> onLevel;
    std::function<void()> onWidget;
};

/// The change of a type without a meta effect around it, on a form that is connected to nothing.
///
/// The journal notes the steps, each with the eids of the children in parentheses, those of the
/// selected ones marked by a star, and "on" while the meta effect runs.
class ChangeAlone final : private EditorPort
{
public:
    ChangeAlone()
    {
        effect.onInit = [this] { note(QStringLiteral("init effect")); };
        effect.setState(true);
        factory.addType(chase, [this](MapModel *mapModel) {
            note(QStringLiteral("make"));
            made = new HookStub(mapModel, QStringLiteral("Made"), 77);
            for (const QString &key : carriedKeys)
                made->setProperty(key, QStringLiteral("77"));
            EffectHost::setObserver(*made, [this](const QString &key, const QString &text) {
                writes.append(key + u'=' + text);
                if (writes.size() == carriedKeys.size())
                    note(QStringLiteral("written"));
            });
            made->onInit = [this] { note(QStringLiteral("init child")); };
            return made;
        });
        factory.addType(QStringLiteral("Broken"), [this](MapModel *) -> Effect * {
            note(QStringLiteral("make none"));
            return nullptr;
        });
    }

    StubEffect &add(quint32 eid, bool selected = false)
    {
        auto *child = new StubEffect(&map, eid);
        child->whileDying = [this](StubEffect &) { note(QStringLiteral("delete")); };
        add(child, selected);
        return *child;
    }
    void add(Effect *child, bool selected = false)
    {
        roster.insert(child);
        if (selected)
            roster.selection().append(child);
    }
    void change(Effect &child, const QString &newType = chase)
    {
        TypeChange(&form, {effect, roster, legality, &map, &factory, *this}).change(child, newType);
    }

    rehearsal::StageMap map;
    rehearsal::EffectFactory factory{map};
    HookStub effect{&map};
    QStringList journal; ///< outlives the children
    QStringList writes;
    ChildRoster roster;
    ChildrenByEid dictionary;
    LinkLegality legality{roster, dictionary};
    MetaWidget form;
    HookStub *made = nullptr;

private:
    void note(const QString &step)
    {
        QStringList eids;
        const EffectList children = roster.children();
        for (const Effect *child : children)
            eids.append(keys::eid.readText(*child)
                        + (roster.selection().contains(child) ? QStringLiteral("*") : QString()));
        journal.append(
            QStringLiteral("%1 (%2)%3")
                .arg(step, eids.join(u' '), effect.getState() ? QStringLiteral(" on") : QString()));
    }

    void adopt(Effect &child) override
    {
        note(QStringLiteral("adopt ") + keys::eid.readText(child));
    }
    void updateEffectTimes() override { note(QStringLiteral("updateEffectTimes")); }
    void updateEndTime() override { note(QStringLiteral("updateEndTime")); }
    void refreshWidgets() override { note(QStringLiteral("refreshWidgets")); }
    void addChild(Effect *) override { note(QStringLiteral("addChild")); }
    void changeEffectType(Effect *, const QString &) override {}
    unsigned long getGID(const QString &) const override { return 0; }
    int getRow(unsigned long eid) override
    {
        note(QStringLiteral("getRow %1").arg(eid));
        return -1;
    }
    void setDirty(bool dirty) override
    {
        note(QStringLiteral("setDirty ") + QVariant(dirty).toString());
    }
};

/// The user's own settings and those of the system, both in folders that go with this object.
class SettingsFolders
{
public:
    SettingsFolders()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, user.path());
        QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, system.path());
    }

    static void write(const QString &path, const QByteArray &value)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)
            || file.write("[General]\naskeffectchange=" + value + '\n') < 0)
            qFatal("the settings cannot be written");
    }
    QString userFile() const { return user.filePath(QStringLiteral("tessaline/metaeffect.conf")); }
    /// The lines of the user's file; empty if there is none.
    QStringList userLines() const
    {
        QFile file(userFile());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    QTemporaryDir user;
    QTemporaryDir system;
};

QStringList debugJournal(const LogCapture &log)
{
    QStringList notes;
    const QStringList lines = log.lines();
    for (const QString &line : lines) {
        if (line.startsWith(u"MetaEffect::updateEffectTimes"))
            notes.append(QStringLiteral("pass"));
        else if (!line.startsWith(u' '))
            notes.append(line);
    }
    return notes;
}

/// What the host does while the question is up.
enum Deletion { DeleteChild, DeleteForm, DeleteEffect, DeleteOtherChild };

void addAnswersAndDeletions()
{
    QTest::addColumn<int>("deletion");
    QTest::addColumn<int>("button");
    const char *const deletions[] = {"child", "form", "meta effect", "another child"};
    const char *const buttons[] = {"yes", "yes, never again", "no"};
    for (int deletion = 0; deletion < 4; ++deletion) {
        for (int button = 0; button < 3; ++button)
            QTest::addRow("%s, %s", deletions[deletion], buttons[button]) << deletion << button;
    }
}

} // namespace

class tst_TypeChange : public QObject
{
    Q_OBJECT

private slots:
    void init();

    // The question
    void questionIsPutInTheseWords();
    void questionBelongsToTheForm();
    void questionHasNoParentWithoutAnEditor();
    void childIsUntouchedWhileTheQuestionIsUp();
    void answerDecides_data();
    void answerDecides();
    void askedAboutEveryChangeUntilTheUserSaysNeverAgain();
    void withoutAskingTheChangeProceedsAtOnce();
    void childOfThatTypeIsAskedAboutAndLeftAlone_data();
    void childOfThatTypeIsAskedAboutAndLeftAlone();
    void childOfThatTypeIsLeftAloneWithoutAsking();
    void noLooksForTheRowByTheEid();

    // The user's settings
    void absentEntryIsShownAsAQuestionOnce();
    void storedTextDecidesWhetherToAsk_data();
    void storedTextDecidesWhetherToAsk();
    void neverAgainIsStoredAsFalse();
    void otherAnswersStoreNothing_data();
    void otherAnswersStoreNothing();
    void neverAgainKeepsOtherEntries();
    void othersSettingsAreNotRead_data();
    void othersSettingsAreNotRead();

    // What goes over
    void propertyGoesOverAs_data();
    void propertyGoesOverAs();
    void propertiesAreWrittenInThisOrder();
    void typeIsTheOneThatTheFactoryGave();
    void ownParametersAreNotCarried();
    void transparency01234567Becomes0123457();

    // The steps
    void changeTakesTheseSteps();
    void unselectedChildTakesTheSameSteps();
    void newChildIsSelectedBehindTheOthers();
    void stepsInAMetaEffect();
    void newChildIsConnectedAfterItsInitAndBeforeItsLevel();
    void newChildStandsBehindThoseOfItsPriority();
    void newChildIsSortedByThePriorityItTakesOver();
    void stoppedMetaEffectRunsAfterwards();
    void clockStartsAnew();
    void metaEffectIsDirtyAfterwards_data();
    void metaEffectIsDirtyAfterwards();
    void nextEidIsUntouched();
    void nextNameFollowsTheNumberOfChildren();
    void nullChildIsIgnored();
    void worksWithoutAnEditor();

    // Links and times
    void linksToTheChildSurviveAndTimesAreRecomputed();
    void linksFromTheChildSurvive();
    void newCycleTimeCounts();
    void newEndIsAnnounced();
    void newChildIsHeardWhenItsCycleChanges();
    void deepLevelIsHandedOn();

    // Nested meta effects
    void nestedMetaEffectMayBeReplaced();
    void nestedMetaEffectMayTakeThePlace();

    // While playing
    void changeWhilePlaying();
    void runningChildIsReplacedByAStoppedOne();
    void nothingIsDrawnBetweenTheSteps();

    // No new child
    void failedFactoryStopsHere();
    void failedFactoryLosesTheChild();
    void withoutAFactoryTheChildIsLost();

    // Meanwhile
    void hostMayDeleteMeanwhile_data();
    void hostMayDeleteMeanwhile();
    void formOpenedAnewMeanwhileShowsTheFormerType();
};

// Any warning fails, but for what the platform of the tests says of itself. Debug lines only where
// a test reads them.
void tst_TypeChange::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

// --- The question ---

void tst_TypeChange::questionIsPutInTheseWords()
{
    const AskSettingInMemory setting;
    ChangeAlone alone;
    StubEffect &child = alone.add(5);
    QStringList texts;
    QString defaultText;
    QString escapeText;
    QString caption;
    QString question;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    bool isModal = false;
    const QuestionUser user([&](QMessageBox &box) {
        const QList<QAbstractButton *> buttons = QuestionUser::buttons(box);
        for (const QAbstractButton *button : buttons)
            texts.append(button->text());
        defaultText = box.defaultButton()->text();
        escapeText = box.escapeButton()->text();
        caption = box.windowTitle();
        question = box.text();
        icon = box.icon();
        isModal = box.isModal();
    });

    alone.change(child);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(caption, QStringLiteral("Confirm Effect Type Change"));
    QCOMPARE(question, QStringLiteral("Are you sure that you want to change the effect type?\n"
                                      "All parameter values will be discarded."));
    QCOMPARE(texts, QStringList({"Yes", "Yes, and Don't Ask Again", "No"}));
    QCOMPARE(defaultText, QStringLiteral("Yes"));
    QCOMPARE(escapeText, QStringLiteral("No"));
    QCOMPARE(icon, QMessageBox::Warning);
    QVERIFY(isModal);
}

void tst_TypeChange::questionBelongsToTheForm()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    MetaWidget &form = stage.open();
    const QWidget *parent = nullptr;
    const QuestionUser user([&](QMessageBox &box) { parent = box.parentWidget(); });

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(parent, &form);
}

void tst_TypeChange::questionHasNoParentWithoutAnEditor()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    const QWidget anyWidget;
    const QWidget *parent = &anyWidget;
    bool isSeen = false;
    const QuestionUser user([&](QMessageBox &box) {
        isSeen = true;
        parent = box.parentWidget();
    });

    stage.effect.changeEffectType(child, chase);

    QVERIFY(isSeen);
    QVERIFY(!parent);
}

void tst_TypeChange::childIsUntouchedWhileTheQuestionIsUp()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.open();
    stage.selectEid(1);
    const QString before = savedText(stage.effect);
    QString meanwhile;
    bool isRunning = false;
    QStringList selected;
    const QuestionUser user([&](QMessageBox &) {
        meanwhile = savedText(stage.effect);
        isRunning = stage.effect.getState();
        selected = stage.selectedEids();
    });

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(meanwhile, before);
    QVERIFY(isRunning);
    QCOMPARE(selected, QStringList({"1"}));
}

void tst_TypeChange::answerDecides_data()
{
    QTest::addColumn<QuestionUser::Answer>("answer");
    QTest::addColumn<bool>("isChanged");
    QTest::addColumn<bool>("isAskedAgain");

    QTest::newRow("yes") << QuestionUser::pressing(QuestionUser::Yes) << true << true;
    QTest::newRow("yes, never again")
        << QuestionUser::pressing(QuestionUser::YesAndNeverAgain) << true << false;
    QTest::newRow("no") << QuestionUser::pressing(QuestionUser::No) << false << true;
    QTest::newRow("Return") << QuestionUser::typing(Qt::Key_Return) << true << true;
    QTest::newRow("Enter") << QuestionUser::typing(Qt::Key_Enter) << true << true;
    QTest::newRow("Escape") << QuestionUser::typing(Qt::Key_Escape) << false << true;
    QTest::newRow("closing") << QuestionUser::Answer([](QMessageBox &box) { box.close(); }) << false
                             << true;
    const auto spaceOn = [](int button) {
        return QuestionUser::Answer([button](QMessageBox &box) {
            QTest::keyClick(QuestionUser::buttons(box).at(button), Qt::Key_Space);
        });
    };
    QTest::newRow("space on yes") << spaceOn(QuestionUser::Yes) << true << true;
    QTest::newRow("space on never again")
        << spaceOn(QuestionUser::YesAndNeverAgain) << true << false;
    QTest::newRow("space on no") << spaceOn(QuestionUser::No) << false << true;
}

void tst_TypeChange::answerDecides()
{
    QFETCH(QuestionUser::Answer, answer);
    QFETCH(bool, isChanged);
    QFETCH(bool, isAskedAgain);
    const AskSettingInMemory setting;
    EditorStage stage;
    const QPointer<Effect> child(stage.add(1));
    stage.open();
    const QString before = savedText(stage.effect);
    const QuestionUser user(answer);

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(keys::type.readText(*stage.effect.getEffect(1)),
             isChanged ? chase : QStringLiteral("Stub"));
    QCOMPARE(savedText(stage.effect) == before, !isChanged);
    QCOMPARE(child.isNull(), isChanged);
    QCOMPARE(AskSettingInMemory::isOn, isAskedAgain);
    QCOMPARE(stage.effect.ownDirty(), isChanged);
    QVERIFY(stage.effect.getState());
    CHECK_SANITY(stage);
}

void tst_TypeChange::askedAboutEveryChangeUntilTheUserSaysNeverAgain()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    stage.add(1);
    int button = QuestionUser::Yes;
    const QuestionUser user([&](QMessageBox &box) { QuestionUser::pressing(button)(box); });

    stage.effect.changeEffectType(stage.effect.getEffect(1), chase);
    stage.effect.changeEffectType(stage.effect.getEffect(1), QStringLiteral("Stub"));
    button = QuestionUser::No;
    stage.effect.changeEffectType(stage.effect.getEffect(1), chase);
    button = QuestionUser::YesAndNeverAgain;
    stage.effect.changeEffectType(stage.effect.getEffect(1), chase);
    QCOMPARE(user.questions(), 4);

    stage.effect.changeEffectType(stage.effect.getEffect(1), QStringLiteral("Text"));

    QCOMPARE(user.questions(), 4);
    QCOMPARE(keys::type.readText(*stage.effect.getEffect(1)), QStringLiteral("Text"));
}

void tst_TypeChange::withoutAskingTheChangeProceedsAtOnce()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    StubEffect &child = alone.add(5);
    const QuestionUser user;

    alone.change(child);

    QCOMPARE(alone.roster.find(5), alone.made);
    QCOMPARE(user.questions(), 0);
    QVERIFY(!AskSettingInMemory::isOn);
}

void tst_TypeChange::childOfThatTypeIsAskedAboutAndLeftAlone_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("yes") << int(QuestionUser::Yes);
    QTest::newRow("yes, never again") << int(QuestionUser::YesAndNeverAgain);
    QTest::newRow("no") << int(QuestionUser::No);
}

void tst_TypeChange::childOfThatTypeIsAskedAboutAndLeftAlone()
{
    QFETCH(int, button);
    const AskSettingInMemory setting;
    EditorStage stage;
    const QPointer<Effect> child(stage.add(1));
    stage.open();
    stage.selectEid(1);
    stage.effect.setState(false);
    const QString before = savedText(stage.effect);
    const QuestionUser user(QuestionUser::pressing(button));

    stage.effect.changeEffectType(child, QStringLiteral("Stub"));

    QCOMPARE(user.questions(), 1);
    QVERIFY(child);
    QCOMPARE(savedText(stage.effect), before);
    QVERIFY(!stage.effect.ownDirty());
    QVERIFY(!stage.effect.getState()); // not even started
    QCOMPARE(AskSettingInMemory::isOn, button != QuestionUser::YesAndNeverAgain);
    CHECK_SANITY(stage);
}

void tst_TypeChange::childOfThatTypeIsLeftAloneWithoutAsking()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    StubEffect &child = alone.add(5, true);

    alone.change(child, QStringLiteral("Stub"));

    QCOMPARE(alone.journal, QStringList()); // not even deleted
    QVERIFY(child.changes.isEmpty());
}

void tst_TypeChange::noLooksForTheRowByTheEid()
{
    const AskSettingInMemory setting;
    ChangeAlone alone;
    StubEffect &child = alone.add(5);
    const QuestionUser user(QuestionUser::pressing(QuestionUser::No));

    alone.change(child);

    QCOMPARE(alone.journal, QStringList({"getRow 5 (5) on"}));
    QVERIFY(child.changes.isEmpty());
}

// --- The user's settings ---

// "Yes, and Don't Ask Again" holds for the next program of this user, too.
void tst_TypeChange::absentEntryIsShownAsAQuestionOnce()
{
    const SettingsFolders folders;
    const QuestionUser user(QuestionUser::pressing(QuestionUser::YesAndNeverAgain));
    for (int program = 0; program < 2; ++program) {
        EditorStage stage;
        stage.effect.changeEffectType(stage.add(1), chase);
        stage.effect.changeEffectType(stage.add(2), chase);
        QCOMPARE(user.questions(), 1);
        QCOMPARE(keys::type.readText(*stage.effect.getEffect(1)), chase);
        QCOMPARE(keys::type.readText(*stage.effect.getEffect(2)), chase);
    }
}

void tst_TypeChange::storedTextDecidesWhetherToAsk_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<bool>("isAsked");

    for (const char *text : {"true", "TRUE", "True", "1"})
        QTest::newRow(text) << QByteArray(text) << true;
    for (const char *text : {"false", "FALSE", "False", "0"})
        QTest::newRow(text) << QByteArray(text) << false;
    for (const char *text : {"no", "off", "2", "00", "maybe", "0, 0"})
        QTest::newRow(text) << QByteArray(text) << true;
    QTest::newRow("empty") << QByteArray() << true;
}

void tst_TypeChange::storedTextDecidesWhetherToAsk()
{
    QFETCH(QByteArray, stored);
    QFETCH(bool, isAsked);
    const SettingsFolders folders;
    SettingsFolders::write(folders.userFile(), stored);
    ChangeAlone alone;
    const QuestionUser user;

    alone.change(alone.add(5));

    QCOMPARE(user.questions(), isAsked ? 1 : 0);
    QCOMPARE(alone.roster.find(5), alone.made);
    QCOMPARE(folders.userLines(),
             QStringList({"[General]", "askeffectchange=" + QString::fromLatin1(stored)}));
}

void tst_TypeChange::neverAgainIsStoredAsFalse()
{
    const SettingsFolders folders;
    ChangeAlone alone;
    const QuestionUser user(QuestionUser::pressing(QuestionUser::YesAndNeverAgain));

    alone.change(alone.add(5));

    QCOMPARE(user.questions(), 1);
    QCOMPARE(folders.userLines(), QStringList({"[General]", "askeffectchange=false"}));
    QCOMPARE(QDir(folders.system.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
             QStringList());
}

void tst_TypeChange::otherAnswersStoreNothing_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("yes") << int(QuestionUser::Yes);
    QTest::newRow("no") << int(QuestionUser::No);
}

void tst_TypeChange::otherAnswersStoreNothing()
{
    QFETCH(int, button);
    const SettingsFolders folders;
    ChangeAlone alone;
    const QuestionUser user(QuestionUser::pressing(button));

    alone.change(alone.add(5));

    QCOMPARE(user.questions(), 1);
    QVERIFY(!QFileInfo::exists(folders.userFile()));
}

void tst_TypeChange::neverAgainKeepsOtherEntries()
{
    const SettingsFolders folders;
    SettingsFolders::write(folders.userFile(), "true\nwidth=12");
    ChangeAlone alone;
    const QuestionUser user(QuestionUser::pressing(QuestionUser::YesAndNeverAgain));

    alone.change(alone.add(5));

    QCOMPARE(user.questions(), 1);
    QCOMPARE(folders.userLines(), QStringList({"[General]", "askeffectchange=false", "width=12"}));
}

void tst_TypeChange::othersSettingsAreNotRead_data()
{
    QTest::addColumn<bool>("isSystemWide");
    QTest::addColumn<QString>("file");

    QTest::newRow("the user's for all products") << false << QStringLiteral("tessaline.conf");
    QTest::newRow("the system's") << true << QStringLiteral("tessaline/metaeffect.conf");
    QTest::newRow("the system's for all products") << true << QStringLiteral("tessaline.conf");
}

void tst_TypeChange::othersSettingsAreNotRead()
{
    QFETCH(bool, isSystemWide);
    QFETCH(QString, file);
    const SettingsFolders folders;
    SettingsFolders::write((isSystemWide ? folders.system : folders.user).filePath(file), "false");
    ChangeAlone alone;
    const QuestionUser user;

    alone.change(alone.add(5));

    QCOMPARE(user.questions(), 1);
}

// --- What goes over ---

void tst_TypeChange::propertyGoesOverAs_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("former"); // null: the property is missing
    QTest::addColumn<QString>("now");

    using Rows = std::vector<std::pair<QString, QString>>;
    const auto addRows = [](const QString &key, const Rows &rows) {
        for (const auto &[former, now] : rows)
            QTest::addRow("%s, \"%s\"", qPrintable(key), qPrintable(former))
                << key << former << now;
    };
    const auto addMissing = [](const QString &key, const QString &now) {
        QTest::addRow("%s, missing", qPrintable(key)) << key << QString() << now;
    };
    // Every effect has those.
    const QStringList everEffects = {"begin",   "end",      "fadein",
                                     "fadeout", "priority", "transparency"};

    addRows(QStringLiteral("name"), {{"Sky & <Sea>", "Sky & <Sea>"},
                                     {" padded ", " padded "},
                                     {"007", "007"},
                                     {"true", "true"},
                                     {"", ""}});
    addMissing(QStringLiteral("name"), QStringLiteral(""));
    for (const char *key : {"gid", "priority", "begin", "end", "fadein", "fadeout", "eid",
                            "starttype", "startfixedtime", "startlinkeid", "endtype",
                            "endfixedtime", "endlinkeid", "endcyclecount"}) {
        addRows(key, {{"0", "0"},
                      {"12", "12"},
                      {"4294967295", "4294967295"},
                      {"4294967296", "0"},
                      {"007", "7"},
                      {"+5", "5"},
                      {" 12 ", "12"},
                      {"-1", "0"},
                      {"1.5", "0"},
                      {"1e3", "0"},
                      {"0x10", "0"},
                      {"abc", "0"},
                      {"true", "0"},
                      {"", "0"}});
        if (!everEffects.contains(QLatin1String(key)))
            addMissing(key, QStringLiteral("0"));
    }
    for (const char *key : {"transparency", "startlinkoffset", "endlinkoffset"}) {
        addRows(key, {{"0.1234567", "0.123457"},
                      {"0.123456", "0.123456"},
                      {"1", "1"},
                      {"1.50", "1.5"},
                      {"-250", "-250"},
                      {"1e3", "1000"},
                      {"1234567", "1.23457e+06"},
                      {"-1234567.8", "-1.23457e+06"},
                      {"0.00001", "1e-05"},
                      {"inf", "inf"},
                      {"nan", "nan"},
                      {"1,5", "0"},
                      {"abc", "0"},
                      {"true", "0"},
                      {"", "0"}});
        if (!everEffects.contains(QLatin1String(key)))
            addMissing(key, QStringLiteral("0"));
    }
    for (const char *key : {"startlinkstart", "endlinkstart"}) {
        addRows(key, {{"1", "1"},
                      {"0", "0"},
                      {"true", "1"},
                      {"TRUE", "1"},
                      {"True", "1"},
                      {"false", "0"},
                      {"FALSE", "0"},
                      {"2", "0"},
                      {"-1", "0"},
                      {"yes", "0"},
                      {"", "0"}});
        addMissing(key, QStringLiteral("0"));
    }
}

void tst_TypeChange::propertyGoesOverAs()
{
    QFETCH(QString, key);
    QFETCH(QString, former);
    QFETCH(QString, now);
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    auto *child = new Effect(&alone.map, 0);
    if (!former.isNull())
        child->setProperty(key, former);
    bool isThere = false;
    child->getPropertyString(key, &isThere);
    QCOMPARE(isThere, !former.isNull());
    alone.add(child);

    alone.change(*child);

    QVERIFY(alone.made);
    QCOMPARE(alone.made->getPropertyString(key, &isThere), now);
    QVERIFY(isThere);
    QVERIFY2(alone.writes.contains(key + u'=' + now), qPrintable(alone.writes.join(u' ')));
}

void tst_TypeChange::propertiesAreWrittenInThisOrder()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    StubEffect &child = alone.add(9);
    child.with("name", QStringLiteral("Sky")).with("gid", 10).with("transparency", 0.25);
    child.with("priority", 3).with("begin", 4).with("end", 5).with("fadein", 6);
    child.with("fadeout", 8).with("starttype", 1).with("startfixedtime", 11);
    child.with("startlinkstart", QStringLiteral("true")).with("startlinkeid", 12);
    child.with("startlinkoffset", -1.5).with("endtype", 2).with("endfixedtime", 13);
    child.with("endlinkeid", 14).with("endlinkstart", QStringLiteral("1"));
    child.with("endlinkoffset", 2.5).with("endcyclecount", 15);

    alone.change(child);

    QCOMPARE(alone.writes, QStringList({"name=Sky",
                                        "gid=10",
                                        "transparency=0.25",
                                        "priority=3",
                                        "begin=4",
                                        "end=5",
                                        "fadein=6",
                                        "fadeout=8",
                                        "eid=9",
                                        "starttype=1",
                                        "startfixedtime=11",
                                        "startlinkstart=1",
                                        "startlinkeid=12",
                                        "startlinkoffset=-1.5",
                                        "endtype=2",
                                        "endfixedtime=13",
                                        "endlinkeid=14",
                                        "endlinkstart=1",
                                        "endlinkoffset=2.5",
                                        "endcyclecount=15"}));
    QStringList written;
    for (const QString &write : std::as_const(alone.writes))
        written.append(write.section(u'=', 0, 0));
    QCOMPARE(written, carriedKeys);
}

void tst_TypeChange::typeIsTheOneThatTheFactoryGave()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;

    alone.change(alone.add(5));

    QCOMPARE(alone.made->text("type"), QStringLiteral("Made"));
}

void tst_TypeChange::ownParametersAreNotCarried()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    StubEffect &child = alone.add(5);
    child.with("caption", QStringLiteral("Hello")).with("loop", 1).with("cycletime", 40);

    alone.change(child);

    for (const char *key : {"caption", "loop", "cycletime"}) {
        bool isThere = true;
        alone.made->getPropertyString(QString::fromLatin1(key), &isThere);
        QVERIFY2(!isThere, key);
    }
    QCOMPARE(alone.writes.size(), carriedKeys.size());
}

void tst_TypeChange::transparency01234567Becomes0123457()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("transparency", QStringLiteral("0.1234567"));

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(keys::transparency.readText(*stage.effect.getEffect(1)), QStringLiteral("0.123457"));
}

// --- The steps ---

void tst_TypeChange::changeTakesTheseSteps()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    alone.add(3);
    StubEffect &child = alone.add(5, true);
    child.with("priority", 1);
    alone.roster.sort();
    alone.add(9).with("priority", 2);
    alone.roster.sort();

    alone.change(child);

    QCOMPARE(alone.journal, QStringList({"init effect (3 9)", "delete (3 9)", "make (3 9)",
                                         "written (3 9)", "init child (3 9)", "adopt 5 (3 9)",
                                         "init effect (3 5 9)", "setDirty true (3 5 9)",
                                         "updateEffectTimes (3 5 9)", "refreshWidgets (3 5* 9)"}));
    QVERIFY(alone.effect.getState());
}

void tst_TypeChange::unselectedChildTakesTheSameSteps()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    alone.add(3, true);
    StubEffect &child = alone.add(5);

    alone.change(child);

    QCOMPARE(alone.journal, QStringList({"init effect (3*)", "delete (3*)", "make (3*)",
                                         "written (3*)", "init child (3*)", "adopt 5 (3*)",
                                         "init effect (3* 5)", "setDirty true (3* 5)",
                                         "updateEffectTimes (3* 5)", "refreshWidgets (3* 5)"}));
    QVERIFY(alone.effect.getState());
}

void tst_TypeChange::newChildIsSelectedBehindTheOthers()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    StubEffect &first = alone.add(3, true);
    StubEffect &second = alone.add(5, true);

    alone.change(first);

    QCOMPARE(alone.roster.selection().count(), 2);
    QCOMPARE(alone.roster.selection().at(0), &second);
    QCOMPARE(alone.roster.selection().at(1), alone.made);
}

// The meta effect's own "end" tells of its two inits: the first sees only the other child, the
// second the times that were taken over, the pass after it those that the rules give.
void tst_TypeChange::stepsInAMetaEffect()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    stage.add(3)->with("endtype", 0).with("endfixedtime", 2000);
    WidgetStub *child = stage.add(5);
    child->with("endtype", 2).with("endcyclecount", 4);
    child->whileDying = [&](StubEffect &) {
        qDebug("delete %d", stage.effect.getEffects().count());
    };
    stage.effect.updateEffectTimes();
    stage.open();
    stage.selectEid(5);
    QCOMPARE(stage.effect.text("end"), QStringLiteral("4000"));
    const auto state = [&] { return stage.effect.getState() ? "running" : "stopped"; };
    stage.factory.addType(chase, [&](MapModel *mapModel) {
        qDebug("make %s", state());
        auto *made = new HookStub(mapModel, chase, 77);
        made->cycleTime = 1500;
        made->onInit = [&] { qDebug("init child"); };
        made->onLevel = [&, made] {
            qDebug("level %d of %d", made->level(), stage.effect.getEffects().count());
        };
        made->onWidget = [&] {
            qDebug("widget %s, selected %s, %s", state(),
                   qPrintable(stage.selectedEids().join(u' ')),
                   stage.effect.ownDirty() ? "dirty" : "clean");
        };
        return made;
    });
    EffectHost::setObserver(stage.effect, [&](const QString &key, const QString &text) {
        if (key == u"end")
            qDebug("end=%s %s", qPrintable(text), state());
    });
    const QuestionUser user([&](QMessageBox &box) {
        qDebug("question %s", state());
        QuestionUser::pressing(QuestionUser::Yes)(box);
    });
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
    const LogCapture log(QtDebugMsg);

    stage.effect.changeEffectType(child, chase);

    QStringList notes = debugJournal(log);
    const qsizetype widget = notes.indexOf(QStringLiteral("widget stopped, selected 5, dirty"));
    QVERIFY2(widget > 0, qPrintable(notes.join(u'\n')));
    QCOMPARE(notes.first(widget), QStringList({"question running", "end=2000 stopped", "delete 1",
                                               "make stopped", "init child", "level 1 of 1",
                                               "end=4000 stopped", "pass", "end=6000 stopped"}));
    QCOMPARE(notes.filter(QStringLiteral("widget")).size(), 1);
    QVERIFY(stage.effect.getState());
    EffectHost::setObserver(stage.effect, {});
    QCOMPARE(stage.effect.text("end"), QStringLiteral("6000"));
    CHECK_SANITY(stage);
}

void tst_TypeChange::newChildIsConnectedAfterItsInitAndBeforeItsLevel()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(5);
    stage.factory.addType(chase, [&](MapModel *mapModel) {
        auto *made = new HookStub(mapModel, chase, 77);
        made->onInit = [made] {
            qDebug("init");
            emit made->cycleTimeChanged(1);
        };
        made->onLevel = [made] {
            qDebug("level");
            emit made->cycleTimeChanged(2);
            qDebug("levelled");
        };
        return made;
    });
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
    const LogCapture log(QtDebugMsg);

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(debugJournal(log), QStringList({"init", "level", "pass", "levelled", "pass"}));
}

void tst_TypeChange::newChildStandsBehindThoseOfItsPriority()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.add(2);
    stage.add(3)->with("priority", 7);
    stage.effect.init();

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(stage.eids(), QStringList({"2", "1", "3"}));
}

void tst_TypeChange::newChildIsSortedByThePriorityItTakesOver()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    for (const quint32 eid : {1, 2, 3})
        stage.add(eid)->with("priority", eid * 10);
    stage.effect.init();

    stage.effect.changeEffectType(stage.effect.getEffect(2), chase);

    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
    QCOMPARE(stage.effect.getEffect(2)->priority(), 20);
}

void tst_TypeChange::stoppedMetaEffectRunsAfterwards()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.effect.setState(false);

    stage.effect.changeEffectType(child, chase);

    QVERIFY(stage.effect.getState());
}

void tst_TypeChange::clockStartsAnew()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 0).with("endfixedtime", 60000);
    stage.effect.updateEffectTimes();
    stage.effect.init();
    stage.frameAt(2500);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 2500ul);

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(stage.effect.getTotalElapsedTime(), 0ul);
}

void tst_TypeChange::metaEffectIsDirtyAfterwards_data()
{
    QTest::addColumn<bool>("isOpen");
    QTest::newRow("with an editor") << true;
    QTest::newRow("without an editor") << false;
}

void tst_TypeChange::metaEffectIsDirtyAfterwards()
{
    QFETCH(bool, isOpen);
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    if (isOpen)
        stage.open();
    stage.effect.setOwnDirty(false);

    stage.effect.changeEffectType(child, chase);

    QVERIFY(stage.effect.ownDirty());
}

// Neither by the child's eid, nor by one that it was given behind the numbers' back.
void tst_TypeChange::nextEidIsUntouched()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    StubEffect &child = alone.add(5);
    alone.roster.raiseNextEid(child);
    child.with("eid", 50);

    alone.change(child);

    QCOMPARE(alone.roster.find(50), alone.made);
    QCOMPARE(alone.roster.nextEid(), 6u);
}

void tst_TypeChange::nextNameFollowsTheNumberOfChildren()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    stage.open();
    const PickerUser picker;
    for (int i = 0; i < 3; ++i)
        QTest::mouseClick(stage.form().m_newEffectButton, Qt::LeftButton);
    stage.add(20);
    stage.add(21);

    stage.effect.changeEffectType(stage.effect.getEffect(0), QStringLiteral("Stub"));
    QTest::mouseClick(stage.form().m_newEffectButton, Qt::LeftButton);

    QCOMPARE(keys::name.readText(*stage.effect.getEffect(22)), QStringLiteral("Effect 6"));
    QCOMPARE(picker.pickers(), 4);
}

void tst_TypeChange::nullChildIsIgnored()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    stage.add(1);
    stage.effect.setOwnDirty(false);
    const QString before = savedText(stage.effect);
    const QuestionUser user;

    stage.effect.changeEffectType(nullptr, chase);

    QCOMPARE(user.questions(), 0);
    QCOMPARE(savedText(stage.effect), before);
    QVERIFY(!stage.effect.ownDirty());
}

void tst_TypeChange::worksWithoutAnEditor()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    bool isDeleted = false;
    WidgetStub *child = stage.add(1);
    child->deleted = &isDeleted;
    child->with("name", QStringLiteral("Sky")).with("endtype", 0).with("endfixedtime", 700);
    const QuestionUser user;

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(user.questions(), 1);
    QVERIFY(isDeleted);
    auto *successor = qobject_cast<WidgetStub *>(stage.effect.getEffect(1));
    QVERIFY(successor);
    QCOMPARE(successor->text("type"), chase);
    QCOMPARE(successor->text("name"), QStringLiteral("Sky"));
    QCOMPARE(successor->text("end"), QStringLiteral("700"));
    QCOMPARE(successor->inits, 1);
    QCOMPARE(successor->widgetRequests, 0);
    QCOMPARE(successor->level(), 1);
    QVERIFY(!stage.effect.editorWidget());
}

// --- Links and times ---

void tst_TypeChange::linksToTheChildSurviveAndTimesAreRecomputed()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 2).with("endcyclecount", 2);
    WidgetStub *follower = stage.add(2);
    follower->with("starttype", 1).with("startlinkeid", 1).with("startlinkstart", 0);
    follower->with("startlinkoffset", 250).with("endtype", 0).with("endfixedtime", 500);
    stage.effect.updateEffectTimes();
    QCOMPARE(follower->beginTime(), 2250u);
    stage.open();
    stage.factory.addType(chase, [](MapModel *mapModel) {
        auto *made = new WidgetStub(mapModel, chase);
        made->cycleTime = 3000;
        return made;
    });

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(follower->text("starttype"), QStringLiteral("1"));
    QCOMPARE(follower->text("startlinkeid"), QStringLiteral("1"));
    QCOMPARE(stage.effect.getEffect(1)->endTime(), 6000u);
    QCOMPARE(follower->beginTime(), 6250u);
    QCOMPARE(follower->endTime(), 6750u);
    QCOMPARE(stage.table().text(stage.rowOf(2), StartColumn), QStringLiteral("6.25"));
    QCOMPARE(stage.table().text(stage.rowOf(1), EndColumn), QStringLiteral("6"));
    bool isLoop = false;
    QCOMPARE(stage.staleTimes(&isLoop), QString());
}

void tst_TypeChange::linksFromTheChildSurvive()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    stage.add(1)->with("endtype", 0).with("endfixedtime", 800);
    stage.add(2)
        ->with("starttype", 0)
        .with("startfixedtime", 900)
        .with("endtype", 0)
        .with("endfixedtime", 2100);
    WidgetStub *child = stage.add(3);
    child->with("starttype", 1).with("startlinkeid", 1).with("startlinkstart", 0);
    child->with("startlinkoffset", 100).with("endtype", 1).with("endlinkeid", 2);
    child->with("endlinkstart", 0).with("endlinkoffset", -500);

    stage.effect.changeEffectType(child, chase);

    const Effect &successor = *stage.effect.getEffect(3);
    QCOMPARE(successor.beginTime(), 900u);
    QCOMPARE(successor.endTime(), 2500u);
    QCOMPARE(keys::startRule.linkEid.read(successor), 1u);
    QCOMPARE(keys::endRule.linkEid.read(successor), 2u);
}

void tst_TypeChange::newCycleTimeCounts()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("starttype", 0).with("startfixedtime", 500).with("endtype", 2);
    child->with("endcyclecount", 3);
    stage.factory.addType(chase, [](MapModel *mapModel) {
        auto *made = new WidgetStub(mapModel, chase);
        made->cycleTime = 10;
        return made;
    });

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(stage.effect.getEffect(1)->endTime(), 530u);
}

void tst_TypeChange::newEndIsAnnounced()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 2).with("endcyclecount", 1);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.factory.addType(chase, [](MapModel *mapModel) {
        auto *made = new WidgetStub(mapModel, chase);
        made->cycleTime = 4000;
        return made;
    });
    const QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.first().first().toULongLong(), 4000ull);
    QCOMPARE(stage.effect.getCycleTime(), 4000ul);
}

void tst_TypeChange::newChildIsHeardWhenItsCycleChanges()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 2).with("endcyclecount", 2);
    stage.open();
    stage.effect.changeEffectType(child, chase);
    auto *successor = qobject_cast<WidgetStub *>(stage.effect.getEffect(1));
    QVERIFY(successor);
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
    const LogCapture log(QtDebugMsg);

    successor->setCycleTime(1700);

    QCOMPARE(debugJournal(log), QStringList({"pass"})); // once connected, not twice
    QCOMPARE(successor->endTime(), 3400u);
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("3.4"));
}

void tst_TypeChange::deepLevelIsHandedOn()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    stage.effect.setLevel(4);

    stage.effect.changeEffectType(stage.add(1), chase);

    QCOMPARE(qobject_cast<WidgetStub *>(stage.effect.getEffect(1))->level(), 5);
}

// --- Nested meta effects ---

void tst_TypeChange::nestedMetaEffectMayBeReplaced()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    nested->with("name", QStringLiteral("Inner"));
    int deletions = 0;
    for (const quint32 eid : {1, 2})
        stage.addTo(*nested, eid)->deletions = &deletions;
    stage.open();
    stage.selectEid(1);
    QPointer<QWidget> innerForm = nested->editorWidget();
    QVERIFY(innerForm);

    stage.effect.changeEffectType(nested, chase);

    QCOMPARE(deletions, 2);
    QVERIFY(!innerForm);
    QCOMPARE(stage.row(0).at(NameColumn), QStringLiteral("Inner"));
    QCOMPARE(keys::name.readText(*stage.effect.getEffect(1)), QStringLiteral("Inner"));
    QCOMPARE(keys::type.readText(*stage.effect.getEffect(1)), chase);
    CHECK_SANITY(stage);
}

void tst_TypeChange::nestedMetaEffectMayTakeThePlace()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    stage.effect.setLevel(2);
    WidgetStub *child = stage.add(7);
    child->with("endtype", 2).with("endcyclecount", 3).with("priority", 4);
    stage.open();
    stage.selectEid(7);

    stage.effect.changeEffectType(child, QStringLiteral("Meta Effect"));

    auto *nested = dynamic_cast<OpenMetaEffect *>(stage.effect.getEffect(7));
    QVERIFY(nested);
    QCOMPARE(nested->level(), 3);
    QCOMPARE(nested->text("name"), QStringLiteral("Child 7"));
    QCOMPARE(nested->text("priority"), QStringLiteral("4"));
    QVERIFY(nested->getEffects().isEmpty());
    QCOMPARE(nested->text("endcyclecount"), QStringLiteral("3"));
    QVERIFY(nested->editorWidget());
    QVERIFY(stage.form().m_effectParameterFrame->isAncestorOf(nested->editorWidget()));
    QCOMPARE(stage.selectedEids(), QStringList({"7"}));
    CHECK_SANITY(stage);
}

// --- While playing ---

void tst_TypeChange::changeWhilePlaying()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 0).with("endfixedtime", 5000);
    WidgetStub *other = stage.add(2);
    other->with("endtype", 0).with("endfixedtime", 5000);
    stage.effect.updateEffectTimes();
    stage.effect.init();
    stage.open();
    stage.frameAt(100);
    QVERIFY(child->getState());
    stage.map.clock().step(stage.noon.addMSecs(250));
    int framesMeanwhile = 0;
    const QuestionUser user([&](QMessageBox &box) {
        stage.frameAt(200);
        framesMeanwhile = child->draws;
        QuestionUser::pressing(QuestionUser::Yes)(box);
    });

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(framesMeanwhile, 2); // the question does not stop the show
    auto *successor = qobject_cast<WidgetStub *>(stage.effect.getEffect(1));
    QVERIFY(successor);
    QCOMPARE(successor->draws, 0);
    QVERIFY(stage.effect.getState());
    stage.frameAt(300);
    QVERIFY(successor->getState());
    QCOMPARE(successor->draws, 1);
    QCOMPARE(other->draws, 3);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 50ul); // anew since the change
}

void tst_TypeChange::runningChildIsReplacedByAStoppedOne()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 0).with("endfixedtime", 5000);
    stage.effect.updateEffectTimes();
    stage.frameAt(100);
    QVERIFY(child->getState());

    stage.effect.changeEffectType(child, chase);

    QVERIFY(!stage.effect.getEffect(1)->getState());
}

void tst_TypeChange::nothingIsDrawnBetweenTheSteps()
{
    const AskSettingInMemory setting(false);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    WidgetStub *other = stage.add(2);
    for (WidgetStub *added : {child, other})
        added->with("endtype", 0).with("endfixedtime", 5000);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.selectEid(1);
    stage.frameAt(100);
    QCOMPARE(other->draws, 1);
    int frames = 0;
    const auto frame = [&] { stage.frameAt(100 + 10 * ++frames); };
    child->whileDying = [&](StubEffect &) { frame(); };
    stage.factory.addType(chase, [&](MapModel *mapModel) {
        frame();
        auto *made = new HookStub(mapModel, chase);
        made->onInit = frame;
        made->onLevel = frame;
        made->onWidget = frame;
        return made;
    });

    stage.effect.changeEffectType(child, chase);

    QVERIFY2(frames >= 5, qPrintable(QString::number(frames)));
    QCOMPARE(other->draws, 1);
    frame();
    QCOMPARE(other->draws, 2);
}

// --- No new child ---

void tst_TypeChange::failedFactoryStopsHere()
{
    const AskSettingInMemory setting(false);
    ChangeAlone alone;
    alone.add(3);
    StubEffect &child = alone.add(5, true);

    alone.change(child, QStringLiteral("Broken"));

    QCOMPARE(alone.journal, QStringList({"init effect (3)", "delete (3)", "make none (3)"}));
    QVERIFY(alone.roster.selection().isEmpty());
    QVERIFY(!alone.effect.getState());
}

void tst_TypeChange::failedFactoryLosesTheChild()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    bool isDeleted = false;
    WidgetStub *child = stage.add(1);
    child->deleted = &isDeleted;
    stage.add(2);
    stage.open();
    stage.selectEid(1);
    stage.effect.setOwnDirty(false);
    const QStringList row = stage.row(stage.rowOf(1));
    const QuestionUser user;

    stage.effect.changeEffectType(child, QStringLiteral("Nothing"));

    QCOMPARE(user.questions(), 1); // nothing is reported
    QVERIFY(isDeleted);
    QCOMPARE(stage.eids(), QStringList({"2"}));
    QCOMPARE(stage.table().rowCount(), 2);
    QCOMPARE(stage.row(stage.rowOf(1)), row);
    QVERIFY(stage.selectedEids().isEmpty());
    QVERIFY(!stage.effect.getState());
    QVERIFY(!stage.effect.ownDirty());
}

void tst_TypeChange::withoutAFactoryTheChildIsLost()
{
    const AskSettingInMemory setting(false);
    rehearsal::StageMap map;
    OpenMetaEffect effect(&map, 0);
    auto *child = new StubEffect(&map, 1);
    effect.addChild(child);
    effect.setState(true);

    effect.changeEffectType(child, chase);

    QVERIFY(effect.getEffects().isEmpty());
    QVERIFY(!effect.getState());
}

// --- Meanwhile ---

void tst_TypeChange::hostMayDeleteMeanwhile_data()
{
    addAnswersAndDeletions();
}

void tst_TypeChange::hostMayDeleteMeanwhile()
{
    QFETCH(int, deletion);
    QFETCH(int, button);
    const AskSettingInMemory setting;
    auto stage = std::make_unique<EditorStage>();
    auto outer = std::make_unique<OpenMetaEffect>(&stage->map, 0);
    OpenMetaEffect *effect = stage->addNestedTo(*outer, 1);
    StubEffect *child = stage->addTo(*effect, 1);
    StubEffect *other = stage->addTo(*effect, 2);
    effect->internalGetEffectWidget()->show();
    const QuestionUser user([&](QMessageBox &box) {
        const QPointer<QMessageBox> open(&box);
        switch (deletion) {
        case DeleteChild: effect->deleteEffect(child); break;
        case DeleteForm: delete effect->editorWidget(); break;
        case DeleteEffect: outer.reset(); break;
        default: effect->deleteEffect(other); break;
        }
        if (open)
            QuestionUser::pressing(button)(*open);
    });

    effect->changeEffectType(child, chase);

    QCOMPARE(user.questions(), 1);
    switch (deletion) {
    case DeleteChild: QCOMPARE(effect->getEffects().count(), 1); break;
    case DeleteForm: // a box that goes with the form says no
        QCOMPARE(keys::type.readText(*effect->getEffect(1)), QStringLiteral("Stub"));
        QVERIFY(AskSettingInMemory::isOn);
        break;
    case DeleteEffect: QVERIFY(!outer); break;
    default:
        QCOMPARE(effect->getEffects().count(), 1);
        QCOMPARE(keys::type.readText(*effect->getEffect(1)),
                 button == QuestionUser::No ? QStringLiteral("Stub") : chase);
        break;
    }
    if (deletion == DeleteChild || deletion == DeleteOtherChild)
        QCOMPARE(AskSettingInMemory::isOn, button != QuestionUser::YesAndNeverAgain);
}

void tst_TypeChange::formOpenedAnewMeanwhileShowsTheFormerType()
{
    const AskSettingInMemory setting;
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    stage.open();
    const QuestionUser user([&](QMessageBox &) {
        delete stage.effect.editorWidget();
        stage.open();
    });

    stage.effect.changeEffectType(child, chase);

    QCOMPARE(user.questions(), 1);
    QCOMPARE(stage.row(0).at(TypeColumn), QStringLiteral("Stub"));
    QCOMPARE(keys::type.readText(*stage.effect.getEffect(1)), QStringLiteral("Stub"));
    CHECK_SANITY(stage);
}

QTEST_MAIN(tst_TypeChange)
#include "tst_TypeChange.moc"
