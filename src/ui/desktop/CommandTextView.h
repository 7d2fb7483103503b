// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPlainTextEdit>
#include <QTextCharFormat>

namespace bram
{

/// Shows a command whole, in a fixed-width face, with everything that could mislead as a mark that stands
/// out (see model/HonestDisplay.h). Read-only; what is selected is copied as it is shown, as plain text.
///
/// Rows that go on from the row above carry a hook at their left edge, and a blank at the edge of such a row
/// is drawn as a dot: a row that was broken for want of room never looks like another line, nor the
/// other way round.
///
/// A very long command comes in over several turns of the event loop.
class CommandTextView final : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit CommandTextView(QWidget *parent = nullptr);

    void setCommand(const QString &command);

    /// Whether all of the command is in the view, so that scrolling reaches its end.
    bool isWhole() const { return m_position == m_text.size(); }
    /// Whether nothing is out of view either.
    bool isAllVisible() const;
    /// Whether the command holds a mark that is worth a warning.
    bool isSuspicious() const { return m_suspicious; }

Q_SIGNALS:
    /// All of a new command is in the view; or a part of one that was in is out for the moment.
    void wholeChanged();

protected:
    QMimeData *createMimeDataFromSelection() const override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void labelForAssistance();
    void reload();
    void continueLoading(qint64 budgetMs);
    qsizetype pieceEnd() const;
    void appendPiece(QTextCursor &cursor, qsizetype end);
    void paintRowSigns(QPainter &painter, const QTextBlock &block, QPointF blockTopLeft) const;

    QString m_text; ///< as shown, its blanks as `blankCell`
    qsizetype m_position = 0; ///< up to where the text is in the document
    bool m_pieceStartsLine = true;
    bool m_insideMark = false;
    bool m_hasSplitLines = false; ///< some line was too long for one block of the document
    bool m_suspicious = false;
    int m_loadedForWidth = 0;
    quint64 m_loadSerial = 0;
    QTextCharFormat m_markFormat;
};

/// The system's fixed-width face.
QFont commandFont(qreal points);

} // namespace bram
