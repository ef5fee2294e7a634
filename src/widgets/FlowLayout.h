// SPDX-License-Identifier: MIT
#pragma once

#include <QLayout>

/// A row that goes on in further lines where it is too wide, so that no font and no translation makes a window larger
/// than the screen. What can grow, and text that wraps, shares the rest of its line.
class FlowLayout : public QLayout
{
public:
    explicit FlowLayout(QWidget* parent = nullptr);
    ~FlowLayout() override;

    void addWidgets(const QList<QWidget*>& widgets);
    /// The items of `layout` stay in one line.
    void addLayout(QLayout* layout);
    /// Takes the rest of the line: what follows is at the line's end.
    void addStretch();

    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(items.size()); }
    QLayoutItem* itemAt(int index) const override { return items.value(index); }
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return placeItems({0, 0, width, 0}, false); }
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect& area) override;

private:
    struct Place
    {
        QLayoutItem* item = nullptr;
        int width = 0; // pixels
    };
    int placeItems(const QRect& area, bool forGood) const;
    QList<Place> shownItems() const;
    QList<Place> takeLine(QList<Place>& rest, int room) const;

    QList<QLayoutItem*> items;
};
