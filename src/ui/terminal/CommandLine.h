// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/Error.h"
#include "model/MenuLanguage.h"
#include "monitor/AlwaysAllowOperations.h"

#include <QString>

#include <expected>
#include <variant>

namespace bram
{

/// A command that stands alone on its line.
enum class PlainCommand {
    Nothing, ///< an empty line
    List,
    History,
    Activity,
    Status,
    Metrics,
    Agents,
    Simulate,
    Reconnect,
    ReloadToken,
    ClearPending,
    ClearHistory,
    CancelReport,
    Undo,
    Settings,
    Help,
    Quit,
};

/// `show ID`
struct ShowCommand {
    QString target;

    bool operator==(const ShowCommand &) const = default;
};

/// `save ID FILE`: the path is all that stands after the id
struct SaveCommand {
    QString target;
    QString path;

    bool operator==(const SaveCommand &) const = default;
};

/// `allow-once ID`, `allow-always ID`, `deny ID`
struct DecideCommand {
    ApprovalDecision decision = ApprovalDecision::Deny;
    QString target;

    bool operator==(const DecideCommand &) const = default;
};

/// The same for every request, with `all` in place of an id. The word is kept for this: a request
/// whose id it happens to be is named by its number.
struct DecideAllCommand {
    ApprovalDecision decision = ApprovalDecision::Deny;

    bool operator==(const DecideAllCommand &) const = default;
};

/// `agent NAME`: all that stands after the word, blanks within it too
struct AgentCommand {
    QString agentId;

    bool operator==(const AgentCommand &) const = default;
};

/// `language eng|kor`
struct LanguageCommand {
    MenuLanguage language = MenuLanguage::English;

    bool operator==(const LanguageCommand &) const = default;
};

/// `shared-polling on|off`
struct SharedPollingCommand {
    bool isAllowed = false;

    bool operator==(const SharedPollingCommand &) const = default;
};

/// `setting NAME on|off`
struct SettingCommand {
    QString name;
    bool isOn = false;

    bool operator==(const SettingCommand &) const = default;
};

/// A command about a file or a folder, whose path is all that stands after the word
struct FileCommand {
    enum class Purpose {
        Pending, ///< `export FILE`
        WeeklyReport, ///< `report FILE`
        Diagnostics, ///< `diagnostics FOLDER`
    };
    Purpose purpose = Purpose::Pending;
    QString path;

    bool operator==(const FileCommand &) const = default;
};

/// `always-allow …`
struct AlwaysAllowCommand {
    enum class Kind {
        List,
        Reload,
        Register,
        Add, ///< `add DIGEST`
        AddAll,
        Remove, ///< `remove DIGEST app|brackwen|both`
        Clear, ///< `clear app|brackwen|both`
        Backup, ///< `backup FILE`
        Restore, ///< `restore FILE`
    };
    Kind kind = Kind::List;
    AlwaysAllowOperations::Target target = AlwaysAllowOperations::Target::App;
    QString argument {}; ///< the beginning of a digest, or a path

    bool operator==(const AlwaysAllowCommand &) const = default;
};

/// `telegram …`
enum class TelegramCommand {
    Status, ///< `status`
    Reload, ///< `reload`
    SetToken, ///< `token set`; the token itself is asked for
    ClearToken, ///< `token clear`
    TokenSource, ///< `token source`
    UseEnvironment, ///< `token source environment`
    UseKeyring, ///< `token source keyring`
};

/// `chat …`, in practice
struct ChatCommand {
    enum class Kind {
        Show, ///< `chat`
        Press, ///< `chat press N`
        Say, ///< `chat say TEXT`
    };
    Kind kind = Kind::Show;
    int number = 0;
    QString text {};

    bool operator==(const ChatCommand &) const = default;
};

using TerminalCommand
    = std::variant<PlainCommand, ShowCommand, SaveCommand, DecideCommand, DecideAllCommand,
                   AgentCommand, LanguageCommand, SharedPollingCommand, SettingCommand, FileCommand,
                   AlwaysAllowCommand, TelegramCommand, ChatCommand>;

/// What is wrong with a line, in one line and in the operator's language. It may repeat what was typed as it was.
struct LineFault : Error {
    bool isUnknownWord = false; ///< else the line begins as a command and goes on wrongly
};

/// Reads one line as typed. Words are told apart by blanks and compared exactly.
std::expected<TerminalCommand, LineFault> parseCommandLine(QStringView line);

/// As much of what was typed as a message repeats.
QString beginningOfTyped(const QString &text);

} // namespace bram
