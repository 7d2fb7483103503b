// SPDX-License-Identifier: Apache-2.0
#include "monitor/AgentSelection.h"
#include "monitor/MonitorFixture.h"
#include "support/ScriptedPrompts.h"

#include <QDir>
#include <QSaveFile>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

const QString idKey = u"approvals.selected-agent-id"_s;
const QString explicitKey = u"approvals.selected-agent-unrestricted-explicit"_s;
const QString confirmedKey = u"approvals.selected-agent-unrestricted-confirmed"_s;

/// The real core with a configuration file and preferences of its own.
class AgentSelectionTest : public MonitorFixture
{
protected:
    /// As an editor saves: by another file in its place.
    void configure(const QByteArray &content)
    {
        ASSERT_TRUE(QDir(folder.path()).mkpath(u".brackwen"_s));
        QSaveFile file(folder.filePath(u".brackwen/brackwen.json"_s));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
        ASSERT_TRUE(file.commit());
    }
    void configureAgents(const QStringList &ids)
    {
        configure("{\"agents\":{\"" + ids.join(u"\":{},\""_s).toUtf8() + "\":{}}}");
    }
    void prefer(const QString &key, const QString &value)
    {
        Preferences preferences(folder.filePath(u"preferences.ini"_s));
        preferences.setText(key, value);
        ASSERT_TRUE(preferences.save());
    }
    std::optional<QString> preferred(const QString &key) const
    {
        return Preferences(folder.filePath(u"preferences.ini"_s)).text(key);
    }
    AgentSelection &agents() { return core->agents(); }
    void choose(const QString &id) { waitFor(AgentSelection::choose(&agents(), prompts, id)); }
    ApprovalItem itemOf(const char *id, const char *agent) const
    {
        ApprovalItem result = item(id);
        result.agentId = QString::fromUtf8(agent);
        return result;
    }
    QStringList displayed()
    {
        QStringList ids;
        for (const ApprovalItem &shown : board().displayItems()) {
            ids.append(shown.approvalId);
        }
        return ids;
    }

    ScriptedPrompts prompts;
};

} // namespace

TEST_F(AgentSelectionTest, TheStartFollowsWhatIsStoredAsFarAsItIsStillPossible)
{
    const struct {
        const char *name;
        QStringList configured; ///< "{" alone stands for a file that cannot be read
        std::optional<QString> stored;
        QString isExplicit;
        QString selected;
        QString explicitAfter;
    } rows[] = {
        {"nothing anywhere", {}, {}, {}, u"__all__"_s, u"false"_s},
        {"the first by default", {u"b"_s, u"a"_s}, {}, {}, u"a"_s, u"false"_s},
        {"stored", {u"a"_s, u"b"_s}, u" b "_s, {}, u"b"_s, u"false"_s},
        {"stored, gone", {u"a"_s, u"b"_s}, u"c"_s, {}, u"a"_s, u"false"_s},
        {"stored, nothing configured", {}, u"b"_s, {}, u"b"_s, u"false"_s},
        {"stored, unreadable", {u"{"_s}, u"b"_s, u"false"_s, u"b"_s, u"false"_s},
        {"all on purpose, unreadable", {u"{"_s}, u"__all__"_s, u"true"_s, u"__all__"_s, u"true"_s},
        {"stored, blank", {u"a"_s, u"b"_s}, u" "_s, {}, u"a"_s, u"false"_s},
        {"stored, in other letters", {u"a"_s, u"b"_s}, u"B"_s, {}, u"a"_s, u"false"_s},
        {"all, not on purpose", {u"a"_s}, u"__all__"_s, u"false"_s, u"a"_s, u"false"_s},
        {"all, on purpose", {u"a"_s}, u"__all__"_s, u"true"_s, u"__all__"_s, u"true"_s},
        {"all, with a flag that is none", {u"a"_s}, u"__all__"_s, u"perhaps"_s, u"a"_s, u"false"_s},
        {"purpose without all", {u"a"_s, u"b"_s}, u"b"_s, u"true"_s, u"b"_s, u"false"_s},
    };
    for (const auto &row : rows) {
        QFile::remove(folder.filePath(u"preferences.ini"_s));
        QFile::remove(folder.filePath(u".brackwen/brackwen.json"_s));
        if (row.configured == QStringList(u"{"_s)) {
            configure("{");
        } else if (!row.configured.isEmpty()) {
            configureAgents(row.configured);
        }
        if (row.stored) {
            prefer(idKey, *row.stored);
        }
        if (!row.isExplicit.isEmpty()) {
            prefer(explicitKey, row.isExplicit);
        }
        makeCore();
        agents().start();
        EXPECT_EQ(agents().selectedAgentId(), row.selected) << row.name;
        EXPECT_EQ(preferred(idKey), row.selected) << row.name;
        EXPECT_EQ(preferred(explicitKey), row.explicitAfter) << row.name;
        EXPECT_EQ(preferred(confirmedKey), std::nullopt) << row.name;
    }
}

TEST_F(AgentSelectionTest, TheAgentBoundToTheOperatorsChatComesFirst)
{
    const QByteArray bound
        = R"("channels":{"telegram":{"allowFrom":[7]}},"bindings":[{"agentId":"z",
        "match":{"channel":"telegram","peer":{"kind":"dm","id":"7"}}}])";
    configure("{\"agents\":{\"a\":{},\"z\":{}}," + bound + "}");
    makeCore();
    agents().start();
    EXPECT_EQ(agents().selectedAgentId(), u"z"_s);
    // Bound, but no agent of this platform.
    configure("{\"agents\":{\"a\":{},\"b\":{}}," + bound + "}");
    agents().refreshAvailableAgentIdsFromConfig();
    EXPECT_EQ(agents().selectedAgentId(), u"a"_s);
}

TEST_F(AgentSelectionTest, EveryAgentIsChosenOnlyOnPurpose)
{
    configureAgents({u"a"_s, u"b"_s});
    makeCore();
    agents().start();
    choose(u"b"_s);
    EXPECT_TRUE(prompts.questions.isEmpty());
    EXPECT_EQ(preferred(idKey), u"b"_s);

    prompts.answers = {1};
    choose(u"__all__"_s);
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_EQ(prompts.questions.first().title, u"Confirm Unrestricted Mode"_s);
    EXPECT_EQ(prompts.questions.first().buttons.first(), u"Apply Unrestricted"_s);
    EXPECT_EQ(prompts.questions.first().harmless, 1);
    EXPECT_EQ(agents().selectedAgentId(), u"b"_s);
    EXPECT_EQ(preferred(confirmedKey), std::nullopt);

    prompts.answers = {0};
    choose(u"__all__"_s);
    EXPECT_EQ(agents().selectedAgentId(), u"__all__"_s);
    EXPECT_EQ(preferred(confirmedKey), u"true"_s);
    EXPECT_EQ(preferred(explicitKey), u"true"_s);
    choose(u"a"_s);
    EXPECT_EQ(preferred(explicitKey), u"false"_s);
    choose(u"__all__"_s); // once confirmed, for good
    EXPECT_EQ(prompts.questions.size(), 2);
    EXPECT_EQ(agents().selectedAgentId(), u"__all__"_s);

    makeCore();
    agents().start();
    EXPECT_EQ(agents().selectedAgentId(), u"__all__"_s);
}

TEST_F(AgentSelectionTest, AChangedConfigurationIsFollowedAndABrokenOneNeverWidensTheChoice)
{
    configureAgents({u"b"_s});
    makeConnectedCore();
    EXPECT_EQ(agents().selectedAgentId(), u"b"_s);
    const auto becomes = [this](const QStringList &ids) {
        return waitUntil([&] { return agents().availableAgentIds() == ids; }, 3000);
    };
    configureAgents({u"a"_s, u"b"_s});
    EXPECT_TRUE(becomes({u"a"_s, u"b"_s}));
    EXPECT_EQ(agents().selectedAgentId(), u"b"_s);

    const auto refusals = [this] { return log.lines().filter(u"the agents stay"_s).size(); };
    for (const char *content : {"{\"agents\":", "[]", "{}", R"({"agents":{"list":[]}})"}) {
        const auto before = refusals();
        configure(content);
        EXPECT_TRUE(waitUntil([&] { return refusals() > before; })) << content;
        EXPECT_EQ(agents().availableAgentIds().size(), 2) << content;
        EXPECT_EQ(agents().selectedAgentId(), u"b"_s) << content;
    }
    EXPECT_TRUE(agents().isFromBefore());
    agents().refreshAvailableAgentIdsFromConfig(); // the operator's wish does not mean all either
    EXPECT_EQ(agents().selectedAgentId(), u"b"_s);
    const auto before = refusals();
    ASSERT_TRUE(QFile::remove(folder.filePath(u".brackwen/brackwen.json"_s)));
    EXPECT_TRUE(waitUntil([&] { return refusals() > before; }));
    EXPECT_EQ(agents().selectedAgentId(), u"b"_s);

    configureAgents({u"c"_s, u"d"_s}); // readable, and the selected one is gone
    EXPECT_TRUE(becomes({u"c"_s, u"d"_s}));
    EXPECT_EQ(agents().selectedAgentId(), u"c"_s);
    EXPECT_EQ(preferred(idKey), u"c"_s);
    EXPECT_FALSE(agents().isFromBefore());
}

TEST_F(AgentSelectionTest, PreferencesThatCannotBeWrittenLeaveTheChoiceForThisRun)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"preferences.ini"_s)); // a folder in its place
    configureAgents({u"a"_s, u"b"_s});
    makeCore();
    agents().start();
    agents().setSelectedAgent(u"b"_s);
    EXPECT_EQ(agents().selectedAgentId(), u"b"_s);
    EXPECT_FALSE(log.lines().filter(u"the preferences could not be written"_s).isEmpty());
}

namespace
{
class ShownElsewhere final : public ApprovalPopup, public ApprovalNotifier
{
public:
    void present(const ApprovalItem &item, Completion completion) override
    {
        popup = item.approvalId;
        answer = std::move(completion);
    }
    void dismiss() override { popup.clear(); }
    void schedule(const ApprovalItem &item) override { notified.append(item.approvalId); }
    void update(const ApprovalItem &) override { }
    void updateTimes(const ApprovalItem &) override { }
    void withdraw(const QString &approvalId) override { notified.removeAll(approvalId); }

    QString popup;
    Completion answer;
    QStringList notified;
};
} // namespace

TEST_F(AgentSelectionTest, WhatIsAskedElsewhereFollowsTheChoiceWithoutADecision)
{
    ShownElsewhere shown;
    ports.popup = &shown;
    ports.notifier = &shown;
    configureAgents({u"a"_s, u"b"_s});
    makeConnectedCore();
    request(itemOf("a-1", "a"));
    request(itemOf("a-2", "a"));
    request(itemOf("b-1", "b"));
    request(itemOf("b-2", "b"));
    ApprovalItem nobody = item("none");
    nobody.agentId.reset();
    request(nobody);
    EXPECT_EQ(displayed(), (QStringList {u"a-1"_s, u"a-2"_s}));
    EXPECT_EQ(shown.popup, u"a-1"_s);
    EXPECT_EQ(shown.notified, (QStringList {u"a-1"_s, u"a-2"_s}));

    const auto lateAnswer = shown.answer;
    agents().setSelectedAgent(u"b"_s);
    EXPECT_EQ(displayed(), (QStringList {u"b-1"_s, u"b-2"_s}));
    EXPECT_EQ(shown.popup, u"b-1"_s);
    EXPECT_EQ(shown.notified, (QStringList {u"b-1"_s, u"b-2"_s}));
    lateAnswer(ApprovalDecision::AllowAlways);
    EXPECT_TRUE(monitor().decisions().isIdle());
    shown.answer(std::nullopt); // closed: this one is not asked about again
    EXPECT_EQ(shown.popup, u"b-2"_s);

    agents().setSelectedAgent(u"a"_s);
    EXPECT_EQ(shown.popup, u"a-1"_s);
    EXPECT_EQ(shown.notified, (QStringList {u"a-1"_s, u"a-2"_s}));
    agents().setSelectedAgent(u"b"_s);
    EXPECT_EQ(shown.popup, u"b-2"_s);
    agents().setSelectedAgent(u"__all__"_s);
    EXPECT_EQ(displayed().size(), 5);
    EXPECT_TRUE(shown.notified.contains(u"none"_s));
    EXPECT_TRUE(received.isEmpty());

    // A request that turns into another agent's is not asked about any more.
    agents().setSelectedAgent(u"b"_s);
    EXPECT_EQ(shown.popup, u"b-2"_s);
    monitor().handleGatewayEvent(ApprovalRequested {itemOf("b-2", "a")});
    EXPECT_EQ(shown.popup, QString());
    EXPECT_FALSE(shown.notified.contains(u"b-2"_s));
    EXPECT_EQ(displayed(), QStringList(u"b-1"_s));
}
