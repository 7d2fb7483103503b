// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/PracticeChatWindow.h"

#include "model/HonestDisplay.h"
#include "system/NextTurn.h"
#include "ui/desktop/MenuText.h"

#include <QBoxLayout>
#include <QEvent>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace bram
{

using namespace std::chrono_literals;

namespace
{
constexpr QSize firstSize(460, 560);
constexpr auto answerTime = 4s;
/// Older ones are not shown: each takes a few widgets.
constexpr qsizetype maxMessages = 40;
} // namespace

PracticeChatWindow::PracticeChatWindow(OperatorChat &chat)
    : QWidget(nullptr, Qt::Window)
    , m_chat(chat)
    , m_explanation(new QLabel(this))
    , m_scroll(new QScrollArea(this))
    , m_keysPlace(new QVBoxLayout)
    , m_answer(new QLabel(this))
    , m_line(new QLineEdit(this))
    , m_send(new QPushButton(this))
{
    setAttribute(Qt::WA_QuitOnClose, false);
    for (QLabel *label : {m_explanation, m_answer}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
    }
    m_scroll->setWidgetResizable(true);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    m_answer->hide();
    auto *writing = new QHBoxLayout;
    writing->addWidget(m_line, 1);
    writing->addWidget(m_send);
    auto *column = new QVBoxLayout(this);
    column->addWidget(m_explanation);
    column->addWidget(m_scroll, 1);
    column->addWidget(m_answer);
    column->addLayout(m_keysPlace);
    column->addLayout(writing);
    resize(firstSize);

    connect(m_send, &QPushButton::clicked, this, &PracticeChatWindow::sendLine);
    connect(m_line, &QLineEdit::returnPressed, this, &PracticeChatWindow::sendLine);
    connect(m_line, &QLineEdit::textChanged, m_send,
            [this](const QString &text) { m_send->setEnabled(!text.trimmed().isEmpty()); });
    connect(&chat, &OperatorChat::changed, this, &PracticeChatWindow::scheduleRefresh);
    auto *answerShown = new QTimer(this);
    answerShown->setSingleShot(true);
    answerShown->setInterval(answerTime);
    connect(answerShown, &QTimer::timeout, m_answer, &QWidget::hide);
    connect(&chat, &OperatorChat::answered, this, [this, answerShown](const QString &text) {
        m_answer->setText(honestLine(text).text);
        m_answer->show();
        answerShown->start();
    });
    m_send->setEnabled(false);
    retranslate();
}

void PracticeChatWindow::retranslate()
{
    setWindowTitle(tr("Practice Chat"));
    m_explanation->setText(tr("This is what a person sees on the phone. Nothing of it leaves this "
                              "machine."));
    m_line->setPlaceholderText(tr("Message"));
    m_line->setAccessibleName(tr("Message"));
    m_send->setText(tr("&Send"));
    refresh();
}

void PracticeChatWindow::scheduleRefresh()
{
    if (isVisible() && !std::exchange(m_refreshScheduled, true)) {
        inNextTurn(this, [this] { refresh(); });
    }
}

void PracticeChatWindow::refresh()
{
    m_refreshScheduled = false;
    m_messages = new QWidget;
    auto *column = new QVBoxLayout(m_messages);
    const auto messages = m_chat.messages();
    for (qsizetype i = std::max<qsizetype>(0, messages.size() - maxMessages); i < messages.size();
         ++i) {
        auto *row = new QHBoxLayout;
        column->addLayout(row);
        QWidget *shown = bubble(messages.at(i));
        if (messages.at(i).isFromBot) {
            row->addWidget(shown, 5);
            row->addStretch(1);
        } else {
            row->addStretch(1);
            row->addWidget(shown, 5);
        }
    }
    if (messages.isEmpty()) {
        auto *empty = new QLabel(tr("No message yet."), m_messages);
        empty->setAlignment(Qt::AlignCenter);
        empty->setEnabled(false);
        column->addWidget(empty);
    }
    column->addStretch(1);
    m_scroll->setWidget(m_messages); // the one before goes

    delete std::exchange(m_keys, new QWidget(this));
    m_keysPlace->addWidget(m_keys);
    auto *keys = new QVBoxLayout(m_keys);
    keys->setContentsMargins({});
    addRows(keys, m_chat.keys());
    m_keys->setVisible(keys->count() > 0);
    scrollToEnd();
}

QWidget *PracticeChatWindow::bubble(const OperatorChat::Message &message)
{
    auto *frame = new QFrame;
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(message.isFromBot ? QPalette::Base : QPalette::AlternateBase);
    auto *column = new QVBoxLayout(frame);
    auto *who = new QLabel(message.isFromBot ? tr("Bot") : tr("You"), frame);
    QFont font = who->font();
    font.setBold(true);
    who->setFont(font);
    column->addWidget(who);
    auto *text = new QLabel(frame);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text->setText(message.text);
    column->addWidget(text);
    addRows(column, message.buttons);
    return frame;
}

void PracticeChatWindow::addRows(QVBoxLayout *column, const OperatorChat::ButtonRows &rows)
{
    for (const auto &row : rows) {
        auto *line = new QHBoxLayout;
        column->addLayout(line);
        for (const OperatorChat::Button &button : row) {
            auto *shown = new QPushButton(menuLabel(button.text, MenuDrawing::OwnWindow));
            shown->setAutoDefault(false);
            line->addWidget(shown);
            connect(shown, &QPushButton::clicked, this,
                    [this, number = button.number] { m_chat.press(number); });
        }
    }
}

void PracticeChatWindow::sendLine()
{
    const QString text = m_line->text().trimmed();
    if (!text.isEmpty()) {
        m_line->clear();
        m_chat.say(text);
    }
}

/// Once the new messages have been laid out.
void PracticeChatWindow::scrollToEnd()
{
    inNextTurn(this, [this] {
        QScrollBar *bar = m_scroll->verticalScrollBar();
        bar->setValue(bar->maximum());
    });
}

void PracticeChatWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    }
}

void PracticeChatWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void PracticeChatWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    refresh();
    m_line->setFocus();
}

} // namespace bram
