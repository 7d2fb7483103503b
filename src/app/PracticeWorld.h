// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/Places.h"
#include "model/Error.h"
#include "practice/PracticeGateway.h"
#include "practice/PracticeSession.h"
#include "system/MemorySecretStore.h"

#include <QTemporaryDir>

#include <expected>
#include <memory>

namespace bram
{

/// The practice mode's own surroundings: a gateway in this process, a keyring in memory, and a temporary
/// folder for all state, removed at the end.
class PracticeWorld
{
public:
    static std::expected<std::unique_ptr<PracticeWorld>, Error> create(const Clock &clock);

    Places places() const;
    SecretStore &secrets() { return m_secrets; }
    const PracticeGateway &gateway() const { return m_gateway; }

private:
    explicit PracticeWorld(const Clock &clock);

    QTemporaryDir m_folder;
    MemorySecretStore m_secrets;
    PracticeGateway m_gateway;
    PracticeSession m_session;
};

} // namespace bram
