// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AllowlistFixture.h"
#include "allowlist/AlwaysAllowList.h"
#include "allowlist/CommandDigest.h"
#include "system/Preferences.h"

#include <memory>

namespace bram::test
{

using namespace Qt::StringLiterals;

inline const QString digestsKey = u"approvals.always-allow.command-digests"_s;
inline const QString previewsKey = u"approvals.always-allow.command-preview-by-digest"_s;
inline const QString formsKey = u"approvals.always-allow.exact-digests"_s;
inline const QString lineBreaksKey = u"approvals.always-allow.line-break-digests"_s;
inline const QString legacyKey = u"approvals.always-allow.commands-by-digest"_s;

inline QString digestOf(const QString &command)
{
    return *normalizedCommandDigest(command);
}

/// A list over real preferences and the platform's files.
class AlwaysAllow : public AllowlistFixture
{
protected:
    AlwaysAllow() { restart(); }

    /// As after a restart of the program.
    void restart()
    {
        list.reset();
        preferences = std::make_unique<Preferences>(preferencesPath);
        list = std::make_unique<AlwaysAllowList>(*preferences, platform(), log);
        QObject::connect(list.get(), &AlwaysAllowList::entriesChanged, list.get(),
                         [this] { ++changes; });
        list->start();
    }
    void platformAllows(const QByteArrayList &commands)
    {
        write(platform(u"exec-approvals.json"_s),
              R"({"agents":{"main":{"allowlist":[")" + commands.join(R"(",")") + R"("]}}})");
    }
    QStringList texts() const
    {
        QStringList texts;
        for (const auto &entry : list->entries()) {
            texts.append(entry.command.isEmpty() ? entry.digest.left(4) : entry.command);
        }
        return texts;
    }
    AlwaysAllowEntry entry(const QString &command) const { return *list->find(digestOf(command)); }
    AlwaysAllowSource sourceOf(const QString &command) const { return entry(command).source; }
    bool platformHas(const char *command) const
    {
        return contentOf(platform(u"exec-approvals.json"_s)).contains(command);
    }

    const QString preferencesPath = home.filePath(u"preferences.ini"_s);
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<AlwaysAllowList> list;
    int changes = 0;
};

} // namespace bram::test
