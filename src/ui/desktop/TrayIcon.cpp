// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/TrayIcon.h"

#include <QSystemTrayIcon>

namespace bram
{

using namespace std::chrono_literals;

namespace
{
// Panels that know both kinds of icons are ready for the older one a moment earlier.
constexpr auto settleTime = 1s;
} // namespace

TrayIcon::TrayIcon(QObject *parent, std::chrono::milliseconds grace)
    : QObject(parent)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleTime);
    connect(&m_settle, &QTimer::timeout, this, &TrayIcon::makeIcon);
    m_grace.setSingleShot(true);
    m_grace.setInterval(grace);
    connect(&m_grace, &QTimer::timeout, this, &TrayIcon::announce);
    connect(&m_watch, &TrayHostWatch::changed, this, &TrayIcon::hostsChanged);
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::start()
{
    m_grace.start();
    m_watch.start();
}

void TrayIcon::setMenu(QMenu *menu)
{
    m_menu = menu;
    if (m_icon) {
        m_icon->setContextMenu(menu);
    }
}

void TrayIcon::setLook(const TrayLook &look)
{
    m_look = look;
    if (!m_icon) {
        return;
    }
    const QString key
        = iconRenderKey(look.badgeCount, look.connection, look.activeApprovalId, look.alarm);
    if (key != m_renderKey) {
        m_renderKey = key;
        m_icon->setIcon(menuBarIcon(look.connection, look.badgeCount, look.alarm).icon());
    }
    if (m_icon->toolTip() != look.toolTip) {
        m_icon->setToolTip(look.toolTip);
    }
}

bool TrayIcon::isHosted() const
{
    return m_icon && m_watch.has(m_kind);
}

void TrayIcon::hostsChanged()
{
    m_settle.stop();
    if (!m_icon) {
        // Whether the bus is used is decided once in a process, by what there is when its first icon is
        // made. So none is made before there is a host.
        switch (m_watch.best()) {
        case TrayHost::StatusNotifier:
            makeIcon();
            return;
        case TrayHost::XEmbed:
            m_settle.start();
            return;
        case TrayHost::None:
            return;
        }
    }
    if (isHosted()) {
        announce();
    } else if (!m_grace.isActive()) {
        m_grace.start();
    }
}

void TrayIcon::makeIcon()
{
    m_kind = m_watch.best();
    m_icon = std::make_unique<QSystemTrayIcon>();
    connect(m_icon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    Q_EMIT activated();
                }
            });
    setLook(m_look);
    m_icon->setContextMenu(m_menu);
    m_icon->show();
    announce();
}

void TrayIcon::announce()
{
    m_grace.stop();
    const Said state = isHosted() ? Said::Hosted : Said::NotHosted;
    if (state != m_said) {
        m_said = state;
        Q_EMIT hostedChanged(state == Said::Hosted);
    }
}

} // namespace bram
