// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ReportWindow.h"

#include "model/HonestDisplay.h"
#include "ui/desktop/BringToFront.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/ElidedLabel.h"

#include <QBoxLayout>
#include <QKeyEvent>

namespace bram
{

namespace
{
constexpr QSize firstSize(860, 640);
constexpr QSize smallestSize(360, 240);
} // namespace

ReportWindow::ReportWindow(const QString &path, const QString &text,
                           const ReplySource<bool> &otherProgram)
    : QWidget(nullptr, Qt::Window)
    , m_otherProgram(otherProgram)
    , m_text(new QPlainTextEdit(this))
    , m_open(new QPushButton(this))
    , m_close(new QPushButton(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    m_text->setReadOnly(true);
    m_text->setUndoRedoEnabled(false);
    m_text->setTabChangesFocus(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap); // rows of a table stay rows
    m_text->setFont(commandFont(font().pointSizeF()));
    m_text->setPlainText(honestDisplay(text).text);
    auto *place = new ElidedLabel(this);
    place->setWholeText(path);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(place, 1);
    buttons->addWidget(m_open);
    buttons->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addLayout(buttons);
    setMinimumSize(smallestSize);
    resizeWithinScreen(*this, firstSize);
    connect(m_open, &QPushButton::clicked, this, [this] {
        m_otherProgram.answer(true);
        close();
    });
    connect(m_close, &QPushButton::clicked, this, &QWidget::close);
    retranslate();
}

void ReportWindow::retranslate()
{
    setWindowTitle(tr("Weekly audit report"));
    m_text->setAccessibleName(tr("Weekly audit report"));
    m_open->setText(tr("Open with Another Program"));
    m_close->setText(tr("Close"));
}

void ReportWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    }
}

void ReportWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace bram
