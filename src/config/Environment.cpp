// SPDX-License-Identifier: Apache-2.0
#include "config/Environment.h"

#include "model/TextRules.h"

namespace bram
{

Environment::Environment(const QProcessEnvironment &variables)
    : m_variables(variables)
{
}

Environment Environment::ofProcess()
{
    return Environment(QProcessEnvironment::systemEnvironment());
}

std::optional<QString> Environment::trimmed(const QString &name) const
{
    return trimmedOrAbsent(m_variables.value(name));
}

Environment Environment::overriddenBy(const QMap<QString, QString> &overrides) const
{
    Environment result = *this;
    for (auto entry = overrides.cbegin(); entry != overrides.cend(); ++entry) {
        result.m_variables.insert(entry.key(), entry.value());
    }
    return result;
}

} // namespace bram
