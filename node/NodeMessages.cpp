// SPDX-License-Identifier: MIT
#include "NodeMessages.h"

#include <algorithm>
#include <iterator>

namespace {

QString goUnescaped(QByteArray text)
{
    if (!text.contains('%') && !text.contains('+'))
        return QString::fromUtf8(text);
    return QString::fromUtf8(QByteArray::fromPercentEncoding(text.replace('+', ' ')));
}

auto isNamed(QByteArrayView name)
{
    return [name](const auto& header) { return header.first.compare(name, Qt::CaseInsensitive) == 0; };
}

} // namespace

QByteArray headerIn(const HeaderList& headers, QByteArrayView name)
{
    const auto match = std::ranges::find_if(headers, isNamed(name));
    return match == headers.end() ? QByteArray() : match->second;
}

bool takeHeader(QByteArrayView line, HeaderList& headers)
{
    const qsizetype colon = line.indexOf(':');
    if (colon <= 0 || !std::ranges::all_of(line.first(colon), [](char c) { return c > ' ' && c < 127; }))
        return false;
    headers.emplaceBack(line.first(colon).toByteArray(), line.sliced(colon + 1).trimmed().toByteArray());
    return true;
}

QByteArray NodeRequest::header(QByteArrayView name) const
{
    return headerIn(headers, name);
}

bool NodeRequest::hasHeader(QByteArrayView name) const
{
    return std::ranges::any_of(headers, isNamed(name));
}

QList<std::pair<QString, QString>> NodeRequest::items() const
{
    QList<std::pair<QString, QString>> list;
    for (const QByteArray& item : rawQuery.split('&')) {
        if (item.isEmpty() || item.contains(';'))
            continue;
        const qsizetype equals = item.indexOf('=');
        if (equals < 0)
            list.append({goUnescaped(item), {}});
        else
            list.append({goUnescaped(item.first(equals)), goUnescaped(item.sliced(equals + 1))});
    }
    return list;
}

QString NodeRequest::value(const QString& key) const
{
    return values(key).value(0);
}

QStringList NodeRequest::values(const QString& key) const
{
    QStringList found;
    for (const auto& [name, value] : items()) {
        if (name == key)
            found.append(value);
    }
    return found;
}

NodeAnswer NodeAnswer::json(const QByteArray& body)
{
    return {.headers = {{"Content-Type", "application/json"}}, .chunks = {{.bytes = body}}};
}

NodeAnswer NodeAnswer::error(const QByteArray& message, int code)
{
    NodeAnswer answer
        = json("{\"Message\":\"" + message + "\",\"Code\":" + QByteArray::number(code) + ",\"Type\":\"error\"}\n");
    answer.status = code == 1 ? 400 : 500;
    return answer;
}

NodeAnswer NodeAnswer::text(int status, const QByteArray& body)
{
    return {.status = status, .headers = {{"Content-Type", "text/plain"}}, .chunks = {{.bytes = body}}};
}

NodeAnswer NodeAnswer::hold()
{
    return {.held = true};
}

NodeAnswer NodeAnswer::hangAfter(const QByteArray& body)
{
    NodeAnswer answer = json(body);
    answer.ending = Hang;
    return answer;
}

NodeAnswer NodeAnswer::dropAt(const QByteArray& body, qint64 byte)
{
    NodeAnswer answer = json(body);
    answer.dropAfter = byte;
    answer.ending = Close;
    return answer;
}

NodeAnswer NodeAnswer::chunked(const QByteArray& body, qsizetype size, std::chrono::milliseconds pause)
{
    NodeAnswer answer = json({});
    answer.chunks.clear();
    for (qsizetype start = 0; start < body.size(); start += size)
        answer.chunks.append({.bytes = body.mid(start, size), .pause = pause});
    return answer;
}

NodeAnswer NodeAnswer::raw(const QByteArray& bytes, Ending ending)
{
    return {.chunks = {{.bytes = bytes}}, .framing = Raw, .ending = ending};
}

NodeAnswer NodeAnswer::brokenOff(const QByteArray& body, const QByteArray& message)
{
    NodeAnswer answer = json(body);
    answer.trailers = {{"X-Stream-Error", message}};
    return answer;
}
