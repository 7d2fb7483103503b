// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMap>
#include <QSet>
#include <QString>

namespace bram
{

class Preferences;
class SystemLog;

/// What is known of the command that a digest was made of.
enum class CommandForm {
    Unknown,
    Plain,
    WithLineBreak, ///< or another ambiguous blank
};

/// `Unknown` of an empty text.
CommandForm formOf(const QString &command);

/// The application's own always-allow list: digests, each with a text that tells people what it is. Kept
/// in the preferences; a malformed value there counts as empty and is said in the log. Main thread.
class AppAlwaysAllowList
{
public:
    AppAlwaysAllowList(Preferences &preferences, SystemLog &log);

    void load();
    void persist();

    const QSet<QString> &digests() const { return m_digests; }
    /// Empty when there is none.
    QString preview(const QString &digest) const { return m_previews.value(digest); }
    /// Whether the command was remembered with a line break in it. Its digest is then also that of
    /// commands that a shell reads differently, so that it answers for none.
    bool hadLineBreak(const QString &digest) const { return m_withLineBreak.contains(digest); }

    /// Each returns whether something has changed, which is then to be persisted. Of an empty `preview`
    /// nothing is kept.
    bool insert(const QString &digest, const QString &preview, CommandForm form);
    bool remove(const QString &digest);
    bool clear();

private:
    Preferences &m_preferences;
    SystemLog &m_log;
    QSet<QString> m_digests;
    QMap<QString, QString> m_previews;
    QSet<QString> m_withLineBreak;
};

} // namespace bram
