// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/Places.h"
#include "app/PracticeOperatorChat.h"
#include "model/Error.h"
#include "practice/PracticeBotApi.h"
#include "practice/PracticeGateway.h"
#include "practice/PracticeSession.h"
#include "system/MemorySecretStore.h"

#include <QTemporaryDir>

#include <expected>
#include <memory>

namespace bram
{

/// The practice mode's own surroundings: a gateway and a Bot API with one chat in this process, a keyring in
/// memory, and a temporary folder for all state, removed at the end.
class PracticeWorld
{
public:
    static std::expected<std::unique_ptr<PracticeWorld>, Error> create(const Clock &clock);

    Places places() const;
    SecretStore &secrets() { return m_secrets; }
    const PracticeGateway &gateway() const { return m_gateway; }
    OperatorChat &chat() { return m_chat; }

private:
    explicit PracticeWorld(const Clock &clock);
    /// Binds the chat to the agents of the sample requests, without which it might decide nothing.
    std::expected<void, Error> writeConfiguration() const;

    QTemporaryDir m_folder;
    MemorySecretStore m_secrets;
    PracticeGateway m_gateway;
    PracticeSession m_session;
    PracticeBotApi m_botApi;
    PracticeOperatorChat m_chat;
};

} // namespace bram
