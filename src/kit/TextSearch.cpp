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

} // namespace

bool containsIgnoringCase(QStringView text, QStringView part)
{
    if (!isAscii(part) || !isAscii(text)) // where some letters equal others in ways of their own
        return text.contains(part, Qt::CaseInsensitive);
    const auto equal = [](QChar a, QChar b) { return inLowerCase(a) == inLowerCase(b); };
    return part.isEmpty() || std::search(text.begin(), text.end(), part.begin(), part.end(), equal) != text.end();
}
