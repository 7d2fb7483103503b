// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/OperatorChat.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWidget>

namespace bram
{

/// The practice mode's chat as the person with the phone has it: messages, their buttons, and a line to write on.
/// Escape closes it.
class PracticeChatWindow final : public QWidget
{
    Q_OBJECT

public:
    /// `chat` outlives the window.
    explicit PracticeChatWindow(OperatorChat &chat);

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void retranslate();
    void scheduleRefresh();
    void refresh();
    QWidget *bubble(const OperatorChat::Message &message);
    void addRows(QVBoxLayout *column, const OperatorChat::ButtonRows &rows);
    void sendLine();
    void scrollToEnd();

    OperatorChat &m_chat;
    bool m_refreshScheduled = false;
    QLabel *m_explanation;
    QScrollArea *m_scroll;
    QWidget *m_messages = nullptr; ///< in the scroll area; made anew at each change
    QWidget *m_keys = nullptr; ///< below it; the same
    QVBoxLayout *m_keysPlace;
    QLabel *m_answer;
    QLineEdit *m_line;
    QPushButton *m_send;
};

} // namespace bram
