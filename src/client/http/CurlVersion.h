// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The libcurl that runs, and the one that the program was built with, as "8.5.0 (built with 7.88.1)".
QString curlVersion();
