// SPDX-License-Identifier: MIT
#pragma once

#include <QTextEdit>
#include <QTimer>

/// Lines of a long text that go together: each is shown after `prefix`.
struct LinePart
{
    QStringList lines {};
    QString prefix {};
};

/// A read-only view of plain lines, unwrapped and of one font. A text of up to 10,000 lines is complete at once. Of a
/// longer one, that end is which is to be read first, and the rest comes in turns of the event loop of some 16 ms; a
/// million lines take three to four seconds.
class LineView : public QTextEdit
{
    Q_OBJECT

public:
    enum class From { Start, End };

    explicit LineView(QWidget* parent = nullptr);

    /// Shows this text instead. From::Start shows its first lines, From::End its last, which stay in view while those
    /// before them come.
    void setLines(const QList<LinePart>& parts, From from);
    /// Adds one more line after all others, and moves down to it if the whole text is there.
    void appendLine(const QString& line);
    void clearLines() { setLines({}, From::Start); }
    /// Whether lines are still to come.
    bool isFilling() const { return next < end; }
    /// Whether nothing but white space is shown.
    bool isBlank() const;

protected:
    /// The selection as plain text, and only that. Qt's own takes seconds for a million lines. A selection of
    /// everything includes what is still to come.
    QMimeData* createMimeDataFromSelection() const override;

private:
    QString lineAt(qsizetype index) const;
    QString takeLines();
    QString waitingText() const;
    bool isAllSelected() const;
    void insertLines();
    void followEnd();
    void fillForAWhile();
    void endFilling();

    QTimer turn;
    QList<LinePart> parts {}; ///< the text that is being filled in
    From from = From::Start;
    qsizetype next = 0; ///< of the lines of `parts`, those from here to `end` are still to come
    qsizetype end = 0;
};
