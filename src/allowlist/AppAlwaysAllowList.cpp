// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AppAlwaysAllowList.h"

#include "allowlist/CommandDigest.h"
#include "model/CommandRules.h"
#include "system/Preferences.h"
#include "system/SystemLog.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString alwaysAllowCommandsKey = u"approvals.always-allow.command-digests"_s;
const QString alwaysAllowCommandPreviewMapKey
    = u"approvals.always-allow.command-preview-by-digest"_s;
const QString legacyAlwaysAllowCommandMapKey = u"approvals.always-allow.commands-by-digest"_s;
const QString lineBreakDigestsKey = u"approvals.always-allow.line-break-digests"_s;

QStringList sorted(const QSet<QString> &texts)
{
    QStringList list = texts.values();
    list.sort();
    return list;
}

QSet<QString> setOf(const QStringList &texts)
{
    return {texts.begin(), texts.end()};
}

/// The value, or the empty one with a line in the log.
template<typename Value>
Value usable(std::expected<Value, Error> value, SystemLog &log)
{
    if (!value) {
        log.write(QString(u"[Brackwen] "_s + value.error().message));
        return {};
    }
    return *std::move(value);
}
} // namespace

CommandForm formOf(const QString &command)
{
    return command.isEmpty()         ? CommandForm::Unknown
        : hasAmbiguousBlank(command) ? CommandForm::WithLineBreak
                                     : CommandForm::Plain;
}

AppAlwaysAllowList::AppAlwaysAllowList(Preferences &preferences, SystemLog &log)
    : m_preferences(preferences)
    , m_log(log)
{
}

void AppAlwaysAllowList::load()
{
    m_digests = setOf(usable(m_preferences.textList(alwaysAllowCommandsKey), m_log));
    m_digests.remove(QString());
    const auto withLineBreak = m_preferences.textList(lineBreakDigestsKey);
    const QStringList marked = usable(withLineBreak, m_log);
    // Without the marks, what has to be asked could not be told from what may be answered.
    m_withLineBreak = withLineBreak ? setOf(marked) : m_digests;
    m_previews = usable(m_preferences.textMap(alwaysAllowCommandPreviewMapKey), m_log);
    m_previews.removeIf([](auto entry) {
        entry.value() = entry.value().trimmed();
        return entry.value().isEmpty();
    });

    // What earlier releases kept: whole commands. Read once; writing removes it.
    const auto legacy = m_preferences.textMap(legacyAlwaysAllowCommandMapKey);
    for (const auto &[digest, command] : usable(legacy, m_log).asKeyValueRange()) {
        if (!digest.isEmpty() && !m_previews.contains(digest)) {
            insert(digest, commandPreview(command), formOf(command));
        }
    }
    if (legacy && m_preferences.contains(legacyAlwaysAllowCommandMapKey)) {
        persist();
    }
}

void AppAlwaysAllowList::persist()
{
    m_preferences.setTextList(alwaysAllowCommandsKey, sorted(m_digests));
    m_preferences.setTextMap(alwaysAllowCommandPreviewMapKey, m_previews);
    if (!m_withLineBreak.isEmpty() || m_preferences.contains(lineBreakDigestsKey)) {
        m_preferences.setTextList(lineBreakDigestsKey, sorted(m_withLineBreak));
    }
    m_preferences.remove(legacyAlwaysAllowCommandMapKey);
    if (!m_preferences.save()) {
        m_log.write(u"[Brackwen] always-allow list could not be written; it is kept for this run");
    }
}

bool AppAlwaysAllowList::insert(const QString &digest, const QString &preview, CommandForm form)
{
    const bool isNew = !m_digests.contains(digest);
    bool isChanged = isNew;
    m_digests.insert(digest);
    if (!preview.isEmpty() && m_previews.value(digest) != preview) {
        m_previews.insert(digest, preview);
        isChanged = true;
    }
    if (form == CommandForm::WithLineBreak && isNew) {
        m_withLineBreak.insert(digest);
    } else if (form == CommandForm::Plain && m_withLineBreak.remove(digest)) {
        isChanged = true;
    }
    return isChanged;
}

bool AppAlwaysAllowList::remove(const QString &digest)
{
    m_withLineBreak.remove(digest);
    const bool hadPreview = m_previews.remove(digest) > 0;
    return m_digests.remove(digest) || hadPreview;
}

bool AppAlwaysAllowList::clear()
{
    const bool isChanged = !m_digests.isEmpty() || !m_previews.isEmpty();
    m_digests.clear();
    m_previews.clear();
    m_withLineBreak.clear();
    return isChanged;
}

} // namespace bram
