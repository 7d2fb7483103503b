// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QMap>
#include <QSet>
#include <QStringList>

namespace bram
{

class Preferences;
class SystemLog;

/// What is known of the command that a digest was made of, beside its preview.
struct KnownCommand {
    QStringList forms {}; ///< as of `commandForm`
    bool isSecuritySensitive = false;
};

/// Nothing, unless `text` is a whole command with this digest.
KnownCommand knownCommand(const QString &text, const QString &digest);

/// The application's own always-allow list: digests, each with a text that tells people what it is. Kept
/// in the preferences; a malformed value there counts as empty and is said in the log: it makes the list ask,
/// never answer. Main thread.
class AppAlwaysAllowList
{
public:
    AppAlwaysAllowList(Preferences &preferences, SystemLog &log);

    void loadAlwaysAllowState();
    void persistAlwaysAllowState();

    const QSet<QString> &digests() const { return m_digests; }
    /// Empty when there is none.
    QString preview(const QString &digest) const { return m_previews.value(digest); }
    /// Which commands with this digest were allowed, in a fixed order. An entry without any answers nothing.
    QStringList forms(const QString &digest) const;
    bool isAllowed(const QString &digest, const QString &form) const
    {
        return m_digests.contains(digest) && m_forms.value(digest).contains(form);
    }
    /// Whether one of the commands was found to be so when it was whole.
    bool isSecuritySensitive(const QString &digest) const { return m_sensitive.contains(digest); }

    /// Each returns whether something has changed, which is then to be persisted. Of an empty `preview`
    /// nothing is kept. What was known of the entry before stays known.
    bool insert(const QString &digest, const QString &preview, const KnownCommand &known);
    bool remove(const QString &digest);
    /// Of an entry that answers for several commands only the one; with the last one it goes.
    bool removeForm(const QString &digest, const QString &form);
    bool clear();

private:
    void loadForms();
    /// Of entries that were kept before forms were.
    void inferForms();

    Preferences &m_preferences;
    SystemLog &m_log;
    QSet<QString> m_digests;
    QMap<QString, QString> m_previews;
    QHash<QString, QSet<QString>> m_forms; ///< by digest; none is empty
    QSet<QString> m_sensitive;
};

} // namespace bram
