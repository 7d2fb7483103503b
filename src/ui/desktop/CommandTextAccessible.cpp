// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/CommandTextAccessible.h"

#include "ui/desktop/CommandTextView.h"

namespace bram
{

namespace
{
QAccessibleInterface *make(const QString &, QObject *object)
{
    auto *view = qobject_cast<CommandTextView *>(object);
    return view != nullptr ? new CommandTextAccessible(*view) : nullptr; // Qt takes it
}
} // namespace

void CommandTextAccessible::install()
{
    [[maybe_unused]] static const bool once = [] {
        QAccessible::installFactory(&make);
        return true;
    }();
}

CommandTextAccessible::CommandTextAccessible(CommandTextView &view)
    : QAccessibleWidget(&view, QAccessible::EditableText)
    , m_view(view)
{
}

void *CommandTextAccessible::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface *>(this)
                                              : QAccessibleWidget::interface_cast(type);
}

QAccessible::State CommandTextAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

QString CommandTextAccessible::text(QAccessible::Text kind) const
{
    return kind == QAccessible::Value ? text(0, characterCount()) : QAccessibleWidget::text(kind);
}

QString CommandTextAccessible::text(int from, int to) const
{
    return m_view.toldText(from, to);
}

int CommandTextAccessible::characterCount() const
{
    return int(m_view.toldLength());
}

QString CommandTextAccessible::attributes(int, int *from, int *to) const
{
    *from = 0;
    *to = characterCount();
    return {};
}

int CommandTextAccessible::cursorPosition() const
{
    return int(m_view.toldPosition(m_view.textCursor().position()));
}

void CommandTextAccessible::setCursorPosition(int position)
{
    setSelection(0, position, position);
}

void CommandTextAccessible::scrollToSubstring(int from, int)
{
    setCursorPosition(from);
    m_view.ensureCursorVisible();
}

int CommandTextAccessible::selectionCount() const
{
    return m_view.textCursor().hasSelection() ? 1 : 0;
}

void CommandTextAccessible::selection(int, int *from, int *to) const
{
    const QTextCursor cursor = m_view.textCursor();
    *from = int(m_view.toldPosition(cursor.selectionStart()));
    *to = int(m_view.toldPosition(cursor.selectionEnd()));
}

void CommandTextAccessible::addSelection(int from, int to)
{
    setSelection(0, from, to);
}

void CommandTextAccessible::removeSelection(int)
{
    setCursorPosition(cursorPosition());
}

void CommandTextAccessible::setSelection(int, int from, int to)
{
    // What is not loaded yet cannot be reached yet.
    const int last = m_view.document()->characterCount() - 1;
    const auto inDocument
        = [&](int told) { return qBound(0, m_view.documentPosition(told), last); };
    QTextCursor cursor = m_view.textCursor();
    cursor.setPosition(inDocument(from));
    cursor.setPosition(inDocument(to), QTextCursor::KeepAnchor);
    m_view.setTextCursor(cursor);
}

QRect CommandTextAccessible::characterRect(int offset) const
{
    QTextCursor cursor(m_view.document());
    const int position = m_view.documentPosition(offset);
    if (position + 1 >= m_view.document()->characterCount()) {
        return {};
    }
    cursor.setPosition(position);
    const QRect before = m_view.cursorRect(cursor);
    cursor.setPosition(position + 1);
    const QRect after = m_view.cursorRect(cursor);
    const int width = after.top() == before.top() ? after.left() - before.left()
                                                  : m_view.fontMetrics().averageCharWidth();
    const QRect inView(before.topLeft(), QSize(width, before.height()));
    return {m_view.viewport()->mapToGlobal(inView.topLeft()), inView.size()};
}

int CommandTextAccessible::offsetAtPoint(const QPoint &onScreen) const
{
    const QPoint inView = m_view.viewport()->mapFromGlobal(onScreen);
    return int(m_view.toldPosition(m_view.cursorForPosition(inView).position()));
}

} // namespace bram
