// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QStringList>

/// The demo node's configuration file, for its services to share.
class DemoConfig
{
public:
    /// A file as a node makes it when it is set up.
    DemoConfig();

    const QJsonObject& document() const { return file; }
    void setDocument(const QJsonObject& newFile) { file = newFile; }
    /// Undefined if the file has no member at `path`.
    QJsonValue value(const QStringList& path) const;
    /// Makes the objects on the way to it.
    void setValue(const QStringList& path, const QJsonValue& newValue);

private:
    QJsonObject file;
};
