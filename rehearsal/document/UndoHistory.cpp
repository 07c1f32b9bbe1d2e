#include "UndoHistory.h"

#include <algorithm>

namespace rehearsal {

namespace {

// An edit at both ends of a long text makes a long difference, most of which is the same twice.
constexpr qsizetype compressedFrom = 16 * 1024;
constexpr int fastCompression = 1;

} // namespace

UndoHistory::UndoHistory(qsizetype maximumSteps, qsizetype maximumBytes)
    : m_maximumSteps(maximumSteps), m_maximumBytes(maximumBytes)
{
}

void UndoHistory::reset(const QByteArray &text)
{
    m_steps.clear();
    m_position = 0;
    m_bytes = 0;
    m_current = text;
}

bool UndoHistory::push(const QByteArray &text)
{
    if (text == m_current)
        return false;
    dropRedoable();
    m_steps.push_back(difference(m_current, text));
    m_bytes += m_steps.back().bytes();
    ++m_position;
    m_current = text;
    dropOldest();
    return true;
}

void UndoHistory::withdraw()
{
    if (!canUndo())
        return;
    undo();
    dropRedoable();
}

QByteArray UndoHistory::undo()
{
    if (!canUndo())
        return m_current;
    const Step &step = m_steps[--m_position];
    const QByteArray content = step.isCompressed ? qUncompress(step.content) : step.content;
    m_current.replace(step.start, step.inserted, content.first(step.removed));
    return m_current;
}

QByteArray UndoHistory::redo()
{
    if (!canRedo())
        return m_current;
    const Step &step = m_steps[m_position++];
    const QByteArray content = step.isCompressed ? qUncompress(step.content) : step.content;
    m_current.replace(step.start, step.removed, content.last(step.inserted));
    return m_current;
}

UndoHistory::Step UndoHistory::difference(const QByteArray &from, const QByteArray &to)
{
    const qsizetype shorter = std::min(from.size(), to.size());
    const qsizetype prefix =
        std::mismatch(from.begin(), from.begin() + shorter, to.begin()).first - from.begin();
    const qsizetype suffix =
        std::mismatch(from.rbegin(), from.rbegin() + (shorter - prefix), to.rbegin()).first
        - from.rbegin();

    Step step;
    step.start = prefix;
    step.removed = from.size() - prefix - suffix;
    step.inserted = to.size() - prefix - suffix;
    step.content = from.sliced(prefix, step.removed) + to.sliced(prefix, step.inserted);
    if (step.content.size() >= compressedFrom) {
        step.content = qCompress(step.content, fastCompression);
        step.isCompressed = true;
    }
    step.content.squeeze();
    return step;
}

void UndoHistory::dropRedoable()
{
    while (canRedo()) {
        m_bytes -= m_steps.back().bytes();
        m_steps.pop_back();
    }
}

void UndoHistory::dropOldest()
{
    while (m_position > 1 && (undoableSteps() > m_maximumSteps || m_bytes > m_maximumBytes)) {
        m_bytes -= m_steps.front().bytes();
        m_steps.pop_front();
        --m_position;
    }
}

} // namespace rehearsal
