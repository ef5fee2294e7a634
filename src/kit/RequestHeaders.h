// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

class QSettings;

/// What every request says of the program, to the node and elsewhere: "Norvo/" and the version.
QString userAgent();

/// The Origin header by the settings store; empty where none is to be sent.
QByteArray originHeader(const QSettings& settings);
