// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/CommandLine.h"

#include <gmock/gmock.h>

using namespace bram;
using namespace Qt::StringLiterals;

TEST(CommandLine, ReadsEveryCommand)
{
    using Kind = AlwaysAllowCommand::Kind;
    using Target = AlwaysAllowOperations::Target;
    struct Row {
        QString line;
        TerminalCommand command;
    };
    const Row rows[] = {
        {u""_s, PlainCommand::Nothing},
        {u" \t "_s, PlainCommand::Nothing},
        {u"list"_s, PlainCommand::List},
        {u"  history\r"_s, PlainCommand::History},
        {u"activity"_s, PlainCommand::Activity},
        {u"status"_s, PlainCommand::Status},
        {u"metrics"_s, PlainCommand::Metrics},
        {u"reconnect"_s, PlainCommand::Reconnect},
        {u"reload-token"_s, PlainCommand::ReloadToken},
        {u"clear-pending"_s, PlainCommand::ClearPending},
        {u"clear-history"_s, PlainCommand::ClearHistory},
        {u"cancel-report"_s, PlainCommand::CancelReport},
        {u"agents"_s, PlainCommand::Agents},
        {u"simulate"_s, PlainCommand::Simulate},
        {u"agent dev"_s, AgentCommand {u"dev"_s}},
        {u" agent\t __all__ "_s, AgentCommand {u"__all__"_s}},
        {u"agent two  words"_s, AgentCommand {u"two  words"_s}},
        {u"language eng"_s, LanguageCommand {MenuLanguage::English}},
        {u"language \t kor"_s, LanguageCommand {MenuLanguage::Korean}},
        {u"shared-polling  on "_s, SharedPollingCommand {true}},
        {u"shared-polling off"_s, SharedPollingCommand {false}},
        {u"export ~/my  requests.txt "_s,
         FileCommand {FileCommand::Purpose::Pending, u"~/my  requests.txt"_s}},
        {u"report r.md"_s, FileCommand {FileCommand::Purpose::WeeklyReport, u"r.md"_s}},
        {u"diagnostics\t/tmp"_s, FileCommand {FileCommand::Purpose::Diagnostics, u"/tmp"_s}},
        {u"always-allow list"_s, AlwaysAllowCommand {Kind::List, Target::App, {}}},
        {u"always-allow  reload "_s, AlwaysAllowCommand {Kind::Reload, Target::App, {}}},
        {u"always-allow register"_s, AlwaysAllowCommand {Kind::Register, Target::App, {}}},
        {u"always-allow add 0f9a"_s, AlwaysAllowCommand {Kind::Add, Target::App, u"0f9a"_s}},
        {u"always-allow add-all"_s, AlwaysAllowCommand {Kind::AddAll, Target::App, {}}},
        {u"always-allow remove 0f9a both"_s,
         AlwaysAllowCommand {Kind::Remove, Target::Both, u"0f9a"_s}},
        {u"always-allow remove app brackwen"_s,
         AlwaysAllowCommand {Kind::Remove, Target::Brackwen, u"app"_s}},
        {u"always-allow clear brackwen"_s, AlwaysAllowCommand {Kind::Clear, Target::Brackwen, {}}},
        {u"always-allow backup /a  b"_s,
         AlwaysAllowCommand {Kind::Backup, Target::App, u"/a  b"_s}},
        {u"always-allow restore ~/x"_s, AlwaysAllowCommand {Kind::Restore, Target::App, u"~/x"_s}},
        {u"telegram status"_s, TelegramCommand::Status},
        {u"telegram  token \t set "_s, TelegramCommand::SetToken},
        {u"telegram token clear"_s, TelegramCommand::ClearToken},
        {u"telegram token source"_s, TelegramCommand::TokenSource},
        {u"telegram token source environment"_s, TelegramCommand::UseEnvironment},
        {u"chat"_s, ChatCommand {}},
        {u"chat press 12"_s, ChatCommand {.kind = ChatCommand::Kind::Press, .number = 12}},
        {u"chat say /approve  a deny "_s,
         ChatCommand {.kind = ChatCommand::Kind::Say, .text = u"/approve  a deny"_s}},
        {u"help"_s, PlainCommand::Help},
        {u"quit"_s, PlainCommand::Quit},
        {u"show 3"_s, ShowCommand {u"3"_s}},
        {u"show all"_s, ShowCommand {u"all"_s}},
        {u" save  #3   a  file "_s, SaveCommand {u"#3"_s, u"a  file"_s}},
        {u"allow-once\t#3"_s, DecideCommand {ApprovalDecision::AllowOnce, u"#3"_s}},
        {u"allow-always 가-1"_s, DecideCommand {ApprovalDecision::AllowAlways, u"가-1"_s}},
        {u"deny ALL"_s, DecideCommand {ApprovalDecision::Deny, u"ALL"_s}},
        {u"allow-once all"_s, DecideAllCommand {ApprovalDecision::AllowOnce}},
        {u"allow-always all"_s, DecideAllCommand {ApprovalDecision::AllowAlways}},
        {u" deny  all "_s, DecideAllCommand {ApprovalDecision::Deny}},
        {u"undo"_s, PlainCommand::Undo},
        {u"settings"_s, PlainCommand::Settings},
        {u"setting a-b on"_s, SettingCommand {u"a-b"_s, true}},
        {u"setting a-b  off"_s, SettingCommand {u"a-b"_s, false}},
    };
    for (const Row &row : rows) {
        const auto command = parseCommandLine(row.line);
        ASSERT_TRUE(command) << qPrintable(row.line);
        EXPECT_EQ(*command, row.command) << qPrintable(row.line);
    }
}

TEST(CommandLine, SaysOnOneShortLineWhatIsWrong)
{
    const std::pair<QString, QString> rows[] = {
        {u"allow"_s, u"Unknown command: allow (try `help`)"_s},
        // The token is not repeated.
        {u"123456789:Token-in-the-test_which-is-42"_s,
         u"Unknown command: [REDACTED_BOT_TOKEN] (try `help`)"_s},
        {u"telegram token set 123456789:Token-in-the-test_which-is-42"_s,
         u"Write it so: telegram status|reload, telegram token set|clear|source, telegram token "
         u"source environment|keyring. The token itself is asked for."_s},
        {u"chat press"_s, u"Write it so: chat, chat press N, chat say TEXT"_s},
        {u"chat say"_s, u"Write it so: chat, chat press N, chat say TEXT"_s},
        {u"Deny 1"_s, u"Unknown command: Deny (try `help`)"_s},
        {u"1"_s, u"Unknown command: 1 (try `help`)"_s},
        {u"y"_s, u"Unknown command: y (try `help`)"_s},
        {u"list 1"_s, u"`list` takes nothing after it."_s},
        {u"quit now please"_s, u"`quit` takes nothing after it."_s},
        {u"show"_s, u"Say which request: show ID"_s},
        {u"save 3 "_s, u"Say which request: save ID FILE"_s},
        {u"deny"_s, u"Say which request: deny ID|all"_s},
        {u"allow-once 1 2"_s, u"Say which request: allow-once ID|all"_s},
        {u"agents x"_s, u"`agents` takes nothing after it."_s},
        {u"agent"_s, u"Say which agent: agent NAME"_s},
        {u"export"_s, u"Say where to: export FILE"_s},
        {u"report "_s, u"Say where to: report FILE"_s},
        {u"diagnostics"_s, u"Say where to: diagnostics FOLDER"_s},
        {u"always-allow"_s,
         u"Say what: always-allow list|reload|remove|clear|register|add|add-all|backup|restore"_s},
        {u"always-allow all"_s,
         u"Say what: always-allow list|reload|remove|clear|register|add|add-all|backup|restore"_s},
        {u"always-allow list all"_s, u"Write it so: always-allow list"_s},
        {u"always-allow clear"_s, u"Write it so: always-allow clear app|brackwen|both"_s},
        {u"always-allow clear all"_s, u"Write it so: always-allow clear app|brackwen|both"_s},
        {u"always-allow remove both"_s,
         u"Write it so: always-allow remove DIGEST app|brackwen|both"_s},
        {u"always-allow remove a b both"_s,
         u"Write it so: always-allow remove DIGEST app|brackwen|both"_s},
        {u"always-allow backup"_s, u"Write it so: always-allow backup FILE"_s},
        {u"language"_s, u"Say which language: language eng|kor"_s},
        {u"shared-polling yes"_s, u"Say on or off: shared-polling on|off"_s},
        {u"setting a yes"_s, u"Write it so: setting NAME on|off"_s},
        {u"setting on"_s, u"Write it so: setting NAME on|off"_s},
        {u"language Kor"_s, u"Say which language: language eng|kor"_s},
        {u"language eng kor"_s, u"Say which language: language eng|kor"_s},
        {u"allow-always all 2"_s, u"Say which request: allow-always ID|all"_s},
        {QString(60'000, u'x'), u"Unknown command: "_s + QString(40, u'x') + u"… (try `help`)"_s},
    };
    for (const auto &[line, message] : rows) {
        const auto command = parseCommandLine(line);
        ASSERT_FALSE(command) << qPrintable(line.left(80));
        EXPECT_EQ(command.error().message, message);
    }
    const auto oneLetter = parseCommandLine(u'a' + QString(60'000, QChar(0x0301)));
    ASSERT_FALSE(oneLetter);
    EXPECT_LT(oneLetter.error().message.size(), 300);
}
