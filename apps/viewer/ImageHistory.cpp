#include "apps/viewer/ImageHistory.h"

namespace {

constexpr qint64 MostBytes = qint64(1) << 30;

} // namespace

void ImageHistory::Reset(const QImage& image)
{
    m_original = image;
    m_steps = {{image, {}}};
    m_at = 0;
}

void ImageHistory::Push(const QImage& image, const QString& name)
{
    m_steps.resize(m_at + 1);
    m_steps.push_back({image, name});
    ++m_at;
    qint64 bytes = 0;
    for (const Step& step : m_steps) {
        bytes += step.image.sizeInBytes();
    }
    while (bytes > MostBytes && m_at > 1) {
        bytes -= m_steps.front().image.sizeInBytes();
        m_steps.pop_front();
        --m_at;
    }
}

void ImageHistory::Undo()
{
    m_at -= m_at > 0 ? 1 : 0;
}

void ImageHistory::Redo()
{
    m_at += m_at + 1 < m_steps.size() ? 1 : 0;
}

QStringList ImageHistory::Names() const
{
    QStringList names;
    for (std::size_t i = 0; i <= m_at; ++i) {
        if (!m_steps[i].name.isEmpty()) {
            names.append(m_steps[i].name);
        }
    }
    return names;
}
