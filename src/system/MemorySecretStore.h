// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/SecretStore.h"

#include <QHash>

#include <utility>

namespace bram
{

/// Secrets that live as long as this object and leave no trace; nothing here fails.
class MemorySecretStore final : public SecretStore
{
public:
    QCoro::Task<std::expected<std::optional<QString>, KeychainError>> get(QString service,
                                                                          QString account) override;
    QCoro::Task<std::expected<void, KeychainError>> set(QString service, QString account,
                                                        QString value,
                                                        SecretAccessibility accessibility) override;
    QCoro::Task<std::expected<void, KeychainError>> remove(QString service,
                                                           QString account) override;

private:
    QHash<std::pair<QString, QString>, QString> m_secrets;
};

} // namespace bram
