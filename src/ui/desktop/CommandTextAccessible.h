// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAccessibleWidget>

namespace bram
{

class CommandTextView;

/// A command as it is told to assistive technology: with the line breaks and blanks that it has, and none
/// that only the way it is laid out brings with it.
class CommandTextAccessible final : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    /// From now on, assistive technology is told of every `CommandTextView` in this way.
    static void install();

    explicit CommandTextAccessible(CommandTextView &view);

    void *interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;

    QString text(int from, int to) const override;
    int characterCount() const override;
    QString attributes(int offset, int *from, int *to) const override;

    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    void scrollToSubstring(int from, int to) override;

    int selectionCount() const override;
    void selection(int index, int *from, int *to) const override;
    void addSelection(int from, int to) override;
    void removeSelection(int index) override;
    void setSelection(int index, int from, int to) override;

    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &onScreen) const override;

private:
    CommandTextView &m_view;
};

} // namespace bram
