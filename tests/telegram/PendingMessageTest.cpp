// SPDX-License-Identifier: Apache-2.0
#include "telegram/PendingMessage.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <gtest/gtest.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
using Entries = QList<TelegramApprovalEntry>;

constexpr auto polling = TelegramMode::Polling;
constexpr auto commands = TelegramMode::PublishOnlyCommandPolling;
constexpr auto safe = TelegramMode::PublishOnlySafe;

Entries numbered(int count, const QString &command = u"ls"_s)
{
    Entries entries;
    for (int i = 1; i <= count; ++i) {
        entries.append(
            {.approvalId = u"id-%1-xyz"_s.arg(i, 4, 10, QChar(u'0')), .command = command});
    }
    return entries;
}

/// The second line of the text: that of the only entry.
std::string line(const TelegramApprovalEntry &entry, TelegramMode mode = polling)
{
    return renderPendingText({entry}, mode).section(u'\n', 1, 1).toStdString();
}

QStringList buttonTexts(const std::optional<QJsonObject> &keyboard, const QString &key)
{
    QStringList texts;
    for (const QJsonValue &row : keyboard.value_or(QJsonObject()).begin()->toArray()) {
        for (const QJsonValue &button : row.toArray()) {
            texts.append(button[key].toString());
        }
    }
    return texts;
}
} // namespace

TEST(PendingMessage, TextByModeAndLength)
{
    EXPECT_EQ(renderPendingText({}, safe), u"BRAM pending approvals: none"_s);
    EXPECT_EQ(renderPendingText(
                  {{u"abcdefghij"_s, u"rm -rf /"_s, u"main"_s, true}, {u"b"_s, u"ls"_s, {}, false}},
                  polling),
              u"BRAM pending approvals (2)\n1. [HIGH] [main] abcdefgh rm -rf /\n2. b ls"_s);
    EXPECT_EQ(renderPendingText(numbered(1), commands),
              u"BRAM pending approvals (1)\n1. id-0001- ls\n\n"
              "Use /approve <id> allow-once|allow-always|deny"_s);
    const QString nine = renderPendingText(numbered(9), safe);
    EXPECT_TRUE(
        nine.endsWith(u"\n8. id-0008- ls\n... and 1 more\n\nPublish-only safe mode: approvals "
                      "from command messages are handled by Brackwen bot."_s));
}

TEST(PendingMessage, LineOfACommand)
{
    const struct {
        QString command;
        QString line;
    } rows[] = {
        {QString(60, u'x'), QString(60, u'x')},
        {QString(61, u'x'), QString(60, u'x') + u'…'},
        {u"a\nb\r\nc\rd"_s, u"a b c d"_s},
        {u"<b>*x*</b> `y`"_s, u"<b>*x*</b> `y`"_s},
        {u"ls \u202Egpj.sh"_s, u"ls ⟨U+202E⟩gpj.sh"_s},
        {QString(u"가"_s).repeated(60), QString(u"가"_s).repeated(60)},
        {QString(59, u'x') + u"e\u0301z"_s, QString(59, u'x') + u"e\u0301…"_s},
        // A blank where the text is cut is no blank at the end of the command.
        {QString(59, u'x') + u" y"_s, QString(59, u'x') + u" …"_s},
        // Marks take their room from the text, and none is cut in half.
        {QString(70, u'\u200B'), QString(u"⟨U+200B⟩"_s).repeated(32) + u'…'},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(line({u"a"_s, row.command}), (u"1. a "_s + row.line).toStdString());
    }
    EXPECT_EQ(line({u"a\u202Eb"_s, u"ls"_s, u"\u200Bmain\n"_s}),
              u"1. [⟨U+200B⟩main⟨U+000A⟩] a⟨U+202E⟩b ls"_s.toStdString());
}

TEST(PendingMessage, WorstEntriesFitAndAreListedWhole)
{
    const QString marks(2000, u'\u200B');
    Entries worst;
    for (int i = 0; i < 12; ++i) {
        worst.append({.approvalId = QString(190, u'i') + QString::number(i),
                      .command = marks,
                      .agentId = marks,
                      .isHighRisk = true});
    }
    for (const TelegramMode mode : {polling, commands, safe}) {
        const QString text = renderPendingText(worst, mode);
        EXPECT_LT(text.size(), 4096);
        const qsizetype listed = listedCount(worst, mode);
        EXPECT_GE(listed, 5);
        EXPECT_TRUE(text.contains(u"\n... and %1 more"_s.arg(12 - listed)));
        EXPECT_EQ(text.count(u"⟨"_s), text.count(u"⟩"_s));
    }
    // However long a request is, showing it takes no time.
    const QString huge(20'000'000, u'x');
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(listedCount(Entries(8, {huge, huge, huge}), polling), 8);
    EXPECT_LT(timer.elapsed(), 1000);
    Entries combining = numbered(9, u"e"_s + QString(4000, u'\u0301'));
    EXPECT_LT(renderPendingText(combining, polling).size(), 4096);
    EXPECT_EQ(listedCount(combining, polling), 8);
}

TEST(PendingMessage, ButtonsOfPolling)
{
    EXPECT_EQ(renderCallbackKeyboard({}, polling), std::nullopt);
    EXPECT_EQ(renderCallbackKeyboard(numbered(1), safe), std::nullopt);
    const auto keyboard = renderCallbackKeyboard(numbered(9), polling);
    EXPECT_EQ(keyboard->value("inline_keyboard"_L1).toArray().size(), 8);
    EXPECT_EQ(buttonTexts(keyboard, u"text"_s).first(3),
              (QStringList {u"승인 id-0001-"_s, u"거부 id-0001-"_s, u"영구 id-0001-"_s}));
    EXPECT_EQ(buttonTexts(keyboard, u"callback_data"_s).last(3),
              (QStringList {u"allow:id-0008-xyz"_s, u"deny:id-0008-xyz"_s,
                            u"allow-always:id-0008-xyz"_s}));
}

TEST(PendingMessage, AnIdTooLongForButtonsIsDecidedByCommand)
{
    const struct {
        QString id;
        bool hasButtons;
        QString hint;
    } rows[] = {
        {QString(51, u'x'), true, {}},
        {QString(52, u'x'), false,
         u" (no buttons, use /approve "_s + QString(52, u'x')
             + u" allow-once|allow-always|deny)"_s},
        {QString(17, u'가'), true, {}},
        {QString(18, u'가'), false,
         u" (no buttons, use /approve "_s + QString(18, u'가')
             + u" allow-once|allow-always|deny)"_s},
        {QString(60, u'x') + u" y"_s, false, u" (no buttons, decide it in the application)"_s},
        {QString(300, u'x'), false, u" (no buttons, decide it in the application)"_s},
    };
    for (const auto &row : rows) {
        const TelegramApprovalEntry entry {row.id, u"ls"_s};
        EXPECT_EQ(renderCallbackKeyboard({entry}, polling).has_value(), row.hasButtons);
        EXPECT_EQ(line(entry), (u"1. "_s + row.id.first(8) + u" ls"_s + row.hint).toStdString());
        EXPECT_EQ(line(entry, safe), (u"1. "_s + row.id.first(8) + u" ls"_s).toStdString());
    }
}

TEST(PendingMessage, IdsThatBeginAlikeAreToldApart)
{
    const QString longPrefix(30, u'p');
    const auto texts = buttonTexts(renderCallbackKeyboard({{u"approval-1"_s, u"ls"_s},
                                                           {u"approval-2"_s, u"rm"_s},
                                                           {u"approval"_s, u"cp"_s},
                                                           {longPrefix + u'1', u"mv"_s},
                                                           {longPrefix + u'2', u"ln"_s}},
                                                          polling),
                                   u"text"_s);
    EXPECT_EQ(QSet<QString>(texts.begin(), texts.end()).size(), 15);
    EXPECT_EQ(texts.at(0), u"승인 approval-1"_s);
    EXPECT_EQ(texts.at(6), u"승인 approval"_s);
    EXPECT_EQ(texts.at(12), u"승인 pppppppp#5"_s);
}

TEST(PendingMessage, KeysThatSendCommands)
{
    EXPECT_EQ(renderCommandKeyboard(numbered(1), polling), std::nullopt);
    EXPECT_EQ(renderCommandKeyboard({}, safe), std::nullopt);
    const auto keyboard = renderCommandKeyboard(numbered(1), commands);
    EXPECT_EQ(*keyboard,
              QJsonDocument::fromJson(R"({
        "keyboard": [[{"text": "/approve id-0001-xyz allow-once"}, {"text": "/approve id-0001-xyz deny"}],
                     [{"text": "/approve id-0001-xyz allow-always"}]],
        "resize_keyboard": true, "one_time_keyboard": true, "selective": true,
        "input_field_placeholder": "Tap command to send approval"})")
                  .object());
    EXPECT_EQ(renderCommandKeyboard(numbered(9), safe)->value("keyboard"_L1).toArray().size(), 18);
    // Pressed, these would be a command about something else, or none.
    for (const QString &id : {u"x allow-always"_s, u"x\ny"_s, u"x\u200B"_s, QString()}) {
        EXPECT_EQ(renderCommandKeyboard({{id, u"ls"_s}}, safe), std::nullopt);
    }
}

TEST(PendingMessage, AChatSeesItsAgentsAndThoseWithout)
{
    TelegramBotConfig config;
    config.chatIds = {1, 2};
    config.chatAgentMap = {{1, {u"a"_s}}};
    const TelegramApprovalEntry ofA {u"1"_s, u"ls"_s, u"a"_s};
    const TelegramApprovalEntry ofB {u"2"_s, u"ls"_s, u"b"_s};
    const TelegramApprovalEntry ofNone {u"3"_s, u"ls"_s};
    EXPECT_EQ(entriesForChat(config, 1, {ofB, ofNone, ofA}), (Entries {ofNone, ofA}));
    EXPECT_EQ(entriesForChat(config, 2, {ofB, ofNone, ofA}), (Entries {ofB, ofNone, ofA}));
}

} // namespace bram
