// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

class QDBusMessage;

namespace bram
{

/// Tells a secret that is not there from one that a locked keyring holds back: the keyring library says
/// "not found" for both when the operator has dismissed the question for the password. Asks the Secret
/// Service on the session bus, which knows of the secrets of locked keyrings too. Main thread.
class SecretServiceLock final : public QObject
{
    Q_OBJECT

public:
    /// Calls `answer` with whether there is such a secret in a locked keyring: later, unless this object
    /// is gone by then. False also when the service cannot be asked: other kinds of keyring are not known
    /// to confuse the two.
    void ask(const QString &service, const QString &account, std::function<void(bool)> answer);

    /// The same with whether the keyring that new secrets go to is locked.
    void askWhetherLocked(std::function<void(bool)> answer);

private:
    /// Calls `answer` with what the method gives back, or with an error.
    void call(const QString &path, const QString &interface, const QString &method,
              const QVariantList &arguments, std::function<void(const QDBusMessage &)> answer);
};

} // namespace bram
