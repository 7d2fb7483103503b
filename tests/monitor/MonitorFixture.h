// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/Core.h"
#include "practice/PracticeGateway.h"
#include "support/Doubles.h"
#include "support/Waiting.h"
#include "system/MemorySecretStore.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <memory>

namespace bram::test
{

/// What became of one decision, as views hear it.
struct Settled {
    QString approvalId;
    ApprovalDecision decision;
    DecisionOutcome outcome;
};

/// The real core against a practice gateway on a real socket, with its files in a folder of its own.
class MonitorFixture : public testing::Test
{
protected:
    MonitorFixture()
        : gateway({}, clock)
    {
        const auto listening = gateway.listen();
        EXPECT_TRUE(listening) << (listening ? "" : qPrintable(listening.error().message));
        QObject::connect(&gateway, &PracticeGateway::decisionReceived, &gateway,
                         [this](const ReceivedDecision &decision) { received.append(decision); });
    }

    ~MonitorFixture() override
    {
        if (core) {
            core->telegram().stop();
            core->monitor().stop();
            EXPECT_TRUE(waitUntil([this] { return core->tasks().running().isEmpty(); }));
        }
    }

    /// Makes the core; the members from `secretStore` to `commandLine` are to be set before.
    void makeCore()
    {
        Places places = Places::ofPractice(folder.path(), gateway.url().toString());
        places.environment = places.environment.overriddenBy(environmentExtras);
        core = std::make_unique<Core>(Core::World {
            .places = places,
            .secrets = *secretStore,
            .clock = clock,
            .log = log,
            .ports = ports,
            .commandLine = commandLine,
        });
        QObject::connect(
            &monitor().decisions(), &DecisionResolver::decisionSettled, &monitor().decisions(),
            [this](const QString &id, ApprovalDecision decision, const DecisionOutcome &outcome) {
                settled.append({id, decision, outcome});
            });
    }

    void makeConnectedCore()
    {
        makeCore();
        monitor().start();
        ASSERT_TRUE(waitUntil([this] { return gateway.clientCount() == 1; }));
        ASSERT_TRUE(waitUntil([this] {
            return log.lines().contains(QStringLiteral("[Brackwen] connect handshake success"));
        }));
    }

    ApprovalMonitor &monitor() { return core->monitor(); }
    const ApprovalBoard &board() { return core->monitor().board(); }

    ApprovalItem item(const char *id, const char *command = "ls -la") const
    {
        return {.approvalId = QString::fromUtf8(id),
                .command = QString::fromUtf8(command),
                .agentId = QStringLiteral("main"),
                .createdAtMs = clock.current,
                .expiresAtMs = 0};
    }

    /// Announces at the gateway and waits until the request is displayed here.
    void request(const ApprovalItem &wanted)
    {
        gateway.announce(wanted);
        ASSERT_TRUE(waitUntil([&] { return board().find(wanted.approvalId) != nullptr; }));
    }

    void decide(const char *id, ApprovalDecision decision)
    {
        monitor().decisions().resolve(QString::fromUtf8(id), decision, DecisionOrigin::local(),
                                      ActivityTracking::Record);
    }

    [[nodiscard]] bool waitSettled(qsizetype count)
    {
        return waitUntil([&] { return settled.size() >= count; });
    }

    std::vector<std::string> auditKinds()
    {
        std::vector<std::string> kinds;
        for (const auto &record : core->audit().records(0)) {
            kinds.push_back(record.kind.toStdString());
        }
        return kinds;
    }

    QTemporaryDir folder;
    ManualClock clock;
    RecordingLog log;
    MemorySecretStore secrets;
    SecretStore *secretStore = &secrets;
    QMap<QString, QString> environmentExtras; ///< of the environment, besides the gateway's address
    MonitorPorts ports;
    CommandLineUse commandLine = CommandLineUse::Never;
    PracticeGateway gateway;
    std::unique_ptr<Core> core;
    QList<Settled> settled;
    QList<ReceivedDecision> received;
};

} // namespace bram::test
