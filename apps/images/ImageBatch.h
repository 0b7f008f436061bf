#pragma once

#include "apps/images/ImageOperations.h"

#include <QStringList>

#include <functional>

/// One operation on all pictures of a folder.
struct ImageBatch
{
    QString from;
    QString to;     ///< another folder, made when missing
    QString suffix; ///< of the files that are written: "png"
    const ImageOperation* operation = nullptr;
    /// One value for each parameter; none: the operation's defaults for each picture's own size.
    ImageValues values;
    QImage second;

    struct Result
    {
        int written = 0;
        QStringList failures; ///< "brick.jpg: why", a line each
        bool isCancelled = false;
    };

    /// Names of the folder's files that can be read as pictures, by their suffixes, in order.
    QStringList Files() const;
    /// Works through the files; those that are written are whole. A file that is there already in `to` is
    /// kept and told as a failure. `goesOn(done, file)` is asked before each file.
    Result Run(const std::function<bool(int done, const QString& file)>& goesOn) const;
};
