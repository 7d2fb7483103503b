// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/XEmbedTrayWatch.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace bram
{

namespace
{
template<typename T>
using Answer = std::unique_ptr<T, decltype(&std::free)>;

template<typename T>
Answer<T> owned(T *answer)
{
    return {answer, &std::free};
}

xcb_atom_t atom(xcb_connection_t *connection, const QByteArray &name)
{
    const auto question
        = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const auto answer = owned(xcb_intern_atom_reply(connection, question, nullptr));
    return answer ? answer->atom : xcb_atom_t {XCB_ATOM_NONE};
}
} // namespace

XEmbedTrayWatch::XEmbedTrayWatch(QObject *parent)
    : QObject(parent)
{
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11) {
        return;
    }
    m_connection = x11->connection();
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    xcb_parse_display(nullptr, &host, &display, &screen);
    std::free(host);
    m_selection = atom(m_connection, "_NET_SYSTEM_TRAY_S" + QByteArray::number(screen));
    m_managerMessage = atom(m_connection, "MANAGER");
    qApp->installNativeEventFilter(this);
    look();
}

bool XEmbedTrayWatch::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    switch (event->response_type & 0x7f) {
    case XCB_CLIENT_MESSAGE: {
        // A new manager announces itself on the root window, whose events the platform plugin gets.
        const auto *announcement = static_cast<const xcb_client_message_event_t *>(message);
        if (announcement->type == m_managerMessage && announcement->data.data32[1] == m_selection) {
            look();
        }
        break;
    }
    case XCB_DESTROY_NOTIFY:
        if (static_cast<const xcb_destroy_notify_event_t *>(message)->window == m_manager) {
            look();
        }
        break;
    default:
        break;
    }
    return false;
}

void XEmbedTrayWatch::look()
{
    const auto owner = owned(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_selection), nullptr));
    xcb_window_t manager = owner ? owner->owner : xcb_window_t {XCB_WINDOW_NONE};
    if (manager != XCB_WINDOW_NONE) {
        // So that we hear of its end, beside what others in this process have asked to hear.
        const auto attributes = owned(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, manager), nullptr));
        if (attributes) {
            const std::uint32_t mask
                = attributes->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
            xcb_change_window_attributes(m_connection, manager, XCB_CW_EVENT_MASK, &mask);
            xcb_flush(m_connection);
        } else {
            manager = XCB_WINDOW_NONE; // gone in the meantime
        }
    }
    if (manager != m_manager) {
        m_manager = manager;
        Q_EMIT managerChanged();
    }
}

} // namespace bram
