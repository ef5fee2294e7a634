// SPDX-License-Identifier: MIT
#include "TextOrder.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <span>
#include <utility>

namespace {

/// Few enough to be compared as they are.
constexpr size_t fewRows = 16;
constexpr qsizetype charactersOfKey = 8;
/// In place of a character from here on; texts that are equal up to it are compared as they are.
constexpr quint64 beyondKey = 0xff;

/// A row, and the next characters of its text.
struct Keyed
{
    quint64 key = 0;
    int row = 0;
    int place = 0; ///< where it was among the rows
};

class TextSort
{
public:
    TextSort(const std::function<QStringView(int)>& newTextOf, Qt::SortOrder order)
        : textOf(newTextOf)
        , descending(order == Qt::DescendingOrder)
    {
    }

    /// Sorts a range in which all texts are equal up to `known`.
    void run(std::span<int> rows, qsizetype known)
    {
        if (rows.size() <= fewRows) {
            compareWhole(rows);
            return;
        }
        const qsizetype prefix = commonPrefix(rows, known);
        std::vector<Keyed> keyed = keysOf(rows, prefix);
        std::ranges::sort(keyed, [this](const Keyed& a, const Keyed& b) {
            if (a.key != b.key)
                return descending ? b.key < a.key : a.key < b.key;
            return a.place < b.place;
        });
        std::ranges::transform(keyed, rows.begin(), &Keyed::row);
        sortEqualKeys(keyed, rows, prefix);
    }

private:
    void compareWhole(std::span<int> rows) const
    {
        std::ranges::stable_sort(rows, [this](int a, int b) {
            const int order = textOf(a).compare(textOf(b));
            return descending ? order > 0 : order < 0;
        });
    }

    qsizetype commonPrefix(std::span<const int> rows, qsizetype known) const
    {
        QStringView prefix = textOf(rows.front());
        for (const int row : rows) {
            if (prefix.size() == known)
                break;
            const QStringView text = textOf(row);
            const auto differs = std::ranges::mismatch(prefix.sliced(known), text.sliced(known)).in1;
            prefix = prefix.first(differs - prefix.begin());
        }
        return prefix.size();
    }

    std::vector<Keyed> keysOf(std::span<const int> rows, qsizetype prefix) const
    {
        std::vector<Keyed> keyed;
        keyed.reserve(rows.size());
        for (const int row : rows)
            keyed.push_back({.key = keyOf(textOf(row), prefix), .row = row, .place = static_cast<int>(keyed.size())});
        return keyed;
    }

    /// An end of text is 0, so it comes before every character.
    static quint64 keyOf(QStringView text, qsizetype prefix)
    {
        quint64 key = 0;
        quint64 code = 0;
        for (qsizetype i = prefix; i < prefix + charactersOfKey; ++i) {
            if (code != beyondKey)
                code = i < text.size() ? std::min<quint64>(text.at(i).unicode(), beyondKey) : 0;
            key = (key << 8U) | code;
        }
        return key;
    }

    void sortEqualKeys(std::span<const Keyed> keyed, std::span<int> rows, qsizetype prefix)
    {
        for (size_t first = 0, end = 0; first < keyed.size(); first = end) {
            const quint64 key = keyed[first].key;
            end = first + 1;
            while (end < keyed.size() && keyed[end].key == key)
                ++end;
            const std::span<int> equal = rows.subspan(first, end - first);
            const quint64 last = key & 0xffU;
            if (last != 0 && last != beyondKey)
                run(equal, prefix + charactersOfKey);
            else if (!areEqual(equal))
                compareWhole(equal);
        }
    }

    bool areEqual(std::span<const int> rows) const
    {
        const QStringView text = textOf(rows.front());
        return std::ranges::all_of(rows, [this, text](int row) { return textOf(row) == text; });
    }

    const std::function<QStringView(int)>& textOf;
    bool descending;
};

} // namespace

void sortByText(std::vector<int>& rows, const std::function<QStringView(int)>& textOf, Qt::SortOrder order)
{
    const auto isInOrder = [&textOf, order](int a, int b) {
        const int sign = textOf(a).compare(textOf(b));
        return order == Qt::AscendingOrder ? sign <= 0 : sign >= 0;
    };
    if (std::ranges::adjacent_find(rows, std::not_fn(isInOrder)) != rows.end()) // a list may come sorted
        TextSort(textOf, order).run(rows, 0);
}
