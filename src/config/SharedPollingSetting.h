// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/StoredSwitch.h"

namespace bram
{

/// Whether the operator lets this program fetch the updates of a Telegram bot that the platform's own channel
/// fetches too: two who fetch take updates from each other. A `StoredSwitch` under the names it has elsewhere.
/// Main thread.
class SharedPollingSetting final : public QObject
{
    Q_OBJECT

public:
    explicit SharedPollingSetting(Preferences &preferences);

    bool allowSharedBotPollingOverride() const { return m_switch.isOn(); }

    /// As `StoredSwitch::setOn`.
    bool setAllowSharedBotPollingOverride(bool isAllowed) { return m_switch.setOn(isAllowed); }

Q_SIGNALS:
    /// The setting has really changed.
    void allowSharedBotPollingOverrideChanged(bool isAllowed);

private:
    StoredSwitch m_switch;
};

} // namespace bram
