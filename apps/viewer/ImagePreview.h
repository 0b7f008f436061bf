#pragma once

#include "apps/images/ImageOperations.h"

#include <QObject>
#include <QTimer>

/// Keeps the result of an operation up to date while its values change, on the thread of the windows: a large
/// picture is first worked on reduced, and whole when the values rest.
class ImagePreview : public QObject
{
    Q_OBJECT

public:
    explicit ImagePreview(QObject* parent = nullptr);

    /// Pictures up to this many pixels are worked on whole at once.
    static constexpr qint64 WholeAtOnce = 2'000'000;
    /// Pixels of a reduced picture.
    static constexpr qint64 Reduced = 500'000;
    /// Pictures up to this many pixels are worked on whole when the values rest; larger ones when asked.
    static constexpr qint64 WholeAtRest = 25'000'000;

    /// Sets the picture, which may be null: then there is no result.
    void SetInput(const ImageInput& input);

    /// Sets what is done, null for nothing, and asks for a new result soon. `second` is the other picture of
    /// an operation on two.
    void SetOperation(const ImageOperation* operation, const ImageValues& values, const QImage& second = {});

    /// The result of the whole picture, made now unless it is there.
    const ImageOutcome& Whole();

    /// The last result, whole or reduced.
    const ImageOutcome& Shown() const { return m_shown; }
    bool IsReduced() const { return m_isReduced; }

signals:
    /// A new result can be seen.
    void Changed();

private:
    void Ask();
    void ShowSoon();
    void ShowWhole();
    void Show(const ImageOutcome& outcome, bool isReduced);
    bool IsLarge() const;

    ImageInput m_input;
    ImageInput m_reduced; ///< Made when it is first asked for.
    const ImageOperation* m_operation = nullptr;
    ImageValues m_values;
    QImage m_second;
    ImageOutcome m_shown;
    bool m_isReduced = false;
    bool m_isPending = false; ///< What is shown is not yet of these values.
    QTimer m_soon;
    QTimer m_rest;
};
