// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowList.h"
#include "monitor/MonitorPorts.h"

namespace bram
{

/// Lets the always-allow list answer requests.
class AlwaysAllowAnswers final : public AlwaysAllowRules
{
public:
    explicit AlwaysAllowAnswers(AlwaysAllowList &list)
        : m_list(list)
    {
    }

    AlwaysAllowVerdict verdict(const QString &command) const override
    {
        return m_list.verdict(command);
    }
    void remember(const QString &command) override { m_list.rememberAlwaysAllow(command); }

private:
    AlwaysAllowList &m_list;
};

} // namespace bram
