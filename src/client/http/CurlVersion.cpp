// SPDX-License-Identifier: MIT
#include "CurlVersion.h"

#include <curl/curl.h>

using namespace Qt::StringLiterals;

QString curlVersion()
{
    return u"%1 (built with %2)"_s.arg(QLatin1StringView(curl_version_info(CURLVERSION_NOW)->version),
                                       QLatin1StringView(LIBCURL_VERSION));
}
