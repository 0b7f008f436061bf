#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

#include <deque>

/// The states of a picture, from the one that was loaded to the last operation's, with undo and redo. Old
/// states are forgotten when all together take more than 1 GiB; the loaded picture never is.
class ImageHistory
{
public:
    /// Begins anew with a picture.
    void Reset(const QImage& image);

    /// Adds a state after the current one; what was undone before is forgotten.
    void Push(const QImage& image, const QString& name);

    /// The picture as it is now; null before the first Reset.
    const QImage& Current() const { return m_steps[m_at].image; }
    const QImage& Original() const { return m_original; }
    bool IsOriginal() const { return Current().cacheKey() == m_original.cacheKey(); }

    /// The name of the operation that the next Undo takes back, or Redo makes again; empty when there is
    /// none.
    QString UndoName() const { return m_at > 0 ? m_steps[m_at].name : QString(); }
    QString RedoName() const { return m_at + 1 < m_steps.size() ? m_steps[m_at + 1].name : QString(); }
    void Undo();
    void Redo();

    /// The operations that led here, the oldest first, as far as they are remembered.
    QStringList Names() const;

private:
    struct Step
    {
        QImage image;
        QString name;
    };
    QImage m_original;
    std::deque<Step> m_steps = {Step()};
    std::size_t m_at = 0;
};
