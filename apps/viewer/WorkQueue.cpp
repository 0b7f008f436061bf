#include "apps/viewer/WorkQueue.h"

#include <QScopedValueRollback>

void WorkQueue::Post(QObject* owner, std::function<void()> work)
{
    m_pieces.push_back({owner, std::move(work)});
    QMetaObject::invokeMethod(this, &WorkQueue::RunNext, Qt::QueuedConnection);
}

void WorkQueue::RunNext()
{
    if (m_working || m_pieces.empty()) {
        return; // called again for each piece that waits
    }
    const Piece piece = std::move(m_pieces.front());
    m_pieces.pop_front();
    if (piece.owner) {
        const QScopedValueRollback working(m_working, true);
        piece.work();
    }
    if (!m_pieces.empty()) { // whose call may have come while this one ran
        QMetaObject::invokeMethod(this, &WorkQueue::RunNext, Qt::QueuedConnection);
    }
}
