// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/Environment.h"
#include "model/Error.h"
#include "system/SecretStore.h"

#include <QCoro/QCoroTask>
#include <QMap>
#include <QObject>
#include <QPointer>

#include <expected>
#include <optional>

namespace bram
{

/// Whether a text has the shape of a bot token: six digits or more, ":", twenty letters, digits, "_" or "-" or
/// more. Only such a text is recognised and masked everywhere.
bool looksLikeTelegramBotToken(QStringView text);

/// Where the bot token is kept and which one counts: that of the environment, or the one in the keyring. Tokens go
/// in here and are never shown again. Main thread only; the keyring is waited for without holding anything up.
class TelegramTokens final : public QObject
{
    Q_OBJECT

public:
    /// `secrets` outlives this.
    TelegramTokens(Environment environment, SecretStore &secrets);

    /// The environment of the process with what was chosen for this run over it.
    Environment effectiveTelegramEnvironment() const;

    /// The token in the keyring; nothing when there is none or it is blank.
    QCoro::Task<std::expected<std::optional<QString>, KeychainError>> storedTelegramBotToken();

    // For the operator. The error is one line in their language, and nothing has changed then.

    /// Puts the token into the keyring; it counts for this run, even if the environment has one, too.
    static QCoro::Task<std::expected<void, Error>> store(QPointer<TelegramTokens> self,
                                                         QString token);
    /// Takes the token out of the keyring; one of the environment counts again.
    static QCoro::Task<std::expected<void, Error>> clear(QPointer<TelegramTokens> self);
    /// The environment's token counts, whatever the keyring holds.
    std::expected<void, Error> useEnvironment();
    /// The keyring's token counts for this run.
    void useKeyring();

    bool hasEnvironmentToken() const;
    /// The environment has a token that does not count in this run.
    bool isEnvironmentSetAside() const;

Q_SIGNALS:
    /// Another token may count now.
    void changed();

private:
    void setEnvironmentAside(bool isAside);

    const Environment m_environment;
    SecretStore &m_secrets;
    QMap<QString, QString> m_telegramRuntimeEnvironment;
};

/// The token that an environment gives, if any.
std::optional<QString> telegramTokenOf(const Environment &environment);

} // namespace bram
