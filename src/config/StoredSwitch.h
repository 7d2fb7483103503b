// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>

namespace bram
{

class Preferences;

/// A yes-or-no setting of the operator's that is kept in the preferences. Off where nothing usable is stored,
/// so every switch is named for what turning it on allows. Main thread.
class StoredSwitch final : public QObject
{
    Q_OBJECT

public:
    /// `key` names it in the preferences.
    StoredSwitch(Preferences &preferences, QString key);

    bool isOn() const { return m_isOn; }

    /// Takes effect at once and is remembered. False when it could not be written to the disk; it holds
    /// for this run then.
    bool setOn(bool isOn);

Q_SIGNALS:
    /// It has really changed.
    void changed(bool isOn);

private:
    Preferences &m_preferences;
    const QString m_key;
    bool m_isOn = false;
};

/// Offers *allow* also where a command is not shown whole.
inline constexpr QLatin1StringView allowPartlyShownKey("decisions.allow-where-not-shown-whole");
/// Sends credentials over an unencrypted connection to a gateway on another machine.
inline constexpr QLatin1StringView unencryptedGatewayKey("gateway.allow-unencrypted-remote");

} // namespace bram
