// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/MemorySecretStore.h"
#include "system/Reply.h"

#include <QCoreApplication>
#include <QSet>
#include <QString>
#include <QStringList>

namespace bram::test
{

/// Secrets in memory, and the ways in which a real keyring has been seen to fail. Like one, it
/// answers in a later turn of the event loop.
class FaultySecretStore final : public SecretStore
{
public:
    static inline const KeychainError error {-25308, {}};
    static inline const QString errorText = QStringLiteral("Keychain error (status=-25308)");

    static inline const KeychainError lockedError {4, QStringLiteral("the keyring is locked"),
                                                   true};

    bool readsFail = false;
    bool isLocked = false; ///< what is there is held back, and nothing can be written
    QString promptedRead; ///< reads of this account stay open until `endPrompts`
    QSet<QString> writesFail; ///< for these accounts; a deletion is a write
    bool forgetsWrites = false; ///< reports success and keeps nothing
    QStringList operations; ///< "get token", "set token", "remove token"
    QList<SecretAccessibility> accessibilities;

    QCoro::Task<std::expected<std::optional<QString>, KeychainError>> get(QString service,
                                                                          QString account) override
    {
        operations.append(QStringLiteral("get ") + account);
        if (account == promptedRead) {
            co_await prompt();
        } else {
            co_await nextTurn();
        }
        if (readsFail) {
            co_return std::unexpected(KeychainError {error.status, {}, isLocked});
        }
        const auto found = co_await memory.get(service, account);
        if (isLocked && *found) {
            co_return std::unexpected(lockedError);
        }
        co_return found;
    }

    QCoro::Task<std::expected<void, KeychainError>>
    set(QString service, QString account, QString value, SecretAccessibility accessibility) override
    {
        operations.append(QStringLiteral("set ") + account);
        accessibilities.append(accessibility);
        co_await nextTurn();
        if (isLocked) {
            co_return std::unexpected(lockedError);
        }
        if (writesFail.contains(account)) {
            co_return std::unexpected(error);
        }
        if (forgetsWrites) {
            co_return {};
        }
        co_return co_await memory.set(service, account, value, accessibility);
    }

    QCoro::Task<std::expected<void, KeychainError>> remove(QString service,
                                                           QString account) override
    {
        operations.append(QStringLiteral("remove ") + account);
        co_await nextTurn();
        if (writesFail.contains(account)) {
            co_return std::unexpected(error);
        }
        co_return co_await memory.remove(service, account);
    }

    /// As when the operator has closed the keyring's window, or the store has been stopped.
    void endPrompts() { m_prompts.clear(); }

    MemorySecretStore memory;

private:
    QList<ReplySource<bool>> m_prompts;

    Reply<bool> prompt()
    {
        m_prompts.append(ReplySource<bool>(false));
        return m_prompts.last().reply();
    }
    static Reply<bool> nextTurn()
    {
        const ReplySource<bool> source(false);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [source] { source.answer(true); }, Qt::QueuedConnection);
        return source.reply();
    }
};

} // namespace bram::test
