// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

namespace bram
{

class Preferences;

/// Whether the operator lets this program fetch the updates of a Telegram bot that the platform's own channel
/// fetches too. Off where nothing usable is stored: two who fetch take updates from each other. Main thread.
class SharedPollingSetting final : public QObject
{
    Q_OBJECT

public:
    explicit SharedPollingSetting(Preferences &preferences);

    bool allowSharedBotPollingOverride() const { return m_isAllowed; }

    /// Takes effect at once and is remembered. False when it could not be written to the disk; it holds
    /// for this run then.
    bool setAllowSharedBotPollingOverride(bool isAllowed);

Q_SIGNALS:
    /// The setting has really changed.
    void allowSharedBotPollingOverrideChanged(bool isAllowed);

private:
    Preferences &m_preferences;
    bool m_isAllowed = false;
};

} // namespace bram
