// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractTextDocumentLayout>

class QTextLayout;

/// Lays out a document of plain lines of one font, unwrapped, each as high as the next. Only the lines in view are ever
/// shaped, so a log of a million lines opens and grows at the price of its text.
class LineLayout : public QAbstractTextDocumentLayout
{
    Q_OBJECT

public:
    explicit LineLayout(QTextDocument* document);

    void draw(QPainter* painter, const PaintContext& context) override;
    int hitTest(const QPointF& point, Qt::HitTestAccuracy accuracy) const override;
    int pageCount() const override { return 1; }
    QSizeF documentSize() const override;
    QRectF frameBoundingRect(QTextFrame* frame) const override;
    QRectF blockBoundingRect(const QTextBlock& block) const override;

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;

private:
    void measureFont();
    void shape(QTextLayout& layout) const;
    int lineAt(qreal y) const;
    void widenFor(QTextBlock block);

    qreal lineHeight = 1;
    qreal cellWidth = 1;     ///< of the widest letter; with a fixed pitch of every letter
    qsizetype mostCells = 0; ///< of all lines
};
