#include "ChildKeys.h"
#include "EffectColumns.h"
#include "EffectHost.h"
#include "EffectTypes.h"
#include "LargeShow.h"
#include "MetaStage.h"
#include "Playback.h"
#include "RandomHand.h"
#include "ShowDocument.h"
#include "ShowFile.h"
#include "Soak.h"
#include "TypeChange.h"

#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace {

/// Editors are worked in down to this level; the show's own effects have level 0.
constexpr int deepestEditor = 3;
/// Forms that are open at once, those within others not counted.
constexpr std::size_t mostWindows = 8;
constexpr qint64 nsPerFrame = 1'000'000'000 / rehearsal::Playback::framesPerSecond;
constexpr int actionsPerRoundTrip = 1000;
/// Who does not want to be asked before a type is changed wants to be asked again so often.
constexpr int actionsPerQuestion = 50;
/// So many of the newest actions are told when something is wrong.
constexpr std::size_t toldActions = 40;
/// Most seeks go to a place before this.
constexpr quint32 nearMs = 120'000;

bool asksBeforeTypeChange = true;

/// The host's types, and meta effects of which one can tell whether their editor is open.
void addTypes(rehearsal::EffectFactory &factory)
{
    rehearsal::addHostTypes(factory);
    factory.addType(QStringLiteral("Meta Effect"),
                    [](MapModel *map) { return new OpenMetaEffect(map, 0); });
}

/// Two meta effects at the top, each with others in it, two levels deep.
QByteArray showToEdit()
{
    soak::LargeShow show{.lights = 20, .groups = 4, .lightsOfGroup = 6, .children = 3, .nested = 2};
    show.nestedChildren = 3;
    show.depth = 2;
    QByteArray text = show.text();
    // Each pass would make a nested one that is so many cycles long so many times longer.
    text.replace(
        "<property key=\"endtype\">2</property><property key=\"endcyclecount\">1</property>",
        "<property key=\"endtype\">0</property><property key=\"endfixedtime\">6000</property>");
    const QByteArray end("</show>");
    text.chop(end.size());
    const QByteArray map("</map>");
    const qsizetype effects = text.indexOf(map) + map.size();
    return text + text.sliced(effects) + end;
}

/// A text without the times that playing and passes write.
QByteArray withoutTimes(const QByteArray &text)
{
    QByteArray rest;
    for (const QByteArray &line : text.split('\n')) {
        if (!line.contains("<property key=\"begin\"") && !line.contains("<property key=\"end\""))
            rest += line + '\n';
    }
    return rest;
}

/// A show that plays while somebody does anything at all to it, in the editors, which the host
/// opens and closes as it likes, and in the host.
class EditedShow
{
public:
    explicit EditedShow(quint32 seed)
        : m_dice(seed),
          m_hand(m_dice, {.groups = {"Group 1", "Group 3", ""}, .longestPaste = 20'000}),
          m_document(addTypes),
          m_playback([this] { return m_wallNs; })
    {
        using Document = rehearsal::ShowDocument;
        QObject::connect(&m_document, &Document::showAboutToBeReplaced,
                         [this](Document::Replacement) { closeWindows(); });
        QObject::connect(&m_document, &Document::showReplaced,
                         [this](Document::Replacement replacement) { takeShow(replacement); });
        QObject::connect(&m_document, &Document::edited, &m_playback,
                         &rehearsal::Playback::refresh);
        openShow();
    }

    ~EditedShow()
    {
        closeWindows();
        m_playback.setShow(nullptr);
    }
    Q_DISABLE_COPY_MOVE(EditedShow)

    /// Does something, lets what follows from it happen, shows a frame, and tells what it did.
    QString act()
    {
        QString deed = m_dice.oneIn(5) ? actAsHost() : actInEditor();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_wallNs += nsPerFrame * (1 + m_dice.roll(30));
        m_playback.tick();
        return deed;
    }

    /// Empty when all is well.
    QString complaint()
    {
        noteNewForms();
        for (OpenMetaEffect *effect : metaEffects()) {
            const QString trouble = complaintOf(*effect);
            if (!trouble.isEmpty())
                return QStringLiteral("\"%1\" at level %2: %3")
                    .arg(effect->text("name"))
                    .arg(effect->level())
                    .arg(trouble);
        }
        return {};
    }

    /// Empty when the show is the same after it was saved and read again.
    QString roundTripComplaint()
    {
        m_document.flush();
        rehearsal::FileFault fault;
        const auto copy =
            rehearsal::parseShow(m_document.text(), QStringLiteral("saved"), addTypes, &fault);
        if (!copy)
            return fault.message();
        const QByteArray again = rehearsal::definitionText(*copy);
        if (withoutTimes(again) != withoutTimes(m_document.text()))
            return QStringLiteral("it is not read as it was saved:\n%1\n%2")
                .arg(QString::fromUtf8(m_document.text()), QString::fromUtf8(again));
        return {};
    }

    qint64 nestedForms = 0; ///< forms within others, or beside them, that were worked in
    qint64 hostClosings = 0;
    qint64 closingsMidway = 0;
    qint64 rebuildings = 0;
    qint64 checkedTimes = 0;    ///< how often all times of an effect were compared with the rules
    qint64 checkedChildren = 0; ///< how often it was looked whether a child runs as it should

private:
    // --- What there is ---

    std::vector<OpenMetaEffect *> metaEffects() const
    {
        std::vector<OpenMetaEffect *> found;
        for (Effect *effect : m_document.show()->effects())
            collect(*effect, found);
        return found;
    }

    static void collect(Effect &effect, std::vector<OpenMetaEffect *> &found)
    {
        auto *metaEffect = dynamic_cast<OpenMetaEffect *>(&effect);
        if (!metaEffect)
            return;
        found.push_back(metaEffect);
        const EffectList children = metaEffect->getEffects();
        for (Effect *child : children)
            collect(*child, found);
    }

    static MetaWidget *formOf(const OpenMetaEffect &effect)
    {
        return qobject_cast<MetaWidget *>(effect.editorWidget());
    }

    std::vector<FormUser> openForms() const
    {
        std::vector<FormUser> forms;
        for (OpenMetaEffect *effect : metaEffects()) {
            MetaWidget *form = formOf(*effect);
            if (form && form->isVisible() && effect->level() <= deepestEditor)
                forms.emplace_back(*effect, *form);
        }
        return forms;
    }

    // Every other time one of a nested effect, if there is any.
    FormUser anyForm()
    {
        std::vector<FormUser> forms = openForms();
        if (forms.empty()) {
            openWindow(*metaEffects().front());
            forms = openForms();
        }
        std::vector<FormUser> nested;
        std::copy_if(forms.begin(), forms.end(), std::back_inserter(nested),
                     [](const FormUser &user) { return levelOf(user) > 0; });
        return m_dice.pick(nested.empty() || m_dice.oneIn(2) ? forms : nested);
    }

    static int levelOf(const FormUser &user) { return EffectHost::level(user.effect()); }

    // --- What the user does ---

    QString actInEditor()
    {
        const FormUser user = anyForm();
        nestedForms += levelOf(user) > 0;
        // The effect itself may be gone afterwards.
        const QString name = QStringLiteral("\"%1\" at level %2")
                                 .arg(meta::keys::name.readText(user.effect()))
                                 .arg(levelOf(user));
        const std::vector<MetaWidget *> concerned = formsAround(user.effect());
        const QString deed = m_hand.act(user);
        if (m_hand.leavesTimes())
            expectNoTimes(concerned);
        return name + QStringLiteral(": ") + deed;
    }

    // --- What the host does ---

    QString actAsHost()
    {
        const std::function<QString()> actions[] = {
            [this] { return openAny(); },        [this] { return openAny(); },
            [this] { return openAny(); },        [this] { return close(); },
            [this] { return closeMidway(); },    [this] { return undo(); },
            [this] { return undo(); },           [this] { return redo(); },
            [this] { return openShowAfresh(); }, [this] { return seek(); },
            [this] { return seek(); },           [this] { return stopAndPlay(); },
            [this] { return pauseOrPlay(); },    [this] { return changeSpeed(); },
        };
        return m_dice.pick(std::vector(std::begin(actions), std::end(actions)))();
    }

    QString openShow()
    {
        rehearsal::FileFault fault;
        if (!m_document.openText(showToEdit(), QStringLiteral("show to edit"), {}, &fault))
            qFatal("%s", qPrintable(fault.message()));
        m_playback.play();
        return QStringLiteral("open the show");
    }

    // Once there are few effects with editors left.
    QString openShowAfresh()
    {
        return metaEffects().size() < 4 ? openShow() : QStringLiteral("enough editors");
    }

    void openWindow(OpenMetaEffect &effect)
    {
        QWidget *form = effect.internalGetEffectWidget();
        if (form->parentWidget() // it is shown in another form
            || std::find(m_windows.begin(), m_windows.end(), form) != m_windows.end())
            return;
        form->resize(1100, 1000);
        form->show();
        m_windows.emplace_back(form);
    }

    QString openAny()
    {
        std::erase_if(m_windows, [](const QPointer<QWidget> &window) { return !window; });
        if (m_windows.size() >= mostWindows)
            return QStringLiteral("enough windows");
        OpenMetaEffect *effect = m_dice.pick(metaEffects());
        openWindow(*effect);
        return QStringLiteral("open the editor of \"%1\"").arg(effect->text("name"));
    }

    QString close()
    {
        delete &anyForm().form();
        ++hostClosings;
        return QStringLiteral("close an editor");
    }

    // While something of it is open: the picker, the menu, a line, a question.
    QString closeMidway()
    {
        const FormUser user = anyForm();
        const QPointer<MetaWidget> form(&user.form());
        const int rows = user.table().rowCount();
        if (rows == 0)
            return QStringLiteral("nothing to close midway");
        const int row = static_cast<int>(m_dice.roll(static_cast<quint32>(rows)));
        expectNoTimes(formsAround(user.effect())); // a type may be changed
        QTimer::singleShot(0, qApp, [this, form] {
            closingsMidway +=
                QApplication::activeModalWidget() || QApplication::activePopupWidget();
            delete form.data();
        });
        switch (m_dice.roll(4)) {
        case 0: user.click(row, meta::GroupColumn); break;
        case 1: {
            user.click(row, meta::TypeColumn);
            const QModelIndex index = user.table().model()->index(row, meta::TypeColumn);
            if (auto *chooser = qobject_cast<QComboBox *>(user.table().indexWidget(index)))
                QTest::keyClick(chooser, m_dice.oneIn(2) ? Qt::Key_Down : Qt::Key_Up);
            break;
        }
        case 2:
            user.click(row, meta::NameColumn);
            QTest::keyClick(&user.table(), Qt::Key_F2);
            break;
        case 3: user.form().m_popupMenu.exec(); break;
        }
        QCoreApplication::processEvents();
        ++hostClosings;
        return QStringLiteral("close an editor midway");
    }

    QString undo()
    {
        const bool isUndone = m_document.undo();
        rebuildings += isUndone;
        return isUndone ? QStringLiteral("undo") : QStringLiteral("nothing to undo");
    }

    QString redo()
    {
        const bool isRedone = m_document.redo();
        rebuildings += isRedone;
        return isRedone ? QStringLiteral("redo") : QStringLiteral("nothing to redo");
    }

    QString seek()
    {
        const quint32 length = m_playback.length();
        if (length == 0)
            return QStringLiteral("nowhere to go");
        const quint32 place = m_dice.roll(std::min(length, nearMs));
        m_playback.seek(place);
        return QStringLiteral("go to %1").arg(place);
    }

    QString stopAndPlay()
    {
        m_playback.stop();
        m_playback.play();
        return QStringLiteral("stop and play");
    }

    QString pauseOrPlay()
    {
        if (m_playback.state() == rehearsal::Playback::State::Playing)
            m_playback.pause();
        else
            m_playback.play();
        return QStringLiteral("pause or play");
    }

    QString changeSpeed()
    {
        m_playback.setSpeed(0.25 * (1 + m_dice.roll(16)));
        return QStringLiteral("speed %1").arg(m_playback.speed());
    }

    // --- The show is built anew ---

    void closeWindows()
    {
        for (const QPointer<QWidget> &window : m_windows)
            delete window.data();
        m_windows.clear();
    }

    void takeShow(rehearsal::ShowDocument::Replacement replacement)
    {
        rehearsal::Show *show = m_document.show();
        std::vector<OpenMetaEffect *> effects = metaEffects();
        std::reverse(effects.begin(), effects.end()); // the inner ones first
        for (OpenMetaEffect *effect : effects) {
            effect->updateEffectTimes();
            effect->updateEndTime();
        }
        for (Effect *effect : show->effects())
            openWindow(static_cast<OpenMetaEffect &>(*effect));
        if (replacement == rehearsal::ShowDocument::Replacement::SameShowRebuilt)
            m_playback.setRebuiltShow(show);
        else
            m_playback.setShow(show);
    }

    // --- What must hold ---

    QString complaintOf(OpenMetaEffect &effect)
    {
        if (MetaWidget *form = formOf(effect); form && form->isVisible()) {
            const FormUser user(effect, *form);
            const QString insanity = user.insanity();
            if (!insanity.isEmpty())
                return insanity;
            const QString stale = staleness(user);
            if (!stale.isEmpty())
                return stale;
        }
        return playComplaint(effect);
    }

    // A meta effect begins at 0 once its editor is made, until the next pass of what it is in.
    void noteNewForms()
    {
        std::erase_if(m_knownForms, [](const QPointer<MetaWidget> &form) { return !form; });
        for (const OpenMetaEffect *effect : metaEffects()) {
            MetaWidget *form = formOf(*effect);
            if (!form
                || std::find(m_knownForms.begin(), m_knownForms.end(), form) != m_knownForms.end())
                continue;
            m_knownForms.emplace_back(form);
            expectNoTimes(formsAround(*effect));
        }
    }

    // The open forms of an effect and of what it is in; null where there is none.
    std::vector<MetaWidget *> formsAround(const Effect &effect) const
    {
        std::vector<MetaWidget *> forms;
        for (const OpenMetaEffect *other : metaEffects()) {
            const EffectList children = other->getEffects();
            if (other == &effect
                || std::find(children.begin(), children.end(), &effect) != children.end())
                forms.push_back(formOf(*other));
        }
        return forms;
    }

    // Until the next pass.
    void expectNoTimes(const std::vector<MetaWidget *> &forms)
    {
        std::erase_if(m_formsInStep, [&forms](const QPointer<MetaWidget> &form) {
            return std::find(forms.begin(), forms.end(), form) != forms.end();
        });
    }

    // Empty where the children's times are as by their rules, or were not before: the times stay as
    // they are when a child is deleted or a loop is broken, until the next pass.
    QString staleness(const FormUser &user)
    {
        const EffectList children = user.effect().getEffects();
        for (const Effect *child : children) {
            // Each pass makes a meta effect that is so many cycles long so many times longer.
            if (EffectHost::holdsEffects(*child)
                && meta::keys::endRule.type.read(*child) == meta::rule::cycles)
                return {};
        }
        bool isLoop = false;
        const QString stale = user.staleTimes(&isLoop);
        const auto place = std::find(m_formsInStep.begin(), m_formsInStep.end(), &user.form());
        const bool wasInStep = place != m_formsInStep.end();
        if (isLoop && wasInStep)
            m_formsInStep.erase(place);
        else if (!isLoop && stale.isEmpty() && !wasInStep)
            m_formsInStep.emplace_back(&user.form());
        if (!wasInStep || isLoop)
            return {};
        ++checkedTimes;
        return stale;
    }

    // Empty when those of its children run that should, as far as the effect itself does.
    QString playComplaint(const OpenMetaEffect &effect)
    {
        if (m_playback.state() != rehearsal::Playback::State::Playing)
            return {};
        if (effect.level() == 0 && !effect.getState())
            return QStringLiteral("it does not run");
        if (!runs(effect))
            return {};
        const auto now = static_cast<quint32>(effect.getTotalElapsedTime());
        const EffectList children = effect.getEffects();
        for (const Effect *child : children) {
            ++checkedChildren;
            const bool isDue = child->beginTime() <= now && now < child->endTime();
            if (child->getState() != isDue)
                return QStringLiteral("at %1 ms, \"%2\" (%3 - %4) %5")
                    .arg(now)
                    .arg(child->getPropertyString(QStringLiteral("name")))
                    .arg(child->beginTime())
                    .arg(child->endTime())
                    .arg(isDue ? QStringLiteral("does not run") : QStringLiteral("runs"));
        }
        return {};
    }

    // Whether it and all that it is in got the last frame.
    bool runs(const OpenMetaEffect &effect) const
    {
        if (!effect.getState())
            return false;
        if (effect.level() == 0)
            return true;
        for (OpenMetaEffect *holder : metaEffects()) {
            const EffectList children = holder->getEffects();
            for (const Effect *child : children) {
                if (child == &effect)
                    return runs(*holder);
            }
        }
        return false;
    }

    Dice m_dice;
    RandomHand m_hand;
    qint64 m_wallNs = 0;
    rehearsal::ShowDocument m_document;
    rehearsal::Playback m_playback;
    std::vector<QPointer<QWidget>> m_windows;
    std::vector<QPointer<MetaWidget>> m_knownForms;
    std::vector<QPointer<MetaWidget>> m_formsInStep; ///< whose effects' times were as by the rules
};

int edits(const QStringList &arguments)
{
    const qint64 actions = soak::numberAt(arguments, 0, 100'000);
    const auto seed = static_cast<quint32>(soak::numberAt(arguments, 1, 1));
    // Links that are chosen at random may form a loop, of which every pass warns: that is looked
    // for, not shown.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &message) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(message));
    });
    meta::askSetting() = {[] { return asksBeforeTypeChange; },
                          [] { asksBeforeTypeChange = false; }};
    const bool isTraced = qEnvironmentVariableIsSet("META_USER_TRACE");

    EditedShow show(seed);
    std::deque<QString> done;
    QString complaint = show.complaint();
    qint64 count = 0;
    while (count < actions && complaint.isEmpty()) {
        done.push_back(show.act());
        if (isTraced)
            std::fprintf(stderr, "%lld %s\n", qlonglong(count), qPrintable(done.back()));
        if (done.size() > toldActions)
            done.pop_front();
        complaint = show.complaint();
        if ((++count % actionsPerRoundTrip == 0 || count == actions) && complaint.isEmpty())
            complaint = show.roundTripComplaint();
        if (count % actionsPerQuestion == 0)
            asksBeforeTypeChange = true;
    }
    const bool isAllMet = show.nestedForms > 0 && show.hostClosings > 0 && show.closingsMidway > 0
                          && show.rebuildings > 0 && show.checkedTimes > 0
                          && show.checkedChildren > 0;
    if (complaint.isEmpty() && actions >= actionsPerRoundTrip && !isAllMet)
        complaint = QStringLiteral("something never happened");

    int faults = 0;
    faults +=
        !soak::report(complaint.isEmpty(),
                      QStringLiteral("%1 actions of seed %2; %3 in nested editors, %4 editors "
                                     "closed by the host, %5 of them with a dialog or menu up, "
                                     "%6 times undone or redone; times compared with the rules %7 "
                                     "times, the state of a child with the time %8 times%9")
                          .arg(count)
                          .arg(seed)
                          .arg(show.nestedForms)
                          .arg(show.hostClosings)
                          .arg(show.closingsMidway)
                          .arg(show.rebuildings)
                          .arg(show.checkedTimes)
                          .arg(show.checkedChildren)
                          .arg(complaint.isEmpty() ? QString() : u'\n' + complaint)
                          .toStdString());
    if (!complaint.isEmpty()) {
        for (const QString &deed : done)
            std::fprintf(stderr, "%s\n", qPrintable(deed));
    }
    return faults;
}

const soak::Command command("edits", "[ACTIONS=100000] [SEED=1] a playing show is edited at random",
                            edits);

} // namespace
