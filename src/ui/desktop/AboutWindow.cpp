// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AboutWindow.h"

#include "ui/desktop/BringToFront.h"
#include "ui/desktop/CrestIcon.h"
#include "ui/desktop/PartsUsed.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QScrollArea>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int crestSide = 96;
constexpr QSize usualSize(520, 460);
constexpr QSize smallestSize(360, 200);
constexpr int fewLines = 6;
} // namespace

AboutWindow::AboutWindow()
    : m_crest(new QLabel(this))
    , m_name(new QLabel(u"BRAM"_s, this))
    , m_version(new QLabel(this))
    , m_text(new QLabel(this))
    , m_licencesTitle(new QLabel(this))
    , m_licences(new QPlainTextEdit(this))
    , m_close(new QPushButton(this))
{
    m_licences->setReadOnly(true);
    m_licences->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_licences->setTabChangesFocus(true);
    m_licencesTitle->setBuddy(m_licences);

    m_licences->setMinimumHeight(fewLines * fontMetrics().lineSpacing());

    auto *content = new QWidget(this);
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins(20, 20, 20, 0);
    column->setSpacing(12);
    column->addLayout(makeHead());
    column->addWidget(m_licencesTitle);
    column->addWidget(m_licences, 1);
    // On a very small screen all of it moves.
    auto *scrolled = new QScrollArea(this);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setFocusPolicy(Qt::NoFocus);
    scrolled->setWidget(content);
    auto *bottom = new QHBoxLayout;
    bottom->setContentsMargins(20, 0, 20, 16);
    bottom->addStretch();
    bottom->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->setSpacing(12);
    layout->addWidget(scrolled, 1);
    layout->addLayout(bottom);
    setMinimumSize(smallestSize);
    resizeWithinScreen(*this, usualSize);

    connect(m_close, &QPushButton::clicked, this, &QWidget::close);
    retranslate();
    m_close->setFocus();
}

QLayout *AboutWindow::makeHead()
{
    QFont large = m_name->font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    large.setBold(true);
    m_name->setFont(large);
    m_crest->setPixmap(applicationIcon().pixmap(QSize(crestSide, crestSide), devicePixelRatioF()));
    for (QLabel *line : {m_name, m_version}) {
        line->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }
    m_text->setWordWrap(true);
    m_text->setAlignment(Qt::AlignTop);
    for (QLabel *label : {m_name, m_version, m_text}) {
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    auto *texts = new QVBoxLayout;
    texts->addWidget(m_name);
    texts->addWidget(m_version);
    texts->addSpacing(8);
    texts->addWidget(m_text);
    texts->addStretch();
    auto *head = new QHBoxLayout;
    head->setSpacing(20);
    head->addWidget(m_crest, 0, Qt::AlignTop);
    head->addLayout(texts, 1);
    return head;
}

void AboutWindow::retranslate()
{
    setWindowTitle(tr("About BRAM"));
    m_crest->setAccessibleName(tr("The program's crest"));
    m_version->setText(tr("Version %1").arg(QStringLiteral(BRAM_VERSION)));
    m_text->setText(tr("An approval orchestrator that watches Brackwen requests in the menu bar "
                       "and relays allow/deny decisions through local and Telegram paths."));
    m_licencesTitle->setText(tr("&Licences"));
    m_licences->setPlainText(partsUsedText());
    m_licences->setAccessibleName(tr("Licences"));
    m_close->setText(tr("&Close"));
}

void AboutWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    }
}

void AboutWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace bram
