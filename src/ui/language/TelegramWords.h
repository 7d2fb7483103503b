// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/TelegramStatus.h"

#include <QString>
#include <QStringList>

namespace bram
{

/// Whether and how the Telegram bridge works, in a few words.
QString telegramModeWords(const TelegramStatus &status);

/// Where the bot token in use comes from.
QString telegramTokenSourceWords(const TelegramStatus &status);

/// What keeps the bridge from being of use, a sentence each; empty when nothing does. Texts from outside in it
/// have been made fit to be shown.
QStringList telegramHints(const TelegramStatus &status);

/// Who may decide in which chat, and what, where that is not everything for everybody there by intention: a
/// sentence each.
QStringList telegramRuleWords(const TelegramStatus &status);

} // namespace bram
