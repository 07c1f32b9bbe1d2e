// A meta effect under a script of any lines: children of every type, nested ones too, with any
// texts under any keys; passes, frames, saving and loading; its editor opened, clicked, sorted,
// typed into and closed. Nothing crashes or takes forever, times are what the rules say, and the
// saved text gives the same effect again.

#include "ChildKeys.h"
#include "Effect.h"
#include "EffectList.h"
#include "MetaEffect.h"
#include "MetaWidget.h"
#include "Player.h"
#include "Require.h"
#include "TableWidget.h"
#include "TestTypes.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>
#include <QTextStream>

#include <algorithm>

using meta::Millis;
using rehearsal::Show;
namespace keys = meta::keys;
namespace rule = meta::rule;

namespace {

constexpr int mostLines = 100;
constexpr int mostChildren = 40;

bool metLoop = false;

void handleMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    if (text.contains(u"form a loop")) {
        metLoop = true;
        return;
    }
    std::fprintf(stderr, "%s\n", qPrintable(text));
    require(false, "nothing else is warned about");
}

void startApplication()
{
    static int count = 1;
    static char name[] = "fuzz_meta_effect";
    static char *arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(nullptr); // the platform may warn about where it finds itself
    static const auto *application = new QApplication(count, arguments);
    Q_UNUSED(application)
    qInstallMessageHandler(handleMessage);
}

QString savedText(Effect &effect)
{
    QString text;
    QTextStream stream(&text);
    effect.save(stream);
    stream.flush();
    return text;
}

QString sortedLines(const QString &text)
{
    QStringList lines = text.split(u'\n');
    std::sort(lines.begin(), lines.end());
    return lines.join(u'\n');
}

// --- Times, as the rules give them when nothing is in the way ---

bool isAlone(const MetaEffect &effect, const Effect &child)
{
    const EffectList children = effect.getEffects();
    return std::count_if(children.begin(), children.end(),
                         [&child](const Effect *other) {
                             return keys::eid.read(*other) == keys::eid.read(child);
                         })
           == 1;
}

// Nothing where the rule leaves the time as it is, or the children's eids leave it open.
std::optional<Millis> linkedTime(const MetaEffect &effect, const Effect &child,
                                 const meta::RuleKeys &rule)
{
    const Effect *target = effect.getEffect(rule.linkEid.read(child));
    if (!target || !isAlone(effect, *target))
        return {};
    const Millis side = (rule.linkStart.read(child) ? keys::begin : keys::end).read(*target);
    return Millis::fromDoubleSaturating(rule.linkOffset.read(child).toDouble() + side.toDouble());
}

std::optional<Millis> beginOf(const MetaEffect &effect, const Effect &child)
{
    switch (keys::startRule.type.read(child)) {
    case rule::fixed: return keys::startRule.fixedTime.read(child);
    case rule::linked: return linkedTime(effect, child, keys::startRule);
    default: return {};
    }
}

std::optional<Millis> endOf(const MetaEffect &effect, Effect &child)
{
    const Millis begin = keys::begin.read(child);
    switch (keys::endRule.type.read(child)) {
    case rule::fixed: return begin.plusWrapping(keys::endRule.fixedTime.read(child));
    case rule::linked: return linkedTime(effect, child, keys::endRule);
    case rule::cycles:
        // A nested meta effect's cycle is its own span, which the pass moves.
        if (dynamic_cast<MetaEffect *>(&child))
            return {};
        return begin.plusWrapping(Millis::fromDoubleSaturating(
            double(child.getCycleTime()) * double(keys::endCycleCount.read(child))));
    default: return {};
    }
}

void requireTimesByTheRules(const MetaEffect &effect)
{
    const EffectList children = effect.getEffects();
    for (Effect *child : children) {
        if (!isAlone(effect, *child))
            continue;
        const std::optional<Millis> begin = beginOf(effect, *child);
        require(!begin || *begin == keys::begin.read(*child), "a child begins by its start rule");
        const std::optional<Millis> end = endOf(effect, *child);
        require(!end || *end == keys::end.read(*child), "a child ends by its end rule");
    }
}

// --- The script ---

class Script
{
public:
    Script();

    void doLine(QStringView line);
    void requireSoundness();

private:
    void addChild(const QString &type);
    void descend();
    void setText(QStringView keyAndText);
    void pass();
    void frame(QStringView time);
    void paste(const QString &text);
    void copy();

    void open(bool isOpen);
    MetaWidget *form() const { return m_form; }
    QModelIndex indexAt(QStringView &words) const;
    void click(QStringView words);
    void sort(QStringView words);
    void editCell(QStringView words);
    void typeInPanel(QStringView words);
    void switchRadio(QStringView words);
    void chooseTarget(QStringView words);

    Show m_show{allTypes()};
    MetaEffect *m_effect;
    MetaEffect *m_holder;       ///< gets the next child
    QPointer<Effect> m_current; ///< gets the next text
    rehearsal::Player m_player;
    QPointer<MetaWidget> m_form;
    int m_children = 0;
};

int takeNumber(QStringView &words)
{
    const qsizetype end = words.indexOf(u' ');
    const int number = words.left(end < 0 ? words.size() : end).toInt();
    words = end < 0 ? QStringView() : words.sliced(end + 1);
    return number;
}

MetaEffect *addMetaEffect(Show &show)
{
    rehearsal::StageMap &map = show.map();
    QList<rehearsal::StageLight *> lights;
    for (quint32 uid = 1; uid <= 3; ++uid)
        lights.append(map.addLight(uid, QString::number(uid), {0.5, 0.5}));
    map.addGroup(1, QStringLiteral("Run"), ChasingGroup, lights);
    map.addGroup(2, QStringLiteral("All"), SynchronizedGroup, lights);
    map.addGroup(3, QStringLiteral("One"), LeafGroup, {lights.first()});
    auto *effect = static_cast<MetaEffect *>(show.factory().make(QStringLiteral("Meta Effect")));
    show.addEffect(effect);
    return effect;
}

Script::Script()
    : m_effect(addMetaEffect(m_show)),
      m_holder(m_effect),
      m_current(m_effect),
      m_player(m_show.map(), m_show.effects())
{
    m_show.map().clock().step(QTime(12, 0));
    m_player.start();
}

void Script::doLine(QStringView line)
{
    if (line.isEmpty())
        return;
    const QStringView rest = line.sliced(1);
    switch (line.front().unicode()) {
    case 'c': addChild(rest.toString()); break;
    case 'n': descend(); break;
    case 'u': m_holder = m_effect; break;
    case 'k': setText(rest); break;
    case 'r': pass(); break;
    case 'f': frame(rest); break;
    case 'i': m_effect->init(); break;
    case 'v': paste(rest.toString()); break;
    case 'y': copy(); break;
    case 'o': open(true); break;
    case 'x': open(false); break;
    case 'l': click(rest); break;
    case 'h': sort(rest); break;
    case 'e': editCell(rest); break;
    case 't': typeInPanel(rest); break;
    case 'b': switchRadio(rest); break;
    case 'g': chooseTarget(rest); break;
    case 'd':
        m_effect->handleDeleteSelectedEffectsClicked();
        m_holder = m_effect; // the one that was to get children may be gone
        break;
    default: break;
    }
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

void Script::addChild(const QString &type)
{
    if (m_children == mostChildren)
        return;
    Effect *child = m_show.factory().make(type);
    if (!child)
        return;
    ++m_children;
    child->setProperty(QStringLiteral("eid"), QString::number(m_children));
    m_holder->addChild(child);
    m_current = child;
}

void Script::descend()
{
    if (auto *nested = dynamic_cast<MetaEffect *>(m_current.data()))
        m_holder = nested;
}

void Script::setText(QStringView keyAndText)
{
    const qsizetype equals = keyAndText.indexOf(u'=');
    if (equals < 0 || !m_current)
        return;
    const QString key = keyAndText.left(equals).toString();
    // The type is the host's.
    if (key != u"type")
        m_current->setProperty(key, keyAndText.sliced(equals + 1).toString());
}

void Script::pass()
{
    metLoop = false;
    m_effect->updateEffectTimes();
    if (!metLoop)
        requireTimesByTheRules(*m_effect);
    m_effect->updateEndTime();
    Millis latest;
    const EffectList children = m_effect->getEffects();
    for (const Effect *child : children)
        latest = std::max(latest, keys::end.read(*child));
    require(keys::end.read(*m_effect) == latest, "the meta effect ends with its last child");
}

void Script::frame(QStringView time)
{
    const uint ms = time.trimmed().toUInt() % (24u * 60 * 60 * 1000);
    m_player.frame(QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms)), ms);
    for (const rehearsal::StageLight *light : m_show.map().lights()) {
        const double shown = light->shown();
        require(shown == shown, "what a light shows is a number");
    }
}

void Script::paste(const QString &text)
{
    QString pasted = QStringLiteral("<EFFECT-ENTRY>") + text;
    m_effect->pasteEffect(pasted);
}

void Script::copy()
{
    if (m_effect->getEffects().count() > mostChildren)
        return;
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    m_effect->copyEffect(stream);
    stream.flush();
    m_effect->pasteEffect(text);
}

// --- The editor ---

void Script::open(bool isOpen)
{
    if (!isOpen) {
        delete m_form;
        return;
    }
    m_form = qobject_cast<MetaWidget *>(m_effect->internalGetEffectWidget());
    require(m_form != nullptr, "the meta effect has an editor");
    m_form->resize(900, 600);
    m_form->show();
}

QModelIndex Script::indexAt(QStringView &words) const
{
    const int row = takeNumber(words);
    const int column = takeNumber(words);
    // A click on a type or a group opens a window of its own.
    if (!m_form || column == 1 || column == 2)
        return {};
    return m_form->m_effectTable->model()->index(row, column);
}

void Script::click(QStringView words)
{
    const QModelIndex index = indexAt(words);
    if (!index.isValid())
        return;
    meta::TableWidget &table = *m_form->m_effectTable;
    table.scrollTo(index);
    const Qt::KeyboardModifiers modifiers =
        words.startsWith(u'+') ? Qt::ControlModifier : Qt::NoModifier;
    QTest::mouseClick(table.viewport(), Qt::LeftButton, modifiers,
                      table.visualRect(index).center());
}

void Script::sort(QStringView words)
{
    if (!m_form)
        return;
    QHeaderView *header = m_form->m_effectTable->horizontalHeader();
    const int column = qBound(0, takeNumber(words), header->count() - 1);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      {header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                       header->height() / 2});
}

void Script::editCell(QStringView words)
{
    QStringView place = words;
    const QModelIndex index = indexAt(place);
    if (!index.isValid())
        return;
    click(words);
    meta::TableWidget &table = *m_form->m_effectTable;
    if (!table.indexWidget(index))
        QTest::keyClick(&table, Qt::Key_F2);
    auto *line = qobject_cast<QLineEdit *>(table.indexWidget(index));
    if (!line)
        return;
    line->setText(place.toString());
    QTest::keyClick(line, Qt::Key_Return);
}

void Script::typeInPanel(QStringView words)
{
    if (!m_form)
        return;
    const int which = takeNumber(words);
    if (which == 4) {
        m_form->m_endCyclesSpinBox->setValue(takeNumber(words));
        return;
    }
    static const std::array names = {"m_startFixedLineEdit", "m_startLinkOffsetLineEdit",
                                     "m_endFixedLineEdit", "m_endLinkOffsetLineEdit"};
    if (which < 0 || which > 3)
        return;
    auto *field =
        m_form->findChild<QLineEdit *>(QString::fromLatin1(names[static_cast<std::size_t>(which)]));
    require(field != nullptr, "the panel has the field");
    if (field->isEnabled())
        field->setText(words.toString());
}

void Script::switchRadio(QStringView words)
{
    if (!m_form)
        return;
    const QList<QRadioButton *> buttons = m_form->findChildren<QRadioButton *>();
    const int which = takeNumber(words);
    if (which >= 0 && which < buttons.size())
        QTest::mouseClick(buttons[which], Qt::LeftButton, {}, {8, buttons[which]->height() / 2});
}

void Script::chooseTarget(QStringView words)
{
    if (!m_form)
        return;
    auto *chooser = m_form->findChild<QComboBox *>(takeNumber(words) == 0
                                                       ? QStringLiteral("m_startLinkEffectComboBox")
                                                       : QStringLiteral("m_endLinkEffectComboBox"));
    require(chooser != nullptr, "the panel has the chooser");
    if (chooser->isEnabled())
        QTest::keyClick(chooser, takeNumber(words) == 0 ? Qt::Key_Down : Qt::Key_Up);
}

// The first loading puts every effect in order, as saving an effect that was made ready does.
void Script::requireSoundness()
{
    m_player.stop();
    m_effect->init();
    EffectLib &library = m_show.factory();
    const QString saved = savedText(*m_effect);
    const std::unique_ptr<Effect> again(library.createEffect(saved));
    require(again != nullptr, "a saved effect can be read");
    const QString first = savedText(*again);
    requireSame(sortedLines(saved), sortedLines(first), "nothing is lost by saving");
    const std::unique_ptr<Effect> third(library.createEffect(first));
    require(third != nullptr, "a saved effect can be read again");
    requireSame(first, savedText(*third), "a saved effect is saved as the same text");
}

} // namespace

// The library that finds the fonts keeps some of them for good.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const bool isStarted = (startApplication(), true);
    Q_UNUSED(isStarted)
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    Script script;
    const QList<QStringView> lines = QStringView(text).split(u'\n');
    for (const QStringView line : lines.first(std::min<qsizetype>(lines.size(), mostLines)))
        script.doLine(line);
    script.requireSoundness();
    return 0;
}
