// SPDX-License-Identifier: MIT
#include "TextSearch.h"

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

char16_t inUpperCase(QChar c)
{
    const char16_t code = c.unicode();
    return code >= u'a' && code <= u'z' ? static_cast<char16_t>(code - (u'a' - u'A')) : code;
}

/// Whether `text` holds `part`, with `first` as its first letter, in any case of the others. Only that letter is looked
/// for in all of the text, which a processor does by many at a time.
bool containsFrom(char16_t first, QStringView text, QStringView part)
{
    const auto equal = [](QChar a, QChar b) { return inLowerCase(a) == inLowerCase(b); };
    const qsizetype last = text.size() - part.size();
    for (qsizetype at = text.indexOf(first); at >= 0 && at <= last; at = text.indexOf(first, at + 1)) {
        if (std::equal(part.begin(), part.end(), text.begin() + at, equal))
            return true;
    }
    return false;
}

} // namespace

bool containsIgnoringCase(QStringView text, QStringView part)
{
    if (!isAscii(part) || !isAscii(text)) // where some letters equal others in ways of their own
        return text.contains(part, Qt::CaseInsensitive);
    if (part.isEmpty())
        return true;
    const char16_t lower = inLowerCase(part.front());
    const char16_t upper = inUpperCase(part.front());
    return containsFrom(lower, text, part) || (upper != lower && containsFrom(upper, text, part));
}
