#pragma once

#include "common/ZemtarExport.h"
#include "host/CZemtarString.h"

class QString;

namespace Zemtar {

/// Finds the character encoding of a text file and makes a UTF-8 copy of it, so that text-based CAD files
/// written in a legacy code page reach a reader as UTF-8.
///
///     const char* encoding = CZemtarEncoding::DetectFileEncoding(path);
///     if (encoding != nullptr && *encoding != '\0')
///         path = CZemtarEncoding::EncodeFileToUtf8(path, encoding, false, isIges);
///     std::free(const_cast<char*>(encoding));
///
/// The converters return the path to read from now on. Copies lie in the system's temporary folder under the
/// source's file name and replace an earlier copy of that name. When anything fails, nothing that looks whole
/// is left behind and the result is the source path; a source is never changed unless it is to be
/// overwritten. Text is read in text mode, so carriage returns are dropped, and written without a byte-order
/// mark.
class ZEMTAR_EXPORT CZemtarEncoding
{
public:
    /// Returns the charset name that uchardet reports, for example "UTF-8", "ASCII", "UHC" or "ISO-8859-1";
    /// an empty text when it is undetermined, null when the file cannot be read. The caller releases it with
    /// `free`.
    static const char* DetectFileEncoding(CZemtarString path);

    /// Rewrites a text file of the named encoding as UTF-8 and returns the path of the result.
    ///
    /// "UTF-8" and "ASCII" need no conversion: the source path is returned and nothing is written. An
    /// encoding that no codec is known for is read in the locale's. With `overwriteSource` the result takes
    /// the source's place; with `replaceNonAscii` each UTF-16 unit of 128 or more becomes "_". A source that
    /// lies in the temporary folder itself is where its copy belongs, so it is replaced as well.
    static CZemtarString EncodeFileToUtf8(CZemtarString source, CZemtarString encoding, bool overwriteSource,
                                          bool replaceNonAscii);

    /// Copies a GBK file as UTF-8; a file with byte sequences that GBK does not know is not copied.
    static CZemtarString EncodeFromGbkToUtf8(CZemtarString source);

    /// Replaces each UTF-16 unit of 128 or more by "_" in place. False for an empty text, else true.
    static bool ConvertUnicodeToASCII(QString& text);
};

} // namespace Zemtar
