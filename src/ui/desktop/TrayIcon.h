// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/IndicatorState.h"
#include "ui/desktop/CrestIcon.h"
#include "ui/desktop/TrayHostWatch.h"

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <chrono>
#include <memory>

class QSystemTrayIcon;

namespace bram
{

/// What the tray icon shows.
struct TrayLook {
    IndicatorState connection = IndicatorState::Gray;
    qsizetype badgeCount = 0;
    QString activeApprovalId {}; ///< of the request in the popup; empty without one
    QString toolTip {};
    Alarm alarm = Alarm::Off;
};

/// The icon in the tray, from the moment that there is a host for it. It comes back by itself with a host
/// that restarts, or that appears only later.
class TrayIcon final : public QObject
{
    Q_OBJECT

public:
    /// Panels are restarted, and are slow to start: a tray that has a host again within this time was
    /// never without one.
    static constexpr std::chrono::milliseconds graceTime {2000};

    explicit TrayIcon(QObject *parent = nullptr, std::chrono::milliseconds grace = graceTime);
    ~TrayIcon() override;

    /// Looks for a host, now and from now on.
    void start();

    /// The menu that the icon opens. It stays its owner's.
    void setMenu(QMenu *menu);

    /// Draws the icon anew when its picture is another one.
    void setLook(const TrayLook &look);

    /// Whether this process draws the icon's menu itself; else the host does. Decided with the first host.
    bool drawsMenuItself() const { return m_kind == TrayHost::XEmbed; }

    /// Whether there is a host that shows the icon at this moment, and of which kind.
    bool isHosted() const;
    TrayHost host() const { return isHosted() ? m_kind : TrayHost::None; }

Q_SIGNALS:
    /// Said when it is other than said last. That there is none is said when the grace time is over, and
    /// so also when none is there after the start.
    void hostedChanged(bool hosted);
    /// The icon was clicked, otherwise than for its menu.
    void activated();

private:
    void hostsChanged();
    void makeIcon();
    void announce();

    TrayHostWatch m_watch;
    std::unique_ptr<QSystemTrayIcon> m_icon; ///< from the moment that there is a host
    TrayHost m_kind = TrayHost::None; ///< of the icon; the first one decides for the whole process
    QTimer m_settle;
    QTimer m_grace;
    enum class Said { Nothing, Hosted, NotHosted } m_said = Said::Nothing;

    QPointer<QMenu> m_menu;
    TrayLook m_look;
    QString m_renderKey; ///< of the picture that the icon has
};

} // namespace bram
