// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QStringList>

/// A value as the configuration's structure takes it, or why it doesn't.
struct CheckedConfig
{
    QJsonValue value {};
    QString fault {};
};

/// Whether the structure has a member at `path`, in the file or not.
bool isConfigPath(const QStringList& path);

/// The value for the member at `path`; an empty path is the whole document. Members that the structure doesn't know are
/// dropped, plain ones that are left out get their zero value, maps and optional members stay out.
CheckedConfig checkedConfig(const QStringList& path, const QJsonValue& value);

/// The members of `above` over those of `below`, object by object.
QJsonObject overlaid(QJsonObject below, const QJsonObject& above);

/// What a node shows of its configuration: no private key, no authorizations, no keys of remote services.
QJsonObject withoutSecrets(QJsonObject document);
