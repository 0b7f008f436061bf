#pragma once

#include <QMimeData>
#include <QUrl>

#include <functional>

/// A model on its way out of the window: its file is made when the target asks for it, not when the drag
/// begins.
class ModelDrag : public QMimeData
{
    Q_OBJECT

public:
    /// `makeFile` gives the file's name; empty when it cannot be made.
    explicit ModelDrag(std::function<QString()> makeFile) : m_makeFile(std::move(makeFile)) {}

    QStringList formats() const override { return {QStringLiteral("text/uri-list")}; }
    bool hasFormat(const QString& mimeType) const override { return formats().contains(mimeType); }

protected:
    QVariant retrieveData(const QString& mimeType, QMetaType type) const override
    {
        if (!hasFormat(mimeType)) {
            return {};
        }
        if (m_file.isEmpty()) {
            m_file = m_makeFile();
        }
        if (m_file.isEmpty()) {
            return {};
        }
        const QUrl url = QUrl::fromLocalFile(m_file);
        return type.id() == QMetaType::QVariantList ? QVariant(QVariantList{url})
                                                    : QVariant(url.toEncoded() + "\r\n");
    }

private:
    std::function<QString()> m_makeFile;
    mutable QString m_file;
};
