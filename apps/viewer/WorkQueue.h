#pragma once

#include <QObject>
#include <QPointer>

#include <deque>
#include <functional>

/// Runs long work one piece after the other, from the event loop, and never a piece within another: imports
/// and exports turn the event loop themselves, so that their window lives, and must not meet each other
/// there.
///
///     m_work.Post(page, [page] { Export(*page); });
class WorkQueue : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Runs the work when the events at hand and all earlier work are done, unless its owner is gone by then.
    void Post(QObject* owner, std::function<void()> work);
    /// Whether a piece is being run.
    bool IsWorking() const { return m_working; }

private:
    void RunNext();

    struct Piece
    {
        QPointer<QObject> owner;
        std::function<void()> work;
    };
    std::deque<Piece> m_pieces;
    bool m_working = false;
};
