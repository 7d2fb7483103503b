// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/CommandTextLayout.h"

#include <QPlainTextEdit>
#include <QTextCharFormat>

#include <optional>
#include <vector>

namespace bram
{

/// Shows a command whole, in a fixed-width face, with everything that could mislead as a mark that stands
/// out (see model/HonestDisplay.h). Read-only; what is selected is copied as it is shown, as plain text.
///
/// An indentation is drawn faintly: a dot for each blank, an arrow for a tab.
///
/// Rows that go on from the row above carry a hook at their left edge, and a blank at the edge of such a row
/// is drawn as a dot: a row that was broken for want of room never looks like another line, nor the
/// other way round.
///
/// A very long command comes in over several turns of the event loop, and its long lines in pieces. Neither
/// assistive technology nor the clipboard notices.
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

    /// Whether the end of the command has been drawn on the screen since the command was set.
    bool isEndSeen() const { return m_isEndSeen; }

    /// The size in which to show the command: `least` where that will do, else wider and then higher, up to
    /// `most`. Looks at no more of the command than fits there.
    CommandFit fit(QSize least, QSize most) const;

    /// The command as it is shown, with the line breaks and blanks it has: what is copied, and told to
    /// assistive technology.
    QString toldText(qsizetype from, qsizetype to) const;
    qsizetype toldLength() const { return m_text.size(); }
    /// Positions in it of those in the document, and the other way round.
    qsizetype toldPosition(int inDocument) const;
    int documentPosition(qsizetype told) const;

Q_SIGNALS:
    void endSeen();
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
    void appendMarked(QTextCursor &cursor, qsizetype from, qsizetype end);
    void paintRowSigns(QPainter &painter, const QTextBlock &block, QPointF blockTopLeft) const;

    QString m_text; ///< as shown, its blanks as `blankCell`
    bool m_isEndSeen = false;
    struct Measured {
        QSize least;
        QSize most;
        CommandFit fit;
    };
    mutable std::optional<Measured> m_measured;
    qsizetype m_position = 0; ///< up to where the text is in the document
    bool m_pieceStartsLine = true;
    bool m_insideMark = false;
    /// Where in the document a block ends though the line goes on: it was too long for one block.
    std::vector<int> m_seams;
    bool m_suspicious = false;
    int m_loadedForWidth = 0;
    quint64 m_loadSerial = 0;
    QTextCharFormat m_markFormat;
    QTextCharFormat m_faintFormat;
};

/// The system's fixed-width face.
QFont commandFont(qreal points);

} // namespace bram
