#pragma once

#include "common/encoding/CZemtarConvert.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace Zemtar {

/// A fresh folder, removed with its contents at the end, whose name holds Chinese characters and an emoji. As
/// a base of fixtures it also brings short names for the conversions between host and Qt texts.
struct TestFolder
{
    TestFolder() { QDir().mkpath(path("")); }

    static CZemtarString toHost(const QString& text) { return CZemtarConvert::QStringToCZemtarString(text); }
    static QString toQt(const CZemtarString& text) { return CZemtarConvert::CZemtarStringToQString(text); }

    /// The path of `name`, which may begin with sub-folders, below the folder.
    QString path(const QString& name) const { return root.filePath("零件 \U0001F600/") + name; }
    CZemtarString host(const QString& name) const { return toHost(path(name)); }

    /// Writes a file, making its folder, and returns its path; empty when that fails.
    QString write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        QDir().mkpath(QFileInfo(file).path());
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? file.fileName() : "";
    }

    /// The bytes of a file; "(none)" when it cannot be read.
    static QByteArray read(const QString& file)
    {
        QFile source(file);
        return source.open(QIODevice::ReadOnly) ? source.readAll() : "(none)";
    }

    const QTemporaryDir root;
};

} // namespace Zemtar
