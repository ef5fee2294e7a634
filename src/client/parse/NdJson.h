#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <optional>

/// One line as a JSON object; nothing if it is anything else.
std::optional<QJsonObject> parseJsonLine(QByteArrayView line);

/// Calls `visit` with each line of `body`: split at line feeds, trimmed, empty lines left out. Nothing is copied, so a
/// view lives as long as `body`.
template <typename Visit> void forEachLine(QByteArrayView body, Visit visit)
{
    while (!body.isEmpty()) {
        const qsizetype feed = body.indexOf('\n');
        const QByteArrayView line = (feed < 0 ? body : body.first(feed)).trimmed();
        body = feed < 0 ? QByteArrayView() : body.sliced(feed + 1);
        if (!line.isEmpty())
            visit(line);
    }
}

/// Calls `visit` with each line of `body` that is a JSON object; other lines are passed over.
template <typename Visit> void forEachJsonLine(QByteArrayView body, Visit visit)
{
    forEachLine(body, [&visit](QByteArrayView line) {
        if (const auto object = parseJsonLine(line))
            visit(*object);
    });
}
