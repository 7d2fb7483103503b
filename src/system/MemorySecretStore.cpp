// SPDX-License-Identifier: Apache-2.0
#include "system/MemorySecretStore.h"

namespace bram
{

QCoro::Task<std::expected<std::optional<QString>, KeychainError>>
MemorySecretStore::get(QString service, QString account)
{
    const auto found = m_secrets.constFind({service, account});
    if (found == m_secrets.cend()) {
        co_return std::nullopt;
    }
    co_return *found;
}

QCoro::Task<std::expected<void, KeychainError>>
MemorySecretStore::set(QString service, QString account, QString value,
                       [[maybe_unused]] SecretAccessibility accessibility)
{
    m_secrets.insert({service, account}, value);
    co_return {};
}

QCoro::Task<std::expected<void, KeychainError>> MemorySecretStore::remove(QString service,
                                                                          QString account)
{
    m_secrets.remove({service, account});
    co_return {};
}

} // namespace bram
