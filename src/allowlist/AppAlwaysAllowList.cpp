// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AppAlwaysAllowList.h"

#include "allowlist/CommandDigest.h"
#include "model/CommandRules.h"
#include "system/Preferences.h"
#include "system/SystemLog.h"

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString alwaysAllowCommandsKey = u"approvals.always-allow.command-digests"_s;
const QString alwaysAllowCommandPreviewMapKey
    = u"approvals.always-allow.command-preview-by-digest"_s;
const QString legacyAlwaysAllowCommandMapKey = u"approvals.always-allow.commands-by-digest"_s;
/// By digest: the forms, with a space between them.
const QString formsKey = u"approvals.always-allow.exact-digests"_s;
const QString sensitiveKey = u"approvals.always-allow.security-critical-digests"_s;
/// What earlier releases, which know no forms, must not answer for.
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

KnownCommand knownCommand(const QString &text, const QString &digest)
{
    if (normalizedCommandDigest(text) != digest) {
        return {};
    }
    return {.forms = {commandForm(text)}, .isSecuritySensitive = isSecuritySensitiveCommand(text)};
}

AppAlwaysAllowList::AppAlwaysAllowList(Preferences &preferences, SystemLog &log)
    : m_preferences(preferences)
    , m_log(log)
{
}

void AppAlwaysAllowList::loadAlwaysAllowState()
{
    m_digests = setOf(usable(m_preferences.textList(alwaysAllowCommandsKey), m_log));
    m_digests.remove(QString());
    m_sensitive = setOf(usable(m_preferences.textList(sensitiveKey), m_log));
    m_previews = usable(m_preferences.textMap(alwaysAllowCommandPreviewMapKey), m_log);
    bool hadValue = false;
    m_previews.removeIf([&hadValue](auto entry) {
        // Earlier releases kept the value of an assignment before the program, which can be a key.
        const QString kept = entry.value().trimmed();
        entry.value() = kept.contains(u'=') ? commandPreview(kept) : kept;
        hadValue = hadValue || entry.value() != kept;
        return kept.isEmpty();
    });
    loadForms();

    // What earlier releases kept: whole commands. Read once; writing removes it.
    const auto legacy = m_preferences.textMap(legacyAlwaysAllowCommandMapKey);
    for (const auto &[digest, command] : usable(legacy, m_log).asKeyValueRange()) {
        if (!digest.isEmpty() && !m_previews.contains(digest)) {
            insert(digest, commandPreview(command), knownCommand(command, digest));
        }
    }
    if (hadValue || (legacy && m_preferences.contains(legacyAlwaysAllowCommandMapKey))) {
        persistAlwaysAllowState();
    }
}

void AppAlwaysAllowList::loadForms()
{
    m_forms.clear();
    if (!m_preferences.contains(formsKey)) {
        inferForms();
        return;
    }
    const auto known = usable(m_preferences.textMap(formsKey), m_log);
    for (const auto &[digest, forms] : known.asKeyValueRange()) {
        for (const QString &form : forms.split(u' ')) {
            if (isCommandForm(form)) {
                m_forms[digest].insert(form);
            }
        }
    }
}

void AppAlwaysAllowList::inferForms()
{
    const auto marked = m_preferences.textList(lineBreakDigestsKey);
    const auto asked = setOf(usable(marked, m_log));
    if (!marked) {
        return; // which of them had a line break is not known
    }
    for (const QString &digest : std::as_const(m_digests)) {
        if (asked.contains(digest)) {
            continue;
        }
        // Where only a preview was kept: a plain command with the same digest has the same words as the one that
        // was allowed, and that had no line break. For others the digest says too little.
        const auto known = knownCommand(m_previews.value(digest), digest);
        m_forms[digest]
            = known.forms.isEmpty() ? QSet {plainCommandForm.toString()} : setOf(known.forms);
    }
}

void AppAlwaysAllowList::persistAlwaysAllowState()
{
    QMap<QString, QString> forms;
    QSet<QString> notPlain;
    for (const QString &digest : std::as_const(m_digests)) {
        const QStringList known = this->forms(digest);
        if (!known.isEmpty()) {
            forms.insert(digest, known.join(u' '));
        }
        if (!known.contains(plainCommandForm)) {
            notPlain.insert(digest);
        }
    }
    m_preferences.setTextMap(formsKey, forms);
    const auto setWhereOfUse = [this](const QString &key, const QSet<QString> &digests) {
        if (!digests.isEmpty() || m_preferences.contains(key)) {
            m_preferences.setTextList(key, sorted(digests));
        }
    };
    setWhereOfUse(lineBreakDigestsKey, notPlain);
    setWhereOfUse(sensitiveKey, m_sensitive);
    m_preferences.setTextList(alwaysAllowCommandsKey, sorted(m_digests));
    m_preferences.setTextMap(alwaysAllowCommandPreviewMapKey, m_previews);
    m_preferences.remove(legacyAlwaysAllowCommandMapKey);
    if (!m_preferences.save()) {
        m_log.write(u"[Brackwen] always-allow list could not be written; it is kept for this run");
    }
}

QStringList AppAlwaysAllowList::forms(const QString &digest) const
{
    return sorted(m_forms.value(digest));
}

bool AppAlwaysAllowList::insert(const QString &digest, const QString &preview,
                                const KnownCommand &known)
{
    bool isChanged = !m_digests.contains(digest);
    m_digests.insert(digest);
    if (!preview.isEmpty() && m_previews.value(digest) != preview) {
        m_previews.insert(digest, preview);
        isChanged = true;
    }
    for (const QString &form : known.forms) {
        isChanged = isChanged || !m_forms.value(digest).contains(form);
        m_forms[digest].insert(form);
    }
    if (known.isSecuritySensitive && !m_sensitive.contains(digest)) {
        m_sensitive.insert(digest);
        isChanged = true;
    }
    return isChanged;
}

bool AppAlwaysAllowList::remove(const QString &digest)
{
    m_forms.remove(digest);
    m_sensitive.remove(digest);
    const bool hadPreview = m_previews.remove(digest) > 0;
    return m_digests.remove(digest) || hadPreview;
}

bool AppAlwaysAllowList::removeForm(const QString &digest, const QString &form)
{
    const auto forms = m_forms.find(digest);
    if (forms == m_forms.end() || !forms->remove(form)) {
        return false;
    }
    if (forms->isEmpty()) {
        remove(digest);
    }
    return true;
}

bool AppAlwaysAllowList::clear()
{
    const bool isChanged = !m_digests.isEmpty() || !m_previews.isEmpty();
    m_digests.clear();
    m_previews.clear();
    m_forms.clear();
    m_sensitive.clear();
    return isChanged;
}

} // namespace bram
