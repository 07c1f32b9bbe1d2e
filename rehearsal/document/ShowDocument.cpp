#include "ShowDocument.h"

#include "NewShow.h"
#include "ShowFile.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <utility>

namespace rehearsal {

namespace {

/// Keeps a show until control is back in the event loop: the replacement may have been asked for
/// from within one of its effects' editors.
class RetiredShow final : public QObject
{
public:
    RetiredShow(std::unique_ptr<Show> show, QObject *parent)
        : QObject(parent), m_show(std::move(show))
    {
        deleteLater();
    }

private:
    std::unique_ptr<Show> m_show;
};

// An effect's rules read these as 0 where they are missing. Editors write them when they merely
// show a rule.
constexpr std::array zeroSettings{
    "startfixedtime", "startlinkeid", "startlinkstart", "startlinkoffset",
    "endfixedtime",   "endlinkeid",   "endlinkstart",   "endlinkoffset",
};

bool isZeroSetting(QByteArrayView line)
{
    constexpr QByteArrayView start("<property key=\"");
    constexpr QByteArrayView end("\">0</property>");
    line = line.trimmed();
    if (!line.startsWith(start) || !line.endsWith(end) || line.size() < start.size() + end.size())
        return false;
    const QByteArrayView key = line.sliced(start.size()).chopped(end.size());
    return std::any_of(zeroSettings.begin(), zeroSettings.end(),
                       [key](const char *name) { return key == name; });
}

// The definition without what says no more than its absence would. Each property has a line.
QByteArray meaningOf(const QByteArray &definition)
{
    QByteArray meaning;
    meaning.reserve(definition.size());
    for (qsizetype start = 0; start < definition.size();) {
        const qsizetype found = definition.indexOf('\n', start);
        const qsizetype end = found < 0 ? definition.size() : found + 1;
        const QByteArrayView line = QByteArrayView(definition).sliced(start, end - start);
        if (!isZeroSetting(line))
            meaning.append(line);
        start = end;
    }
    return meaning;
}

QString absolutePath(const QString &file)
{
    return file.isEmpty() ? QString() : QFileInfo(file).absoluteFilePath();
}

// Invalid where there is no such file.
QDateTime timeOf(const QString &file)
{
    const QFileInfo info(file);
    return info.isFile() ? info.lastModified() : QDateTime();
}

} // namespace

ShowDocument::ShowDocument(Show::TypeSetup types, QObject *parent)
    : QObject(parent), m_types(std::move(types))
{
}

ShowDocument::~ShowDocument()
{
    if (m_show)
        m_show->map().setWatch(nullptr);
}

// --- Another show ---

bool ShowDocument::startNew(FileFault *fault)
{
    const QString name = tr("new show");
    std::unique_ptr<Show> show = parseShow(newShowText(), name, m_types, fault);
    if (!show)
        return false;
    if (!show->unknownTypes().empty()) {
        const auto &[type, line] = show->unknownTypes().front();
        *fault = {name, line, tr("the effect type \"%1\" is missing").arg(type)};
        return false;
    }
    take(std::move(show), QString(), QString(), false);
    return true;
}

bool ShowDocument::open(const QString &file, FileFault *fault)
{
    std::unique_ptr<Show> show = readShow(file, m_types, fault);
    if (!show)
        return false;
    take(std::move(show), absolutePath(file), QString(), false);
    return true;
}

bool ShowDocument::openText(const QByteArray &text, const QString &name, const QString &file,
                            FileFault *fault)
{
    std::unique_ptr<Show> show = parseShow(text, name, m_types, fault);
    if (!show)
        return false;
    take(std::move(show), absolutePath(file), QString(), true);
    return true;
}

void ShowDocument::adopt(std::unique_ptr<Show> show, const QString &suggestedName)
{
    take(std::move(show), QString(), suggestedName, true);
}

void ShowDocument::take(std::unique_ptr<Show> show, const QString &file,
                        const QString &suggestedName, bool isModified)
{
    emit showAboutToBeReplaced(Replacement::AnotherShow);
    install(std::move(show));
    m_file = file;
    m_fileTime = timeOf(file);
    m_suggestedName = suggestedName;
    m_history.reset(m_text);
    m_savedMeaning = isModified ? QByteArray() : m_meaning;
    m_savedStep = isModified ? QByteArray() : m_text;
    emit showReplaced(Replacement::AnotherShow);
    if (m_isNoted)
        settle();
    emit fileChanged();
    emit historyChanged();
    reportModified();
}

void ShowDocument::install(std::unique_ptr<Show> show)
{
    if (m_show) {
        m_show->map().setWatch(nullptr);
        new RetiredShow(std::move(m_show), this);
    }
    m_show = std::move(show);
    m_show->map().setWatch(this);
    setText(definitionText(*m_show));
    m_isNoted = false;
    m_lastToken = 0;
}

// --- The file ---

bool ShowDocument::save(FileFault *fault)
{
    if (m_file.isEmpty()) {
        *fault = {displayName(), 0, tr("the show has no file yet")};
        return false;
    }
    return write(m_file, fault);
}

bool ShowDocument::saveAs(const QString &file, FileFault *fault)
{
    return write(absolutePath(file), fault);
}

bool ShowDocument::write(const QString &file, FileFault *fault)
{
    if (!m_show) {
        *fault = {file, 0, tr("there is no show to save")};
        return false;
    }
    flush();
    settle(); // what is saved is what is there, whether or not it was noted
    if (!saveText(m_text, file, fault))
        return false;
    m_savedMeaning = m_meaning;
    m_savedStep = m_history.current();
    m_lastToken = 0; // one can go back to what was saved
    m_fileTime = timeOf(file);
    if (m_file != file) {
        m_file = file;
        m_suggestedName.clear();
        emit fileChanged();
    }
    reportModified();
    return true;
}

bool ShowDocument::isFileChanged() const
{
    const QDateTime now = timeOf(m_file);
    return now.isValid() && now != m_fileTime;
}

QString ShowDocument::displayName() const
{
    if (!m_file.isEmpty())
        return QFileInfo(m_file).fileName();
    return m_suggestedName.isEmpty() ? tr("Untitled") : m_suggestedName;
}

// A step that was saved counts as saved when it is built anew, even if building gave another text.
bool ShowDocument::isModified() const
{
    if (!m_show)
        return false;
    if (m_savedMeaning.isNull())
        return true;
    return m_meaning != m_savedMeaning && m_history.current() != m_savedStep;
}

void ShowDocument::reportModified()
{
    const bool isNow = isModified();
    if (std::exchange(m_wasModified, isNow) != isNow)
        emit modifiedChanged(isNow);
}

// --- Edits ---

void ShowDocument::effectChanged(Effect &, const QString &)
{
    note();
}

void ShowDocument::effectsCameOrWent()
{
    note();
}

void ShowDocument::note()
{
    if (m_isNoted) {
        if (m_notedToken != m_stepToken)
            m_notedToken = 0;
        return;
    }
    m_isNoted = true;
    m_notedToken = m_stepToken;
    QMetaObject::invokeMethod(this, &ShowDocument::look, Qt::QueuedConnection);
}

void ShowDocument::flush()
{
    look();
}

void ShowDocument::look()
{
    if (!m_isNoted)
        return;
    m_isNoted = false;
    const QByteArray text = definitionText(*m_show);
    if (text == m_text)
        return;
    if (meaningOf(text) == m_meaning) {
        m_text = text;
        return;
    }
    record(text, m_notedToken);
    setText(text);
    emit edited();
    emit historyChanged();
    reportModified();
}

void ShowDocument::record(const QByteArray &text, quint64 token)
{
    const bool isContinued = token != 0 && token == m_lastToken;
    if (isContinued)
        m_history.withdraw();
    else
        m_beforeStep = m_text;
    const bool isTakenBack = isContinued && text == m_beforeStep;
    const bool isStep = !isTakenBack && m_history.push(text);
    m_lastToken = isStep ? token : 0;
}

void ShowDocument::settle()
{
    if (!m_show)
        return;
    m_isNoted = false;
    const bool wasSaved = m_savedMeaning == m_meaning && !m_savedMeaning.isNull();
    setText(definitionText(*m_show));
    if (wasSaved)
        m_savedMeaning = m_meaning;
    reportModified();
}

void ShowDocument::setText(const QByteArray &text)
{
    m_text = text;
    m_meaning = meaningOf(text);
}

bool ShowDocument::undo(FileFault *fault)
{
    flush();
    if (!m_history.canUndo())
        return false;
    m_history.undo();
    if (rebuild(fault))
        return true;
    m_history.redo();
    return false;
}

bool ShowDocument::redo(FileFault *fault)
{
    flush();
    if (!m_history.canRedo())
        return false;
    m_history.redo();
    if (rebuild(fault))
        return true;
    m_history.undo();
    return false;
}

bool ShowDocument::rebuild(FileFault *fault)
{
    FileFault unasked;
    std::unique_ptr<Show> show =
        parseShow(m_history.current(), displayName(), m_types, fault ? fault : &unasked);
    if (!show)
        return false;
    emit showAboutToBeReplaced(Replacement::SameShowRebuilt);
    install(std::move(show));
    emit showReplaced(Replacement::SameShowRebuilt);
    if (m_isNoted)
        settle();
    emit historyChanged();
    reportModified();
    return true;
}

} // namespace rehearsal
