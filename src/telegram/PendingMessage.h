// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/TelegramApprovalEntry.h"
#include "telegram/TelegramBotConfig.h"

#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace bram
{

class TokenMask;

// What a chat is shown of the pending requests: rules over values. Everything in it is plain text, and what
// came from outside has its misleading characters made visible.
//
// A command that its line does not show whole is not offered to be allowed there, but to be shown: see
// `renderWholeCommand`.

/// What the messages of one chat offer.
struct ChatTerms {
    TelegramMode mode = TelegramMode::PublishOnlySafe;
    ChatRight right = ChatRight::AllowAlways;
    bool isOpenToAll = false; ///< a group in which everybody may decide
    bool offersPartlyShown = false; ///< to allow, too
    const TokenMask *mask = nullptr; ///< outlives the terms
};

ChatTerms termsOf(const TelegramBotConfig &config, qint64 chatId, const TokenMask *mask);

/// Those of `entries` that concern the chat, in their order: without bound agents all; else those of its
/// agents and those that name no agent.
QList<TelegramApprovalEntry> entriesForChat(const TelegramBotConfig &config, qint64 chatId,
                                            const QList<TelegramApprovalEntry> &entries);

/// How many of `entries`, from the first, are listed one by one: eight at most, and fewer if eight would not
/// fit into a message.
qsizetype listedCount(const QList<TelegramApprovalEntry> &entries, const ChatTerms &terms);

/// The text of the status message; less than 4,096 UTF-16 code units, as the Bot API counts them.
QString renderPendingText(const QList<TelegramApprovalEntry> &entries, const ChatTerms &terms);

/// A row of buttons for each listed entry; nothing outside of `Polling`, or when there is no row.
/// An entry whose id is too long for the data of a button has no row; its line in the text says how it is
/// decided instead.
std::optional<QJsonObject> renderCallbackKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                  const ChatTerms &terms);

/// Keys that send the commands for each of `entries`; nothing in `Polling`, or when there is no key.
/// An entry whose id would not arrive as one word of a command, and as it stands, has no keys.
std::optional<QJsonObject> renderCommandKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                 const ChatTerms &terms);

/// What stands below a command that was sent in messages of its own: buttons or keys for its decisions.
std::optional<QJsonObject> renderDecisionKeys(const TelegramApprovalEntry &entry, bool isShownWhole,
                                              const ChatTerms &terms);

/// A command in messages of its own, honestly displayed.
struct WholeCommand {
    QStringList messages {}; ///< each with less than 4,096 UTF-16 code units; never empty
    /// False when it is too long for a chat, or holds the bot's token, which is sent to none. The messages
    /// say so.
    bool isWhole = false;
};
/// Each line of the command begins with "│ ", the rest of one that goes on in the next message with "┆ ":
/// nothing in a command can pass for what is around it.
WholeCommand renderWholeCommand(const TelegramApprovalEntry &entry, const ChatTerms &terms);

/// The status message without any request.
inline constexpr QLatin1StringView nothingPendingText("BRAM pending approvals: none");

} // namespace bram
