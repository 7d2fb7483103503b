// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/CommandTextView.h"

#include "model/HonestDisplay.h"
#include "ui/desktop/CommandTextAccessible.h"
#include "ui/desktop/CommandTextLayout.h"

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
constexpr qsizetype surelyScrolls = 20'000;
constexpr qreal commandPoints = 12;

/// State of a block of the document that goes on with the line of the block before it.
constexpr int continuesLine = 1;

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
    m_faintFormat.setForeground(QColor(0x8c, 0x8c, 0x8c));
    // The control would tell assistive technology of each piece that comes in.
    disconnect(document(), &QTextDocument::contentsChange, nullptr, nullptr);
    CommandTextAccessible::install();
    labelForAssistance();
}

void CommandTextView::setCommand(const QString &command)
{
    setCursorWidth(0); // it would hide a part of the first character
    const HonestText shown = honestDisplay(command);
    m_text = shown.text;
    m_text.replace(u' ', blankCell);
    m_suspicious = shown.suspicious;
    m_isEndSeen = false;
    m_measured.reset();
    setVerticalScrollBarPolicy(m_text.size() > surelyScrolls ? Qt::ScrollBarAlwaysOn
                                                             : Qt::ScrollBarAsNeeded);
    reload();
}

bool CommandTextView::isAllVisible() const
{
    return isWhole() && verticalScrollBar()->maximum() == 0;
}

CommandFit CommandTextView::fit(QSize least, QSize most) const
{
    if (m_text.size() > surelyScrolls) {
        return {most, false};
    }
    if (!m_measured || m_measured->least != least || m_measured->most != most) {
        const int margin = frameWidth() + sideMargin;
        const QSize around(2 * margin,
                           2 * margin + 2); // the scroll bar goes when there is some to spare
        CommandFit fit = fitCommand(m_text, font(), least - around, most - around,
                                    verticalScrollBar()->sizeHint().width());
        fit.size += around;
        m_measured = Measured {least, most, fit};
    }
    return m_measured->fit;
}

void CommandTextView::reload()
{
    clear();
    m_position = 0;
    m_pieceStartsLine = true;
    m_insideMark = false;
    m_seams.clear();
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
            if (!m_pieceStartsLine) {
                m_seams.push_back(cursor.position());
            }
            cursor.insertBlock();
        }
        cursor.block().setUserState(m_pieceStartsLine ? -1 : continuesLine);
        const qsizetype end = pieceEnd();
        appendPiece(cursor, end);
        const bool endsAtLineFeed = end < m_text.size() && m_text[end] == u'\n';
        m_pieceStartsLine = endsAtLineFeed || end == m_text.size();
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
    // Of an indentation, only tabs are drawn in another colour.
    qsizetype done = m_position;
    for (qsizetype line = m_pieceStartsLine ? m_position : nextLineStart(m_text, m_position);
         line < end; line = nextLineStart(m_text, line)) {
        const QStringView indentation = indentationAt(m_text, line);
        if (indentation.contains(tabSign)) {
            appendMarked(cursor, done, line);
            cursor.insertText(indentation.toString(), m_faintFormat);
            done = line + indentation.size();
        }
    }
    appendMarked(cursor, done, end);
}

void CommandTextView::appendMarked(QTextCursor &cursor, qsizetype from, qsizetype end)
{
    qsizetype at = from;
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

QString CommandTextView::toldText(qsizetype from, qsizetype to) const
{
    return m_text.mid(from, to - from).replace(blankCell, u' ');
}

qsizetype CommandTextView::toldPosition(int inDocument) const
{
    return inDocument - (std::ranges::lower_bound(m_seams, inDocument) - m_seams.begin());
}

int CommandTextView::documentPosition(qsizetype told) const
{
    // The seam after n others stands n places further in the document than in what is told.
    std::size_t before = 0;
    std::size_t after = m_seams.size();
    while (before < after) {
        const std::size_t middle = (before + after) / 2;
        if (m_seams[middle] - qsizetype(middle) <= told) {
            before = middle + 1;
        } else {
            after = middle;
        }
    }
    return int(told) + int(before);
}

QMimeData *CommandTextView::createMimeDataFromSelection() const
{
    const QTextCursor selection = textCursor();
    auto *plain = new QMimeData; // the caller takes it
    plain->setText(
        toldText(toldPosition(selection.selectionStart()), toldPosition(selection.selectionEnd())));
    return plain;
}

void CommandTextView::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        labelForAssistance();
    } else if (event->type() == QEvent::FontChange) {
        m_measured.reset();
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
    const bool isOutOfDate = !m_seams.empty() && viewport()->width() != m_loadedForWidth;
    if (isOutOfDate || !isWhole()) {
        reload();
    }
}

void CommandTextView::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font());
    QPointF offset = contentOffset();
    bool endsInView = false;
    for (QTextBlock block = firstVisibleBlock();
         block.isValid() && offset.y() <= viewport()->height(); block = block.next()) {
        if (offset.y() <= event->rect().bottom()) {
            paintRowSigns(painter, block, offset);
        }
        offset.ry() += blockBoundingRect(block).height();
        endsInView = !block.next().isValid() && offset.y() - sideMargin <= viewport()->height() + 1;
    }
    if (!m_isEndSeen && isWhole() && endsInView) {
        m_isEndSeen = true;
        QMetaObject::invokeMethod(this, &CommandTextView::endSeen, Qt::QueuedConnection);
    }
}

void CommandTextView::paintRowSigns(QPainter &painter, const QTextBlock &block,
                                    QPointF blockTopLeft) const
{
    const QColor ink = palette().color(QPalette::PlaceholderText);
    painter.setPen(QPen(ink, 1));
    painter.setBrush(Qt::NoBrush);
    const QTextLayout &layout = *block.layout();
    const QString text = block.text();
    const QList<int> blanks
        = block.userState() == continuesLine ? QList<int>() : blanksOfIndentation(text);
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
            const int inRow = position - row.textStart();
            if (inRow >= 0 && inRow < row.textLength() && text[position] == blankCell) {
                const qreal x = (row.cursorToX(position) + row.cursorToX(position + 1)) / 2;
                painter.drawEllipse(QPointF(blockTopLeft.x() + x, topLeft.y() + row.height() / 2),
                                    0.8, 0.8);
            }
        };
        for (const int blank : blanks) {
            dot(blank);
        }
        if (goesOnFromAbove) {
            dot(row.textStart());
        }
        if (goesOnBelow) {
            dot(row.textStart() + row.textLength() - 1);
        }
    }
}

} // namespace bram
