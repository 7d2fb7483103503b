// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/SettingsWindow.h"

#include "ui/desktop/BringToFront.h"
#include "ui/desktop/SettingsPage.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QScrollArea>

namespace bram
{

namespace
{
constexpr QSize usualSize(720, 400);
constexpr QSize smallestSize(360, 200);
} // namespace

SettingsWindow::SettingsWindow()
    : m_tabs(new QTabWidget(this))
    , m_notice(new QLabel(this))
    , m_close(new QPushButton(this))
{
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_notice, 1);
    bottom->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs, 1);
    layout->addLayout(bottom);
    m_notice->setWordWrap(true);
    setMinimumSize(smallestSize);
    resizeWithinScreen(*this, usualSize);
    connect(m_close, &QPushButton::clicked, this, &QWidget::close);
    retranslate();
}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::addPage(std::unique_ptr<SettingsPage> page)
{
    auto *scrolled = new QScrollArea(m_tabs);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setFocusPolicy(Qt::NoFocus);
    // The page's own colour, not that of a list.
    scrolled->viewport()->setAutoFillBackground(false);
    page->setAutoFillBackground(false);
    m_pages.push_back(page.get());
    m_tabs->addTab(scrolled, page->title());
    scrolled->setWidget(page.release());
}

void SettingsWindow::retranslate()
{
    setWindowTitle(tr("Settings"));
    m_notice->setText(tr("Changes apply at once."));
    m_close->setText(tr("&Close"));
    m_tabs->setAccessibleName(tr("Settings"));
    for (std::size_t i = 0; i < m_pages.size(); ++i) {
        m_tabs->setTabText(static_cast<int>(i), m_pages.at(i)->title());
    }
}

/// Files and other programs do not tell of their changes.
void SettingsWindow::refresh()
{
    for (SettingsPage *page : m_pages) {
        page->refresh();
    }
}

void SettingsWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    } else if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        refresh();
    }
}

void SettingsWindow::showEvent(QShowEvent *event)
{
    refresh();
    QWidget::showEvent(event);
}

void SettingsWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace bram
