#pragma once

#include <QByteArray>

#include <deque>

namespace rehearsal {

/// The states that a text went through, one step from each to the next. Only the differences are
/// kept. The oldest steps go first when there are more than `maximumSteps`, or when the differences
/// take more than `maximumBytes`; the newest step always stays.
class UndoHistory
{
public:
    explicit UndoHistory(qsizetype maximumSteps = 500, qsizetype maximumBytes = 256 * 1024 * 1024);

    /// Forgets every step and starts from this text.
    void reset(const QByteArray &text);

    /// A step to this text; what could be redone is dropped. The present text again is no step:
    /// then false, and nothing is dropped.
    bool push(const QByteArray &text);
    /// Undoes the last step and forgets it, and what could be redone.
    void withdraw();

    /// The text to go to; the present one where there is no step.
    QByteArray undo();
    QByteArray redo();

    bool canUndo() const { return m_position > 0; }
    bool canRedo() const { return m_position < m_steps.size(); }
    const QByteArray &current() const { return m_current; }

    qsizetype undoableSteps() const { return static_cast<qsizetype>(m_position); }
    /// What the differences take.
    qsizetype bytes() const { return m_bytes; }

private:
    /// Behind `start`, `removed` bytes give way to `inserted` ones.
    struct Step
    {
        qsizetype start = 0;
        qsizetype removed = 0;
        qsizetype inserted = 0;
        bool isCompressed = false;
        QByteArray content; ///< the removed bytes, then the inserted ones

        qsizetype bytes() const { return static_cast<qsizetype>(sizeof(Step)) + content.size(); }
    };

    static Step difference(const QByteArray &from, const QByteArray &to);
    void dropRedoable();
    void dropOldest();

    qsizetype m_maximumSteps;
    qsizetype m_maximumBytes;
    std::deque<Step> m_steps;
    std::size_t m_position = 0; ///< how many of the steps are done
    QByteArray m_current;
    qsizetype m_bytes = 0;
};

} // namespace rehearsal
