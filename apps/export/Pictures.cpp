#include "apps/export/Pictures.h"

#include "apps/export/OutputFile.h"
#include "apps/images/ImageFile.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

#include <stdexcept>
#include <vector>

Picture::Picture(std::string file) : m_file(std::move(file))
{
    const QString name = QString::fromStdString(m_file);
    QFile input(name);
    if (!input.open(QIODevice::ReadOnly)) {
        return;
    }
    const QByteArray format = QImageReader(&input).format();
    m_isJpeg = format == "jpeg";
    if (m_isJpeg || format == "png") {
        m_size = static_cast<std::uint64_t>(input.size());
        return;
    }
    const ImageFile picture = ReadImageFile(name);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!picture.image.isNull() && picture.image.save(&buffer, "PNG")) {
        m_png = bytes.toStdString();
        m_size = m_png.size();
    }
}

void Picture::WriteTo(OutputFile& file) const
{
    if (!m_png.empty()) {
        file.Write(m_png);
        return;
    }
    QFile input(QString::fromStdString(m_file));
    std::vector<char> block(std::size_t{1} << 16);
    std::uint64_t left =
        input.open(QIODevice::ReadOnly) && input.size() == static_cast<qint64>(m_size) ? m_size : 0;
    while (left > 0) {
        const qint64 count =
            input.read(block.data(), static_cast<qint64>(std::min<std::uint64_t>(left, block.size())));
        if (count <= 0) {
            break;
        }
        file.Write(block.data(), static_cast<std::size_t>(count));
        left -= static_cast<std::uint64_t>(count);
        if (left == 0) {
            return;
        }
    }
    throw std::runtime_error("the picture " + m_file + " changed while it was read");
}
