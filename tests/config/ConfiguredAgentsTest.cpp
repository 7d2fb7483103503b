// SPDX-License-Identifier: Apache-2.0
#include "config/ConfiguredAgents.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace bram;
using namespace Qt::StringLiterals;

namespace
{

/// Two of the places where the configuration may lie.
class ConfiguredAgents : public testing::Test
{
protected:
    void write(int place, const QByteArray &content)
    {
        const QString path = config.candidatePaths().at(place);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
    }
    QStringList agents() const
    {
        return loadAvailableAgentIdsFromBrackwenConfig(config.loadFiles());
    }
    std::optional<QString> paired() const
    {
        return loadPairedAgentIdFromBrackwenConfig(config.loadFiles());
    }

    QTemporaryDir folder;
    AccountFacts account {.homeFolder = folder.path(),
                          .userDatabaseHome = folder.filePath(u"other"_s),
                          .loginName = {},
                          .usersFolder = folder.path()};
    BrackwenConfig config {Environment(), account};
};

} // namespace

TEST_F(ConfiguredAgents, OfAllFilesTogetherEachOnceAndSorted)
{
    EXPECT_EQ(agents(), QStringList());
    write(0, R"({"agents":{"list":[{"id":" b "},{"id":"가"},{"id":"a"},{"id":"a"}],
                 "defaults":{"id":"no"},"b":{},"zed":null,"Main":[]}})");
    write(1, R"({"agents":{"a":{},"other":{}}})");
    EXPECT_EQ(agents(), (QStringList {u"Main"_s, u"a"_s, u"b"_s, u"other"_s, u"zed"_s, u"가"_s}));
}

TEST_F(ConfiguredAgents, WhatIsNotAnAgentIsPassedOverAndTheRestCounts)
{
    write(1, R"({"agents":{"good":{}}})");
    for (const char *content :
         {"", "{", "[]", "\"agents\"", "{}", R"({"agents":[]})", R"({"agents":"x"})",
          R"({"agents":{"list":{"id":"x"}}})", R"({"agents":{"list":"x","defaults":1}})",
          R"({"agents":{"list":[1,"x",null,[],{},{"id":1},{"id":" "},{"name":"x"}]}})",
          // One of this name would mean all of them.
          R"({"agents":{"list":[{"id":" __all__"}],"__all__":{}," ":{}}})",
          "{\"agents\":{\"bad \xff\":{}}}"}) {
        write(0, content);
        EXPECT_EQ(agents(), QStringList(u"good"_s)) << content;
    }
}

TEST_F(ConfiguredAgents, ThePairedOneIsBoundToAPrivateChatOfTheOperator)
{
    const auto withBinding = [](const QByteArray &binding) {
        return R"({"channels":{"telegram":{"allowFrom":["12",13,"x",null],"approvalsChatId":" -5"}},
                   "bindings":[)"
            + binding + "]}";
    };
    const auto bound
        = [](const char *agent, const char *channel, const char *kind, const char *chat) {
              return QByteArray(R"({"agentId":")") + agent + R"(","match":{"channel":")" + channel
                  + R"(","peer":{"kind":")" + kind + R"(","id":)" + chat + "}}}";
          };
    const struct {
        QByteArray bindings;
        std::optional<QString> expected;
    } rows[] = {
        {bound("a", "telegram", "dm", "12"), u"a"_s},
        {bound(" a ", "telegram", "dm", R"("13")"), u"a"_s},
        {bound("a", "telegram", "dm", "-5"), u"a"_s},
        {bound("a", "telegram", "dm", "14") + ',' + bound("b", "telegram", "dm", "13"), u"b"_s},
        {bound("b", "telegram", "dm", "12") + ',' + bound("a", "telegram", "dm", "-5"), u"b"_s},
        {bound("a", "Telegram", "dm", "12"), std::nullopt},
        {bound("a", "telegram", "group", "12"), std::nullopt},
        {bound("", "telegram", "dm", "12"), std::nullopt},
        {bound("__all__", "telegram", "dm", "12"), std::nullopt},
        {R"(1,"a",null,{"agentId":"a"},{"agentId":"a","match":[]},
            {"agentId":"a","match":{"channel":"telegram","peer":"12"}})",
         std::nullopt},
    };
    for (const auto &row : rows) {
        write(0, withBinding(row.bindings));
        EXPECT_EQ(paired(), row.expected) << row.bindings.constData();
    }
    // Chats of one file, bindings of another.
    write(0, R"({"channels":{"telegram":{"allowFrom":[99]}}})");
    write(1, "{\"bindings\":[" + bound("z", "telegram", "dm", "99") + "]}");
    EXPECT_EQ(paired(), u"z"_s);
    write(0, R"({"channels":{"telegram":[]},"bindings":{}})");
    EXPECT_EQ(paired(), std::nullopt);
}
