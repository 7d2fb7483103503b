// SPDX-License-Identifier: Apache-2.0
#include "telegram/PendingMessage.h"
#include "telegram/TokenMask.h"

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

constexpr ChatTerms polling {.mode = TelegramMode::Polling};
constexpr ChatTerms commands {.mode = TelegramMode::PublishOnlyCommandPolling};
constexpr ChatTerms safe {.mode = TelegramMode::PublishOnlySafe};
const QString token = u"123456789:AAEhBOweik6ad9r_QXMENQjcrGbqCr4K-bc"_s;

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
std::string line(const TelegramApprovalEntry &entry, const ChatTerms &terms = polling)
{
    return renderPendingText({entry}, terms).section(u'\n', 1, 1).toStdString();
}

QStringList buttonTexts(const std::optional<QJsonObject> &keyboard, const QString &key)
{
    QStringList texts;
    const QJsonObject all = keyboard.value_or(QJsonObject());
    const QJsonValue rows
        = all.value("inline_keyboard"_L1).toArray(all.value("keyboard"_L1).toArray());
    for (const QJsonValue &row : rows.toArray()) {
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
    const QString limited
        = renderPendingText({{u"b"_s, u"ls"_s, u"main"_s, false, 1'000'000'000'000}}, polling);
    EXPECT_TRUE(limited.contains(u"\n1. [main] [until 09-0"_s) && limited.endsWith(u"] b ls"_s));
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
        {u"a\nb\r\nc\rd"_s, u"a⏎b⏎c⏎d"_s},
        {u"a⏎b"_s, u"a⟨U+23CE⟩b"_s},
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
    for (const ChatTerms &mode : {polling, commands, safe}) {
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

TEST(PendingMessage, OnlyWhatIsShownWholeIsOfferedToBeAllowed)
{
    const TokenMask mask(token);
    const QStringList all {u"승인 a"_s, u"거부 a"_s, u"영구 a"_s};
    const QStringList withoutAllow {u"거부 a"_s, u"Show a"_s};
    using Right = ChatRight;
    const struct {
        QString command;
        Right right;
        bool offersPartlyShown;
        QStringList buttons;
        QStringList keys;
    } rows[] = {
        {u"ls -la"_s,
         Right::AllowAlways,
         false,
         all,
         {u"allow-once"_s, u"deny"_s, u"allow-always"_s}},
        {u"ls -la"_s, Right::AllowOnce, false, all.first(2), {u"allow-once"_s, u"deny"_s}},
        {u"ls -la"_s, Right::Deny, false, {all.at(1)}, {u"deny"_s}},
        {QString(61, u'x'), Right::AllowAlways, false, withoutAllow, {u"/show a"_s, u"deny"_s}},
        {u"echo ok\nrm x"_s, Right::AllowAlways, false, withoutAllow, {u"/show a"_s, u"deny"_s}},
        {u"echo ok\rrm x"_s, Right::Deny, false, withoutAllow, {u"/show a"_s, u"deny"_s}},
        {u"ls \u202E"_s, Right::AllowAlways, false, withoutAllow, {u"/show a"_s, u"deny"_s}},
        {u"echo a⏎b"_s, Right::AllowAlways, false, withoutAllow, {u"/show a"_s, u"deny"_s}},
        {u"curl x/bot"_s + token, Right::AllowOnce, false, withoutAllow, {u"/show a"_s, u"deny"_s}},
        {u"echo ok\nrm x"_s,
         Right::AllowAlways,
         true,
         all,
         {u"allow-once"_s, u"deny"_s, u"allow-always"_s}},
        {u"echo ok\nrm x"_s, Right::AllowOnce, true, all.first(2), {u"allow-once"_s, u"deny"_s}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(qPrintable(row.command));
        const TelegramApprovalEntry entry {u"a"_s, row.command};
        ChatTerms terms {.mode = TelegramMode::Polling,
                         .right = row.right,
                         .offersPartlyShown = row.offersPartlyShown,
                         .mask = &mask};
        EXPECT_EQ(buttonTexts(renderCallbackKeyboard({entry}, terms), u"text"_s), row.buttons);
        EXPECT_FALSE(renderPendingText({entry}, terms).contains(token.last(20)));
        terms.mode = TelegramMode::PublishOnlyCommandPolling;
        QStringList keys = buttonTexts(renderCommandKeyboard({entry}, terms), u"text"_s);
        keys.replaceInStrings(u"/approve a "_s, QString());
        EXPECT_EQ(keys, row.keys);
        EXPECT_EQ(renderPendingText({entry}, terms).contains(u"allow"_s),
                  row.keys.contains(u"allow-once"_s));
        // Whoever cannot be asked to show it is not offered to.
        terms.mode = TelegramMode::PublishOnlySafe;
        EXPECT_EQ(
            buttonTexts(renderCommandKeyboard({entry}, terms), u"text"_s).contains(u"/show a"_s),
            false);
    }
    const TelegramApprovalEntry longId {QString(60, u'x'), u"a\nb"_s};
    EXPECT_TRUE(
        line(longId).starts_with(u"1. xxxxxxxx a⏎b (no buttons, use /show xx"_s.toStdString()));
    EXPECT_EQ(line(longId).find("allow"), std::string::npos);
    EXPECT_TRUE(renderPendingText({longId}, {.mode = TelegramMode::Polling, .isOpenToAll = true})
                    .endsWith(u"\n\nEverybody in this group may decide about these requests."_s));
}

namespace
{
/// The command that the messages show, with marks for what is marked.
QString shownIn(const QStringList &messages)
{
    QString shown;
    for (const QString &message : messages) {
        EXPECT_LT(message.size(), 4096);
        for (const QString &line : message.split(u'\n').sliced(1)) {
            EXPECT_TRUE(line.startsWith(u"│ "_s) || line.startsWith(u"┆ "_s)) << qPrintable(line);
            shown += (line.startsWith(u'│') && !shown.isNull() ? u"\n"_s : u""_s) + line.sliced(2);
        }
    }
    return shown;
}
} // namespace

TEST(WholeCommand, ShowsEveryCharacterInMessagesThatFit)
{
    const TokenMask mask(token);
    const ChatTerms terms {.mode = TelegramMode::Polling, .mask = &mask};
    QString lines;
    for (int i = 0; i < 900; ++i) {
        lines += u"echo %1 \\\n  --more\n"_s.arg(i);
    }
    const struct {
        QString command;
        QString shown;
        qsizetype messages;
    } rows[] = {
        {u"ls"_s, u"ls"_s, 1},
        {u"a\nb\n"_s, u"a\nb\n"_s, 1},
        {u"a\n│ b ┆"_s, u"a\n⟨U+2502⟩ b ⟨U+2506⟩"_s, 1},
        {u"a\rb\u202E"_s, u"a⟨U+000D⟩b⟨U+202E⟩"_s, 1},
        {lines, lines, 6},
        {QString(u"word "_s).repeated(2000) + u'x', QString(u"word "_s).repeated(2000) + u'x', 3},
        {QString(9000, u'x'), QString(9000, u'x'), 3},
        {QString(1200, u'\u200B'), QString(u"⟨U+200B⟩"_s).repeated(1200), 3},
        {QString(u"😀"_s).repeated(3000), QString(u"😀"_s).repeated(3000), 2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(qPrintable(row.command.first(std::min<qsizetype>(row.command.size(), 20))));
        const WholeCommand whole
            = renderWholeCommand({u"id-1"_s, row.command, u"main"_s, true}, terms);
        EXPECT_TRUE(whole.isWhole);
        EXPECT_EQ(shownIn(whole.messages).toStdString(), row.shown.toStdString());
        EXPECT_EQ(whole.messages.size(), row.messages);
        EXPECT_TRUE(whole.messages.last().startsWith(u"[HIGH] [main] BRAM request id-1"_s));
        for (const QString &message : whole.messages) {
            EXPECT_TRUE(message.isValidUtf16());
            EXPECT_EQ(message.count(u'⟨'), message.count(u'⟩')) << "a mark was cut in half";
        }
    }
    // What is not shown whole is not offered to be allowed.
    QElapsedTimer timer;
    timer.start();
    for (const QString &command :
         {QString(20'000'000, u'x'), QString(5000, u'\u200B'), u"curl x/bot"_s + token}) {
        const TelegramApprovalEntry entry {u"id-1"_s, command};
        const WholeCommand part = renderWholeCommand(entry, terms);
        EXPECT_FALSE(part.isWhole);
        EXPECT_EQ(part.messages.size(), 1);
        EXPECT_TRUE(part.messages.first().contains(u"denied here"_s));
        EXPECT_FALSE(part.messages.first().contains(token.last(20)));
        EXPECT_EQ(buttonTexts(renderDecisionKeys(entry, part.isWhole, terms), u"text"_s),
                  QStringList {u"거부 id-1"_s});
    }
    EXPECT_LT(timer.elapsed(), 1000);
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
