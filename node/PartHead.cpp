// SPDX-License-Identifier: MIT
#include "PartHead.h"

#include <algorithm>

namespace {

constexpr QByteArrayView separators {"()<>@,;:\\\"/[]?="};

bool isTokenByte(char c)
{
    return c > ' ' && c < 127 && !separators.contains(c);
}

QByteArrayView takeToken(QByteArrayView& rest)
{
    const QByteArrayView token = rest.first(std::ranges::find_if_not(rest, isTokenByte) - rest.begin());
    rest = rest.sliced(token.size());
    return token;
}

/// A backslash counts only before a separator; elsewhere it is a byte like any other.
std::optional<QByteArray> takeQuoted(QByteArrayView& rest)
{
    QByteArray value;
    for (qsizetype i = 1; i < rest.size(); ++i) {
        const bool escapes = rest[i] == '\\' && i + 1 < rest.size() && separators.contains(rest[i + 1]);
        if (!escapes && rest[i] == '"') {
            rest = rest.sliced(i + 1);
            return value;
        }
        if (rest[i] == '\r')
            return std::nullopt;
        if (escapes)
            ++i;
        value.append(rest[i]);
    }
    return std::nullopt;
}

std::optional<QByteArray> takeValue(QByteArrayView& rest)
{
    if (rest.startsWith('"'))
        return takeQuoted(rest);
    const QByteArrayView token = takeToken(rest);
    return token.isEmpty() ? std::nullopt : std::optional(token.toByteArray());
}

/// Takes `mark` and the blanks around it.
bool takeMark(QByteArrayView& rest, char mark)
{
    rest = rest.trimmed();
    if (!rest.startsWith(mark))
        return false;
    rest = rest.sliced(1).trimmed();
    return true;
}

bool isType(const QByteArray& text)
{
    QByteArrayView rest = text;
    if (takeToken(rest).isEmpty())
        return false;
    if (rest.isEmpty())
        return true;
    rest = rest.sliced(1);
    return text.contains('/') && !takeToken(rest).isEmpty() && rest.isEmpty();
}

bool isHex(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Nothing undone at all if a "%" is not followed by two digits.
QByteArray queryUnescaped(const QByteArray& text)
{
    for (qsizetype i = text.indexOf('%'); i >= 0; i = text.indexOf('%', i + 1)) {
        if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2]))
            return text;
    }
    return QByteArray::fromPercentEncoding(QByteArray(text).replace('+', ' '));
}

/// As an absolute path without detours.
QList<QByteArray> cleanPath(const QByteArray& path)
{
    QList<QByteArray> names;
    for (const QByteArray& name : path.split('/')) {
        if (name == ".." && !names.isEmpty())
            names.removeLast();
        else if (!name.isEmpty() && name != "." && name != "..")
            names.append(name);
    }
    return names;
}

} // namespace

std::optional<MimeValue> parseMimeValue(QByteArrayView text)
{
    const qsizetype typeEnd = text.indexOf(';');
    QByteArrayView rest = typeEnd < 0 ? QByteArrayView() : text.sliced(typeEnd);
    MimeValue mime {.type = text.first(text.size() - rest.size()).trimmed().toByteArray().toLower()};
    if (!isType(mime.type))
        return std::nullopt;
    while (!rest.trimmed().isEmpty() && rest.trimmed() != ";") {
        if (!takeMark(rest, ';'))
            return std::nullopt;
        const QByteArray name = takeToken(rest).toByteArray().toLower();
        if (name.isEmpty() || !takeMark(rest, '='))
            return std::nullopt;
        const auto value = takeValue(rest);
        if (!value || mime.parameters.value(name, *value) != *value)
            return std::nullopt;
        mime.parameters.insert(name, *value);
    }
    return mime;
}

std::optional<QList<QByteArray>> partPath(const HeaderList& head)
{
    const auto disposition = parseMimeValue(headerIn(head, "Content-Disposition"));
    if (!disposition)
        return std::nullopt;
    return cleanPath(queryUnescaped(disposition->parameters.value("filename")));
}
