// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/Environment.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// What the system says about the user's homes.
struct AccountFacts {
    QString homeFolder; ///< the current user's home as the system reports it
    std::optional<QString> userDatabaseHome; ///< from the user database, which HOME cannot redirect
    QString loginName; ///< empty when the user has no entry
    QString usersFolder = QStringLiteral("/Users"); ///< where the homes of other platforms lie

    /// Those of this process. Asks the user database, which may be on the network: once, at start.
    static AccountFacts ofProcess();

    bool operator==(const AccountFacts &) const = default;
};

/// The agent platform's own configuration file, brackwen.json: where it may lie, and its content.
/// It belongs to the platform and is only read here, anew at every call, because it changes while
/// this program runs. A value; main thread.
class BrackwenConfig
{
public:
    BrackwenConfig(const Environment &environment, const AccountFacts &account);

    /// The files it may be, in the order in which they count; no place is named twice.
    QStringList candidatePaths() const;

    /// A candidate and what it holds.
    struct File {
        QString path;
        QJsonObject content;
    };

    /// Every candidate that is a readable regular file of at most 16 MiB and holds a JSON object, in the
    /// order of the candidates. The others are skipped silently.
    QList<File> loadFiles() const;
    /// Of these, only the content.
    QList<QJsonObject> loadObjects() const;

    /// Whether there is a configuration at all: some candidate is a readable regular file.
    bool isPresent() const;

    /// One line for each candidate that exists and that `loadObjects` skips: which file and why, with
    /// nothing of its content.
    QStringList problems() const;

    /// One line for each candidate that holds a token or a password and can be read by every user of this machine.
    QStringList exposures() const;

private:
    Environment m_environment;
    AccountFacts m_account;
};

} // namespace bram
