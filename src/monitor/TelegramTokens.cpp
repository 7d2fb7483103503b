// SPDX-License-Identifier: Apache-2.0
#include "monitor/TelegramTokens.h"

#include "audit/Redaction.h"
#include "model/TextRules.h"
#include "telegram/TelegramConfigChoice.h"

#include <QRegularExpression>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString preferredVariable = u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s;
const QString otherVariable = u"TELEGRAM_BOT_TOKEN"_s;

Error keyringError(const QString &what, const KeychainError &error)
{
    return {QString(what + u' ' + redacted(error.description()))};
}
} // namespace

bool looksLikeTelegramBotToken(QStringView text)
{
    static const QRegularExpression shape(u"\\A[0-9]{6,}:[A-Za-z0-9_-]{20,}\\z"_s);
    return shape.match(text.toString()).hasMatch();
}

std::optional<QString> telegramTokenOf(const Environment &environment)
{
    const auto preferred = environment.trimmed(preferredVariable);
    return preferred ? preferred : environment.trimmed(otherVariable);
}

TelegramTokens::TelegramTokens(Environment environment, SecretStore &secrets)
    : m_environment(std::move(environment))
    , m_secrets(secrets)
{
}

Environment TelegramTokens::effectiveTelegramEnvironment() const
{
    return m_environment.overriddenBy(m_telegramRuntimeEnvironment);
}

QCoro::Task<std::expected<std::optional<QString>, KeychainError>>
TelegramTokens::storedTelegramBotToken()
{
    auto stored = co_await m_secrets.get(telegramKeychainService, telegramKeychainAccountBotToken);
    if (stored) {
        *stored = trimmedOrAbsent(*stored);
    }
    co_return stored;
}

QCoro::Task<std::expected<void, Error>> TelegramTokens::store(QPointer<TelegramTokens> self,
                                                              QString token)
{
    token = token.trimmed();
    if (!looksLikeTelegramBotToken(token)) {
        co_return std::unexpected(
            Error {tr("This is no bot token: one has digits, a colon and at least 20 letters, "
                      "digits, _ or -. Nothing was stored.")});
    }
    const auto stored
        = co_await self->m_secrets.set(telegramKeychainService, telegramKeychainAccountBotToken,
                                       token, SecretAccessibility::AfterFirstUnlock);
    if (!stored) {
        co_return std::unexpected(
            keyringError(tr("The keyring did not take the token:"), stored.error()));
    }
    if (self) {
        self->setEnvironmentAside(self->hasEnvironmentToken());
        Q_EMIT self->changed();
    }
    co_return {};
}

QCoro::Task<std::expected<void, Error>> TelegramTokens::clear(QPointer<TelegramTokens> self)
{
    const auto removed
        = co_await self->m_secrets.remove(telegramKeychainService, telegramKeychainAccountBotToken);
    if (!removed) {
        co_return std::unexpected(
            keyringError(tr("The keyring did not remove the token:"), removed.error()));
    }
    if (self) {
        self->setEnvironmentAside(false);
        Q_EMIT self->changed();
    }
    co_return {};
}

std::expected<void, Error> TelegramTokens::useEnvironment()
{
    if (!hasEnvironmentToken()) {
        return std::unexpected(Error {tr("The environment has no bot token.")});
    }
    setEnvironmentAside(false);
    Q_EMIT changed();
    return {};
}

void TelegramTokens::useKeyring()
{
    setEnvironmentAside(hasEnvironmentToken());
    Q_EMIT changed();
}

bool TelegramTokens::hasEnvironmentToken() const
{
    return telegramTokenOf(m_environment).has_value();
}

bool TelegramTokens::isEnvironmentSetAside() const
{
    return !m_telegramRuntimeEnvironment.isEmpty();
}

/// A blank value over a variable makes it count as absent.
void TelegramTokens::setEnvironmentAside(bool isAside)
{
    m_telegramRuntimeEnvironment.clear();
    if (isAside) {
        m_telegramRuntimeEnvironment.insert(preferredVariable, QString());
        m_telegramRuntimeEnvironment.insert(otherVariable, QString());
    }
}

} // namespace bram
