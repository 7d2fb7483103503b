// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <cstdint>

struct xcb_connection_t;

namespace bram
{

/// Says whether somebody on the X11 screen takes in the windows of tray icons: the owner of the selection
/// _NET_SYSTEM_TRAY_Sn. Nobody ever does where the program is not an X11 client.
class XEmbedTrayWatch final : public QObject, private QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    explicit XEmbedTrayWatch(QObject *parent = nullptr);

    bool hasManager() const { return m_manager != 0; }

Q_SIGNALS:
    void managerChanged();

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    void look();

    xcb_connection_t *m_connection = nullptr;
    std::uint32_t m_selection = 0;
    std::uint32_t m_managerMessage = 0;
    std::uint32_t m_manager = 0; ///< its window; 0 when there is none
};

} // namespace bram
