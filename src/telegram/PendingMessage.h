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

// What a chat is shown of the pending requests: rules over values. Everything in it is plain text, and what
// came from outside has its misleading characters made visible.

/// Those of `entries` that concern the chat, in their order: without bound agents all; else those of its
/// agents and those that name no agent.
QList<TelegramApprovalEntry> entriesForChat(const TelegramBotConfig &config, qint64 chatId,
                                            const QList<TelegramApprovalEntry> &entries);

/// How many of `entries`, from the first, are listed one by one: eight at most, and fewer if eight would not
/// fit into a message.
qsizetype listedCount(const QList<TelegramApprovalEntry> &entries, TelegramMode mode);

/// The text of the status message; less than 4,096 UTF-16 code units, as the Bot API counts them.
QString renderPendingText(const QList<TelegramApprovalEntry> &entries, TelegramMode mode);

/// Three buttons for each listed entry, in a row; nothing outside of `Polling`, or when there is no row.
/// An entry whose id is too long for the data of a button has no row; its line in the text says how it is
/// decided instead.
std::optional<QJsonObject> renderCallbackKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                  TelegramMode mode);

/// Keys that send the three commands for each of `entries`; nothing in `Polling`, or when there is no key.
/// An entry whose id would not arrive as one word of a command, and as it stands, has no keys.
std::optional<QJsonObject> renderCommandKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                 TelegramMode mode);

/// The status message without any request.
inline constexpr QLatin1StringView nothingPendingText("BRAM pending approvals: none");

} // namespace bram
