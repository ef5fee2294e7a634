// SPDX-License-Identifier: MIT
#include "LiteralSearch.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr char16_t firstBeyondAscii = 0x80;

/// Looks at all of it, which a processor does by many at a time.
bool isAscii(QStringView text)
{
    char16_t seen = 0;
    for (const QChar c : text)
        seen = static_cast<char16_t>(seen | c.unicode());
    return seen < firstBeyondAscii;
}

char16_t inLowerCase(QChar c)
{
    const char16_t code = c.unicode();
    return code >= u'A' && code <= u'Z' ? static_cast<char16_t>(code + (u'a' - u'A')) : code;
}

} // namespace

std::optional<QString> literalOf(const QString& pattern)
{
    QString literal;
    literal.reserve(pattern.size());
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        if (pattern.at(i) == u'\\' && i + 1 < pattern.size())
            ++i;
        literal.append(pattern.at(i));
    }
    return QRegularExpression::escape(literal) == pattern ? std::optional(literal) : std::nullopt;
}

bool containsIgnoringCase(QStringView text, QStringView literal)
{
    if (!isAscii(literal) || !isAscii(text)) // where some letters equal others in ways of their own
        return text.contains(literal, Qt::CaseInsensitive);
    const auto equal = [](QChar a, QChar b) { return inLowerCase(a) == inLowerCase(b); };
    return literal.isEmpty() || std::ranges::search(text, literal, equal).begin() != text.end();
}
