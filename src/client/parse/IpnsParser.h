// SPDX-License-Identifier: MIT
#pragma once

#include "IpnsRecords.h"

#include <QJsonObject>
#include <QList>

/// The keys of an answer of "/key/list", in its order, without those that have no name.
QList<IpnsKeyEntry> ipnsKeysOf(const QJsonObject& answer);
