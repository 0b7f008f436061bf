#pragma once

#include <FreeImage.h>
#include <QByteArray>

namespace Zemtar::ImageFiles {

/// Whether files of the format are to be looked through by isSoundPicture before FreeImage decodes them: its
/// own decoders of the older formats trust what sizes, counts and run lengths say.
bool needsSoundPicture(FREE_IMAGE_FORMAT format);

/// Whether FreeImage decodes the bytes of a file of such a format without leaving them or its picture, and to
/// an end: header, tables and runs are followed as its decoder follows them. Files that the decoder refuses
/// may count as sound.
///
/// What no pixel depends on may be taken out of `bytes`, so that it is not decoded.
bool isSoundPicture(FREE_IMAGE_FORMAT format, QByteArray& bytes);

/// The same of single formats whose decoders have most to go wrong.
bool isSoundPict(const QByteArray& bytes);
bool isSoundPsd(QByteArray& bytes);
bool isSoundXpm(const QByteArray& bytes);
bool isSoundXbm(const QByteArray& bytes);
bool isSoundIff(const QByteArray& bytes);
bool isSoundTarga(QByteArray& bytes);
bool isSoundTiff(QByteArray& bytes);

} // namespace Zemtar::ImageFiles
