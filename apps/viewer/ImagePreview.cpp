#include "apps/viewer/ImagePreview.h"

#include <cmath>

namespace {

constexpr int SoonMilliseconds = 15;
constexpr int RestMilliseconds = 350;

} // namespace

ImagePreview::ImagePreview(QObject* parent) : QObject(parent)
{
    m_soon.setSingleShot(true);
    m_rest.setSingleShot(true);
    m_soon.setInterval(SoonMilliseconds);
    m_rest.setInterval(RestMilliseconds);
    connect(&m_soon, &QTimer::timeout, this, &ImagePreview::ShowSoon);
    connect(&m_rest, &QTimer::timeout, this, &ImagePreview::ShowWhole);
}

void ImagePreview::SetInput(const ImageInput& input)
{
    m_input = input;
    m_reduced = {};
    m_shown = {};
    Ask();
}

void ImagePreview::SetOperation(const ImageOperation* operation, const ImageValues& values,
                                const QImage& second)
{
    m_operation = operation;
    m_values = values;
    m_second = second;
    Ask();
}

const ImageOutcome& ImagePreview::Whole()
{
    if (m_isPending || m_isReduced) {
        ShowWhole();
    }
    return m_shown;
}

void ImagePreview::Ask()
{
    m_isPending = true;
    m_rest.stop();
    if (!m_soon.isActive()) { // not again and again put off while a slider moves
        m_soon.start();
    }
}

bool ImagePreview::IsLarge() const
{
    return qint64(m_input.image.width()) * m_input.image.height() > WholeAtOnce;
}

void ImagePreview::ShowSoon()
{
    if (m_operation == nullptr || m_input.image.isNull() || !IsLarge()) {
        ShowWhole();
        return;
    }
    const qint64 pixels = qint64(m_input.image.width()) * m_input.image.height();
    if (!m_operation->isReducible) {
        m_rest.start();
        return;
    }
    if (m_reduced.image.isNull()) {
        const double factor = std::sqrt(double(Reduced) / double(pixels));
        m_reduced.image = m_input.image.scaled((m_input.image.size() * factor).expandedTo({1, 1}),
                                               Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    Show(m_operation->Run(m_reduced, m_values), true);
    if (pixels <= WholeAtRest) {
        m_rest.start();
    }
}

void ImagePreview::ShowWhole()
{
    m_soon.stop();
    m_rest.stop();
    const bool hasWork = m_operation != nullptr && !m_input.image.isNull();
    Show(hasWork ? m_operation->Run({m_input.image, m_input.highRange, m_second}, m_values)
                 : ImageOutcome{m_input.image},
         false);
}

void ImagePreview::Show(const ImageOutcome& outcome, bool isReduced)
{
    m_shown = outcome;
    m_shown.image = NormalizedImage(outcome.image);
    m_isReduced = isReduced;
    m_isPending = false;
    emit Changed();
}
