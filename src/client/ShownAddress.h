// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QUrl;

/// The address of a call to the node as logs and messages may show it: fully encoded, with "…" in place of an access
/// token or of a value written to a config key that holds credentials. What is sent stays as it is.
QString shownAddress(const QUrl& url);

/// `text`, which came in answer to a call to `url`, with "…" in place of the secrets that shownAddress leaves out.
QString withoutSecrets(const QString& text, const QUrl& url);
