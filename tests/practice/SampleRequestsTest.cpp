// SPDX-License-Identifier: Apache-2.0
#include "practice/SampleRequests.h"

#include "model/CommandRules.h"

#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace bram
{
namespace
{
using namespace Qt::StringLiterals;

constexpr qint64 nowMs = 1'718'000'000'000;

TEST(SampleRequests, ShowEveryKindOfRequest)
{
    QSet<QString> commands;
    QSet<QString> agents;
    int high = 0;
    int multiLine = 0;
    int longOnes = 0;
    int misleading = 0;
    int expiring = 0;
    int withoutAgent = 0;
    for (int i = 0; i < sampleRequestCount(); ++i) {
        const ApprovalItem item = sampleRequest(i, nowMs);
        commands.insert(item.command);
        agents.insert(item.agentId.value_or(u""_s));
        high += commandRiskLevel(item.command) == CommandRisk::High;
        multiLine += item.command.contains(u'\n');
        longOnes += item.command.size() > 300;
        misleading += item.command.contains(QChar(0x202e));
        expiring += item.expiresAtMs > nowMs;
        withoutAgent += !item.agentId;
        EXPECT_EQ(item.createdAtMs, nowMs);
        EXPECT_FALSE(isApprovalExpired(item, nowMs)) << i;
        EXPECT_FALSE(item.command.trimmed().isEmpty()) << i;
    }
    EXPECT_EQ(commands.size(), sampleRequestCount());
    EXPECT_GE(agents.size(), 4);
    EXPECT_GE(high, 4);
    EXPECT_LE(high, sampleRequestCount() - 4);
    EXPECT_GE(multiLine, 1);
    EXPECT_GE(longOnes, 1);
    EXPECT_GE(misleading, 1);
    EXPECT_GE(expiring, 3);
    EXPECT_LT(expiring, sampleRequestCount());
    EXPECT_GE(withoutAgent, 1);
    // What a newcomer meets first is harmless.
    EXPECT_EQ(commandRiskLevel(sampleRequest(0, nowMs).command), CommandRisk::Low);
}

TEST(SampleRequests, NeverShareAnId)
{
    static const QRegularExpression uuid(u"^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$"_s);
    QSet<QString> ids;
    for (int i = 0; i < 3 * sampleRequestCount(); ++i) {
        const QString id = sampleRequest(i, nowMs).approvalId;
        EXPECT_TRUE(uuid.match(id).hasMatch()) << qPrintable(id);
        ids.insert(id);
    }
    ids.insert(sampleRequest(0, nowMs + 1).approvalId);
    EXPECT_EQ(ids.size(), 3 * sampleRequestCount() + 1);
    EXPECT_EQ(sampleRequest(1, nowMs), sampleRequest(1, nowMs));
}

} // namespace
} // namespace bram
