// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Waiting.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDateTime>
#include <QStringList>

#include <optional>

namespace bram::test
{

/// The tray icon of another process as a panel sees it: its properties, and its menu over
/// com.canonical.dbusmenu.
class ExportedMenu
{
public:
    explicit ExportedMenu(qint64 processId)
        : m_processId(processId)
    {
    }

    /// Until the panel has the item. To be called first.
    [[nodiscard]] bool waitForItem()
    {
        return waitUntil([this] {
            m_service = serviceOfProcess();
            return !m_service.isEmpty() && !menuPath().isEmpty();
        });
    }

    QVariant itemProperty(const QString &name) const
    {
        const QDBusMessage answer
            = call(QStringLiteral("/StatusNotifierItem"),
                   QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                   {QStringLiteral("org.kde.StatusNotifierItem"), name});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    }

    /// The labels below the entry that `path` leads to (label beginnings); hidden ones are left out.
    QStringList labels(const QStringList &path = {}) const
    {
        const auto entry = find(path);
        QStringList result;
        for (const Entry &child : entry ? entry->children : QList<Entry> {}) {
            if (child.isVisible && !child.label.isEmpty()) {
                result += child.label;
            }
        }
        return result;
    }

    /// Clicks the entry once it is there and enabled; each element of `path` is the beginning of a label.
    [[nodiscard]] bool click(const QStringList &path) const
    {
        std::optional<Entry> entry;
        const bool isThere = waitUntil([&] {
            entry = find(path);
            return entry && entry->isEnabled;
        });
        if (isThere) {
            sendEvent(entry->id, QStringLiteral("clicked"));
        }
        return isThere;
    }

private:
    struct Entry {
        int id = 0;
        QString label;
        bool isVisible = true;
        bool isEnabled = true;
        QList<Entry> children;
    };

    /// The bus name under which the process has registered its item with the panel.
    QString serviceOfProcess() const
    {
        QDBusMessage question = QDBusMessage::createMethodCall(
            QStringLiteral("org.kde.StatusNotifierWatcher"),
            QStringLiteral("/StatusNotifierWatcher"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        question << QStringLiteral("org.kde.StatusNotifierWatcher")
                 << QStringLiteral("RegisteredStatusNotifierItems");
        const QDBusMessage answer
            = QDBusConnection::sessionBus().call(question, QDBus::Block, 2000);
        for (const QString &item :
             answer.arguments().value(0).value<QDBusVariant>().variant().toStringList()) {
            const QString service = item.section(u'/', 0, 0);
            const QDBusReply<uint> owner
                = QDBusConnection::sessionBus().interface()->servicePid(service);
            if (owner.isValid() && owner.value() == m_processId) {
                return service;
            }
        }
        return {};
    }

    QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &arguments) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(m_service, path, interface, method);
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message, QDBus::Block, 2000);
    }

    QString menuPath() const
    {
        return itemProperty(QStringLiteral("Menu")).value<QDBusObjectPath>().path();
    }

    static Entry entryFrom(const QDBusArgument &argument)
    {
        Entry entry;
        QVariantMap properties;
        argument.beginStructure();
        argument >> entry.id >> properties;
        argument.beginArray();
        while (!argument.atEnd()) {
            QDBusVariant child;
            argument >> child;
            entry.children.append(entryFrom(child.variant().value<QDBusArgument>()));
        }
        argument.endArray();
        argument.endStructure();
        entry.label = properties.value(QStringLiteral("label")).toString();
        entry.isVisible = properties.value(QStringLiteral("visible"), true).toBool();
        entry.isEnabled = properties.value(QStringLiteral("enabled"), true).toBool();
        return entry;
    }

    std::optional<Entry> find(const QStringList &path) const
    {
        const QDBusMessage answer = call(menuPath(), QStringLiteral("com.canonical.dbusmenu"),
                                         QStringLiteral("GetLayout"), {0, -1, QStringList()});
        if (answer.type() != QDBusMessage::ReplyMessage) {
            return std::nullopt;
        }
        Entry entry = entryFrom(answer.arguments().at(1).value<QDBusArgument>());
        for (const QString &beginning : path) {
            const auto child = std::find_if(
                entry.children.cbegin(), entry.children.cend(), [&](const Entry &candidate) {
                    return candidate.isVisible && candidate.label.startsWith(beginning);
                });
            if (child == entry.children.cend()) {
                return std::nullopt;
            }
            entry = Entry(*child);
        }
        return entry;
    }

    void sendEvent(int id, const QString &event) const
    {
        call(menuPath(), QStringLiteral("com.canonical.dbusmenu"), QStringLiteral("Event"),
             {id, event, QVariant::fromValue(QDBusVariant(QString())),
              static_cast<quint32>(QDateTime::currentSecsSinceEpoch())});
    }

    qint64 m_processId;
    QString m_service;
};

} // namespace bram::test
