// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QMap>
#include <QStringList>

/// The demo node's configuration file, for its services to share.
class DemoConfig
{
public:
    /// A file as a node makes it when it is set up, with these services and their endpoints.
    explicit DemoConfig(const QMap<QString, QString>& remoteServices);

    const QJsonObject& document() const { return file; }
    void setDocument(const QJsonObject& newFile) { file = newFile; }
    /// Undefined if the file has no member at `path`.
    QJsonValue value(const QStringList& path) const;
    /// Makes the objects on the way to it.
    void setValue(const QStringList& path, const QJsonValue& newValue);

    /// Where the file has the remote pinning services.
    static const QStringList& servicesPath();
    /// The endpoints of the remote pinning services in the file, by name.
    QMap<QString, QString> remoteServices() const;
    void addRemoteService(const QString& name, const QString& endpoint, const QString& key);
    /// The node has read its file again; what was forgotten without being written is back.
    void reload() { ++count; }
    int reloads() const { return count; }

private:
    QJsonObject file;
    int count = 0;
};
