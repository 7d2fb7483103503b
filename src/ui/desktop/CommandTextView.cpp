// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/CommandTextView.h"

#include "model/HonestDisplay.h"

#include <QElapsedTimer>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Stands for a blank in the document: the layout lets a U+0020 at the end of a row vanish. It cannot be
/// mistaken, because one in the command is shown as a mark.
constexpr QChar blankCell(0x00A0);
constexpr QChar markOpen(0x27E8);
constexpr QChar markClose(0x27E9);
/// The room at both sides of a row, in which the hook stands.
constexpr int sideMargin = 10;
/// A longer line is laid out piece by piece: the time for a block grows with its length, and a block is
/// laid out at once.
constexpr qsizetype longestBlock = 2000;
/// How long the first part of a command may hold the event loop, and each later one.
constexpr qint64 firstPartMs = 15;
constexpr qint64 laterPartMs = 8;
/// From here on a command surely needs the scroll bar; having it from the start saves a second layout.
constexpr qsizetype surelyScrolls = 4000;
constexpr qreal commandPoints = 12;

/// State of a block of the document that goes on with the line of the block before it.
constexpr int continuesLine = 1;

QTextOption wrapAnywhere()
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAnywhere);
    return option;
}

QString asText(QString shown)
{
    return shown.replace(blankCell, u' ');
}
} // namespace

QFont commandFont(qreal points)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::Monospace); // what it lacks, Hangul for one, comes from such a face
    font.setFixedPitch(true);
    font.setPointSizeF(points);
    return font;
}

CommandTextView::CommandTextView(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setWordWrapMode(QTextOption::WrapAnywhere);
    setFont(commandFont(commandPoints));
    document()->setDocumentMargin(sideMargin);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Readable on light and dark alike, so that marks need not follow the theme.
    m_markFormat.setBackground(QColor(0xff, 0xd5, 0x4a));
    m_markFormat.setForeground(QColor(0x1c, 0x1c, 0x1c));
    labelForAssistance();
}

void CommandTextView::setCommand(const QString &command)
{
    setCursorWidth(0); // it would hide a part of the first character
    const HonestText shown = honestDisplay(command);
    m_text = shown.text;
    m_text.replace(u' ', blankCell);
    m_suspicious = shown.suspicious;
    setVerticalScrollBarPolicy(m_text.size() > surelyScrolls ? Qt::ScrollBarAlwaysOn
                                                             : Qt::ScrollBarAsNeeded);
    reload();
}

bool CommandTextView::isAllVisible() const
{
    return isWhole() && verticalScrollBar()->maximum() == 0;
}

void CommandTextView::reload()
{
    clear();
    m_position = 0;
    m_pieceStartsLine = true;
    m_insideMark = false;
    m_hasSplitLines = false;
    m_loadedForWidth = viewport()->width();
    ++m_loadSerial;
    continueLoading(firstPartMs);
    if (!isWhole()) {
        Q_EMIT wholeChanged();
    }
    moveCursor(QTextCursor::Start);
}

void CommandTextView::continueLoading(qint64 budgetMs)
{
    QElapsedTimer turn;
    turn.start();
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    while (!isWhole() && !turn.hasExpired(budgetMs)) {
        if (m_position > 0) {
            cursor.insertBlock();
        }
        cursor.block().setUserState(m_pieceStartsLine ? -1 : continuesLine);
        const qsizetype end = pieceEnd();
        appendPiece(cursor, end);
        const bool endsAtLineFeed = end < m_text.size() && m_text[end] == u'\n';
        m_pieceStartsLine = endsAtLineFeed || end == m_text.size();
        m_hasSplitLines = m_hasSplitLines || !m_pieceStartsLine;
        m_position = endsAtLineFeed ? end + 1 : end;
    }
    cursor.endEditBlock();
    if (isWhole()) {
        Q_EMIT wholeChanged();
        return;
    }
    QTimer::singleShot(0, this, [this, serial = m_loadSerial] {
        if (serial == m_loadSerial) {
            continueLoading(laterPartMs);
        }
    });
}

/// The end of what comes in next: several short lines, one line, or some rows of a long one, so that the
/// pieces of a line look like one.
qsizetype CommandTextView::pieceEnd() const
{
    const auto lineEndFrom = [this](qsizetype from) {
        const qsizetype lineFeed = m_text.indexOf(u'\n', from);
        return lineFeed < 0 ? m_text.size() : lineFeed;
    };
    qsizetype end = lineEndFrom(m_position);
    if (end - m_position <= longestBlock) {
        while (end < m_text.size()) {
            const qsizetype next = lineEndFrom(end + 1);
            // A line feed at the very end is never left alone: there is an empty line behind it.
            if (next - m_position > longestBlock && end + 1 < m_text.size()) {
                break;
            }
            end = next;
        }
        return end;
    }
    qsizetype length = longestBlock;
    if (m_text[m_position + length].isLowSurrogate()) {
        ++length;
    }
    QTextLayout layout(m_text.mid(m_position, length), font());
    layout.setTextOption(wrapAnywhere());
    const qreal width = viewport()->width() - 2 * document()->documentMargin();
    int lastRowStart = 0;
    layout.beginLayout();
    for (QTextLine row = layout.createLine(); row.isValid(); row = layout.createLine()) {
        row.setLineWidth(width);
        lastRowStart = row.textStart();
    }
    layout.endLayout();
    return m_position + (lastRowStart > 0 ? lastRowStart : length);
}

void CommandTextView::appendPiece(QTextCursor &cursor, qsizetype end)
{
    qsizetype at = m_position;
    while (at < end) {
        const qsizetype edge = m_text.indexOf(m_insideMark ? markClose : markOpen, at);
        const bool isBeyond = edge < 0 || edge >= end;
        const qsizetype runEnd = isBeyond ? end : m_insideMark ? edge + 1 : edge;
        if (runEnd > at) {
            cursor.insertText(m_text.mid(at, runEnd - at),
                              m_insideMark ? m_markFormat : QTextCharFormat());
        }
        if (!isBeyond) {
            m_insideMark = !m_insideMark;
        }
        at = runEnd;
    }
}

QMimeData *CommandTextView::createMimeDataFromSelection() const
{
    const QTextCursor selection = textCursor();
    QString text;
    for (QTextBlock block = document()->findBlock(selection.selectionStart());
         block.isValid() && block.position() <= selection.selectionEnd(); block = block.next()) {
        const qsizetype from = std::max(0, selection.selectionStart() - block.position());
        const qsizetype to
            = std::min(block.length() - 1, selection.selectionEnd() - block.position());
        if (block.position() > selection.selectionStart() && block.userState() != continuesLine) {
            text.append(u'\n');
        }
        text.append(QStringView(block.text()).mid(from, to - from));
    }
    auto *plain = new QMimeData; // the caller takes it
    plain->setText(asText(text));
    return plain;
}

void CommandTextView::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        labelForAssistance();
    }
}

void CommandTextView::labelForAssistance()
{
    setAccessibleName(tr("Command"));
    setAccessibleDescription(
        tr("The whole command. Characters that could mislead are shown as marks in brackets."));
}

void CommandTextView::keyPressEvent(QKeyEvent *event)
{
    setCursorWidth(1);
    QPlainTextEdit::keyPressEvent(event);
}

/// A press on the selection would begin to drag it, and dragging has an event loop of its own.
void CommandTextView::mousePressEvent(QMouseEvent *event)
{
    const QTextCursor pressed = cursorForPosition(event->pos());
    const QTextCursor selection = textCursor();
    if (event->button() == Qt::LeftButton && selection.hasSelection()
        && pressed.position() >= selection.selectionStart()
        && pressed.position() <= selection.selectionEnd()) {
        setTextCursor(pressed);
    }
    QPlainTextEdit::mousePressEvent(event);
}

void CommandTextView::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    const bool isOutOfDate = m_hasSplitLines && viewport()->width() != m_loadedForWidth;
    if (isOutOfDate || !isWhole()) {
        reload();
    }
}

void CommandTextView::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::PlaceholderText), 1));
    painter.setFont(font());
    QPointF offset = contentOffset();
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        if (offset.y() > event->rect().bottom()) {
            break;
        }
        paintRowSigns(painter, block, offset);
        offset.ry() += blockBoundingRect(block).height();
    }
}

void CommandTextView::paintRowSigns(QPainter &painter, const QTextBlock &block,
                                    QPointF blockTopLeft) const
{
    const QTextLayout &layout = *block.layout();
    const QString text = block.text();
    for (int i = 0; i < layout.lineCount(); ++i) {
        const QTextLine row = layout.lineAt(i);
        const QPointF topLeft = blockTopLeft + row.position();
        const bool goesOnFromAbove = i > 0 || block.userState() == continuesLine;
        const bool goesOnBelow
            = i + 1 < layout.lineCount() || block.next().userState() == continuesLine;
        if (goesOnFromAbove) {
            const qreal x = topLeft.x() - 7.5;
            const qreal y = topLeft.y() + row.height() * 0.35;
            painter.drawPolyline(
                QPolygonF {{x, y - 2}, {x, y + 3}, {x + 5, y + 3}, {x + 3, y + 1}});
            painter.drawLine(QPointF(x + 5, y + 3), QPointF(x + 3, y + 5));
        }
        const auto dot = [&](int position) {
            if (position >= 0 && position < text.size() && text[position] == blankCell) {
                const qreal x = (row.cursorToX(position) + row.cursorToX(position + 1)) / 2;
                painter.drawEllipse(QPointF(blockTopLeft.x() + x, topLeft.y() + row.height() / 2),
                                    0.8, 0.8);
            }
        };
        if (goesOnFromAbove) {
            dot(row.textStart());
        }
        if (goesOnBelow) {
            dot(row.textStart() + row.textLength() - 1);
        }
    }
}

} // namespace bram
