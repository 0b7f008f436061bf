#include "apps/shared/Utf8Locale.h"

#include <QByteArray>

#include <clocale>
#include <cstring>

#include <langinfo.h>

void UseUtf8Locale()
{
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) {
        qputenv("LC_ALL", "C.UTF-8");
    }
}
