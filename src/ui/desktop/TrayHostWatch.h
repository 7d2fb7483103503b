// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>

class QDBusPendingCallWatcher;

namespace bram
{

class XEmbedTrayWatch;

/// Who shows tray icons.
enum class TrayHost {
    None,
    StatusNotifier, ///< a panel that is told of icons over the session bus
    XEmbed, ///< a panel of the older kind, which takes in a window
};

/// Says whether there is a panel that shows tray icons, and of which kind. Asks once when it starts, is told of changes, and never waits
/// for an answer of the bus; without a session bus it looks for the older kind only.
class TrayHostWatch final : public QObject
{
    Q_OBJECT

public:
    explicit TrayHostWatch(QObject *parent = nullptr);
    ~TrayHostWatch() override;

    void start();
    /// Whether there is a host of that kind. The older kind is looked for only once the other is missing.
    bool has(TrayHost kind) const;
    /// The one to use: status notifiers where there are both.
    TrayHost best() const;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void askWatcher();
    void hostsOfWatcherChanged() { askWatcher(); }

private:
    void listenToBus();
    void watcherAnswered(QDBusPendingCallWatcher *call);
    void setStatusNotifierHost(bool isThere);

    std::unique_ptr<QDBusServiceWatcher> m_busWatch;
    std::unique_ptr<XEmbedTrayWatch> m_xembed; ///< from the moment it is needed
    bool m_hasStatusNotifierHost = false;
    int m_question = 0; ///< an answer to an earlier one no longer counts
};

} // namespace bram
