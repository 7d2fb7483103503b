// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// The lock that keeps this program to one copy per user. Held by an open descriptor, so that it
/// vanishes with the process, however that ends.
class SingleInstanceLock
{
public:
    static constexpr char defaultLockPath[] = "/tmp/QX.BrackwenApprovalsMenu.lock";

    explicit SingleInstanceLock(const QString &lockPath = QLatin1StringView(defaultLockPath));
    ~SingleInstanceLock();
    Q_DISABLE_COPY_MOVE(SingleInstanceLock)

    /// Takes the lock, without waiting. False when another copy holds it, the file cannot be opened or
    /// is no regular file of this user.
    /// A path that belongs to another user of the machine is not ours to lock: then the same path with
    /// "." and this user's id appended is used.
    bool acquire();

    bool isHeld() const { return m_fd >= 0; }
    /// Of the file that is locked.
    const QString &path() const { return m_lockPath; }

private:
    QString m_lockPath;
    int m_fd = -1;
};

} // namespace bram
