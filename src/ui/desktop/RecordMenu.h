// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAction>
#include <QMenu>
#include <QObject>

namespace bram
{

class RecordActions;

/// The submenu of what can be taken out of the program for an audit or for somebody who helps. While a log is
/// being gone through, its title says how far that is. Main thread.
class RecordMenu final : public QObject
{
    Q_OBJECT

public:
    explicit RecordMenu(RecordActions &actions);

    QMenu &menu() { return m_menu; }

    /// Writes every text anew, after a change of the language.
    void retranslate();

    /// Adds an entry below the others, for the owner to label.
    void append(QAction &action) { m_menu.addAction(&action); }

private:
    void showWork();

    RecordActions &m_actions;
    QMenu m_menu;
    QAction m_save;
    QAction m_view;
    QAction m_bundle;
    QAction m_cancel;
};

} // namespace bram
