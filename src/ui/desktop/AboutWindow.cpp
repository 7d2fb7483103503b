// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AboutWindow.h"

#include "ui/desktop/CrestIcon.h"

#include <QBoxLayout>
#include <QKeyEvent>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int crestSide = 96;
constexpr int textWidth = 340;
} // namespace

AboutWindow::AboutWindow()
    : m_crest(new QLabel(this))
    , m_name(new QLabel(u"BrackwenApprovalsMenu"_s, this))
    , m_version(new QLabel(this))
    , m_text(new QLabel(this))
    , m_close(new QPushButton(this))
{
    QFont large = m_name->font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    large.setBold(true);
    m_name->setFont(large);
    m_crest->setPixmap(applicationIcon().pixmap(QSize(crestSide, crestSide), devicePixelRatioF()));
    m_text->setWordWrap(true);
    m_text->setFixedWidth(textWidth);

    auto *texts = new QVBoxLayout;
    texts->addWidget(m_name);
    texts->addWidget(m_version);
    texts->addSpacing(8);
    texts->addWidget(m_text);
    texts->addStretch();
    auto *row = new QHBoxLayout;
    row->setSpacing(20);
    row->addWidget(m_crest, 0, Qt::AlignTop);
    row->addLayout(texts);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(16);
    layout->addLayout(row);
    layout->addWidget(m_close, 0, Qt::AlignRight);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    connect(m_close, &QPushButton::clicked, this, &QWidget::close);
    retranslate();
}

void AboutWindow::retranslate()
{
    setWindowTitle(tr("About BrackwenApprovalsMenu"));
    m_version->setText(tr("Version %1").arg(QStringLiteral(BRAM_VERSION)));
    m_text->setText(tr("An approval orchestrator that watches Brackwen requests in the menu bar "
                       "and relays allow/deny decisions through local and Telegram paths."));
    m_close->setText(tr("Close"));
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
