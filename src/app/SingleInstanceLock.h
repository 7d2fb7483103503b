// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace bram
{

class Environment;

/// The lock that keeps this program to one copy per user. Held by open descriptors, so that it vanishes with
/// the process, however that ends.
///
/// The usual file lies where every user of the machine can put something in its way. So a second one, in the
/// folder that only this user can write to, is locked beside it: one of the two has to be lockable, and a
/// copy that holds either keeps the next one out. Nobody can let a second copy in by taking away what
/// was in the way of the first.
class SingleInstanceLock
{
public:
    static constexpr char usualPath[] = "/tmp/QX.BrackwenApprovalsMenu.lock";

    struct Paths {
        QString usual = QLatin1StringView(usualPath);
        QString own {}; ///< in a folder of this user alone; empty for none

        /// The usual file and one in XDG_RUNTIME_DIR, or only the one that BRACKWEN_APPROVALS_LOCK_FILE names.
        static Paths of(const Environment &environment);
    };

    explicit SingleInstanceLock(Paths paths);
    ~SingleInstanceLock();
    Q_DISABLE_COPY_MOVE(SingleInstanceLock)

    enum class Result {
        Acquired,
        HeldByAnotherCopy,
        Impossible, ///< `reason` says why
    };
    /// Takes the lock, without waiting.
    Result acquire();

    /// Of a file that is locked; empty before.
    const QString &path() const { return m_path; }
    /// The process that holds the lock, if it is another copy and has written that down.
    std::optional<qint64> holder() const { return m_holder; }
    /// In English, on one line.
    const QString &reason() const { return m_reason; }

private:
    enum class Attempt {
        Locked,
        HeldElsewhere,
        Unusable,
    };
    Attempt lock(const QString &path);
    void explain(const QString &path, const QString &why);
    void release();

    const Paths m_paths;
    std::vector<int> m_descriptors; ///< of the files that are locked
    QString m_path;
    std::optional<qint64> m_holder;
    QString m_reason;
};

} // namespace bram
