// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMap>
#include <QProcessEnvironment>
#include <QString>

#include <optional>

namespace bram
{

/// Environment variables as a value: taken from the process once, or made by a test.
class Environment
{
public:
    Environment() = default;
    explicit Environment(const QProcessEnvironment &variables);

    /// The variables of this process as they are now.
    static Environment ofProcess();

    /// The value without blanks and line breaks at both ends; nothing when unset or blank. All
    /// look-ups follow this rule.
    std::optional<QString> trimmed(const QString &name) const;

    /// This environment with every entry of `overrides` written over it.
    Environment overriddenBy(const QMap<QString, QString> &overrides) const;

    bool operator==(const Environment &) const = default;

private:
    QProcessEnvironment m_variables;
};

} // namespace bram
