// SPDX-License-Identifier: MIT
#include "LineLayout.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t lastNarrowLetter = 0x24f;
constexpr qreal everything = 1e9; // pixels, as Qt's own layouts have it

constexpr qsizetype tabCells = 8;
/// A line is shaped with each repaint. The address of an unpin of thousands is hundreds of kilobytes long: what comes
/// after this many letters is in the text, for copying, and not in sight.
constexpr qsizetype longestShown = 8000;

/// What is drawn of a line. At a letter that means the end of a line Qt would stop drawing.
QString shownText(const QTextBlock& block)
{
    QString text = block.text().left(longestShown);
    return text.replace(QChar::LineSeparator, u' ');
}

/// How many letters of a fixed pitch the text is wide, at the most: what is not Latin may take two.
qsizetype cellsOf(const QString& text)
{
    return text.size() + tabCells * text.count(u'\t')
        + std::ranges::count_if(text, [](QChar c) { return c.unicode() > lastNarrowLetter; });
}

/// The parts of the selections that lie in `block`.
QList<QTextLayout::FormatRange> selectionsIn(const QTextBlock& block,
                                             const QList<QAbstractTextDocumentLayout::Selection>& selections)
{
    QList<QTextLayout::FormatRange> ranges;
    ranges.reserve(selections.size());
    for (const auto& selection : selections) {
        const int start = std::max(selection.cursor.selectionStart() - block.position(), 0);
        const int end = std::min(selection.cursor.selectionEnd() - block.position(), block.length() - 1);
        if (start < end)
            ranges.append({.start = start, .length = end - start, .format = selection.format});
    }
    return ranges;
}

} // namespace

LineLayout::LineLayout(QTextDocument* document)
    : QAbstractTextDocumentLayout(document)
{
    setProperty("contentHasAlignment", false); // for the view: its width changes nothing
    measureFont();
}

void LineLayout::measureFont()
{
    const QFontMetricsF metrics(document()->defaultFont(), paintDevice());
    lineHeight = std::ceil(metrics.lineSpacing());
    cellWidth = metrics.horizontalAdvance(u'W');
}

void LineLayout::shape(QTextLayout& layout) const
{
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
}

void LineLayout::draw(QPainter* painter, const PaintContext& context)
{
    const QRectF clip = context.clip.isValid() ? context.clip : QRectF({}, documentSize());
    const int last = lineAt(clip.bottom());
    painter->setPen(context.palette.color(QPalette::Text));
    QTextBlock block = document()->findBlockByNumber(lineAt(clip.top()));
    for (; block.isValid() && block.blockNumber() <= last; block = block.next()) {
        QTextLayout layout(shownText(block), document()->defaultFont(), paintDevice());
        shape(layout);
        painter->save();
        painter->translate(blockBoundingRect(block).topLeft()); // a layout's own numbers end at 33 million pixels
        layout.draw(painter, {}, selectionsIn(block, context.selections));
        painter->restore();
    }
}

int LineLayout::hitTest(const QPointF& point, Qt::HitTestAccuracy accuracy) const
{
    const QTextBlock block = document()->findBlockByNumber(lineAt(point.y()));
    QTextLayout ofShownText(shownText(block), document()->defaultFont(), paintDevice());
    const bool isCut = block.length() - 1 > longestShown;
    // A block's own layout stays shaped: words are selected by the line that it has. That of a cut line would take in
    // all of its letters, so no words are selected in one.
    QTextLayout* layout = isCut ? &ofShownText : block.layout();
    if (layout->lineCount() == 0)
        shape(*layout);
    const QPointF inBlock = point - blockBoundingRect(block).topLeft();
    const QTextLine line = layout->lineAt(0);
    if (accuracy == Qt::ExactHit && !line.naturalTextRect().contains(inBlock))
        return -1;
    return block.position() + line.xToCursor(inBlock.x());
}

/// Of the line nearest to `y`.
int LineLayout::lineAt(qreal y) const
{
    const qreal line = std::floor((y - document()->documentMargin()) / lineHeight);
    return static_cast<int>(std::clamp(line, 0.0, static_cast<qreal>(document()->blockCount() - 1)));
}

QSizeF LineLayout::documentSize() const
{
    const qreal margins = 2 * document()->documentMargin();
    return {static_cast<qreal>(mostCells) * cellWidth + margins, document()->blockCount() * lineHeight + margins};
}

QRectF LineLayout::frameBoundingRect(QTextFrame* /*frame*/) const
{
    return {{}, documentSize()};
}

QRectF LineLayout::blockBoundingRect(const QTextBlock& block) const
{
    const qreal margin = document()->documentMargin();
    return {margin, margin + block.blockNumber() * lineHeight, static_cast<qreal>(mostCells) * cellWidth, lineHeight};
}

void LineLayout::widenFor(QTextBlock block)
{
    mostCells = std::max(mostCells, cellsOf(shownText(block)));
    block.clearLayout(); // a cursor made one when it was here
}

/// Lines that are inserted, at the end or above the others, are the only ones that are looked at; any other change
/// looks at all lines. What is above the change is not repainted.
void LineLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    const bool whole = charsRemoved > 0 || (from == 0 && charsAdded >= document()->characterCount() - 1);
    if (whole) {
        measureFont();
        mostCells = 0;
    }
    QTextBlock first = document()->findBlock(whole ? 0 : from);
    if (from > 0 && !whole && first.next().isValid()
        && from == first.next().position() - 1) { // begun at this line's end
        first.clearLayout();
        first = first.next();
    }
    const QTextBlock last = whole ? QTextBlock() : document()->findBlock(from + charsAdded).next();
    for (QTextBlock block = first; block.isValid() && block != last; block = block.next())
        widenFor(block);
    emit documentSizeChanged(documentSize());
    emit update({0, blockBoundingRect(first).top(), everything, everything});
}
