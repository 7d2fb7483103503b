// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AlwaysAllowList.h"

#include "allowlist/CommandDigest.h"
#include "model/CommandRules.h"

#include <QCollator>

#include <algorithm>
#include <utility>
#include <vector>

namespace bram
{

namespace
{
/// In ascending order for people, whatever the case; in a fixed order where that makes no difference.
QList<AlwaysAllowEntry> inOrder(const QList<AlwaysAllowEntry> &entries)
{
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    struct Row {
        QCollatorSortKey key;
        const AlwaysAllowEntry *entry;
    };
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(entries.size()));
    for (const auto &entry : entries) {
        const QString &text = entry.command.isEmpty() ? entry.digest : entry.command;
        // Without a locale the keys of a collator do not ignore case by themselves.
        rows.push_back({collator.sortKey(text.toCaseFolded()), &entry});
    }
    std::ranges::sort(rows, [](const Row &a, const Row &b) {
        const int order = a.key.compare(b.key);
        return order != 0 ? order < 0
                          : std::tie(a.entry->command, a.entry->digest)
                < std::tie(b.entry->command, b.entry->digest);
    });
    QList<AlwaysAllowEntry> result;
    result.reserve(entries.size());
    for (const Row &row : rows) {
        result.append(*row.entry);
    }
    return result;
}

QCoro::Task<ExecApprovalsOutcome> nothingToDo()
{
    co_return {};
}
} // namespace

AlwaysAllowList::AlwaysAllowList(Preferences &preferences, const QString &platformFolder,
                                 SystemLog &log)
    : m_platformFolder(platformFolder)
    , m_app(preferences, log)
    , m_files(platformFolder, log)
{
    connect(&m_files, &ExecApprovalsFiles::changed, this, [this] {
        loadBrackwenAlwaysAllowFromExecApprovalsFiles();
        refreshAlwaysAllowEntries();
    });
}

void AlwaysAllowList::start()
{
    m_files.watch();
    reload(AlwaysAllowScope::IncludeRegistered);
}

void AlwaysAllowList::reload(AlwaysAllowScope scope)
{
    m_scope = scope;
    m_app.loadAlwaysAllowState();
    loadBrackwenAlwaysAllowFromExecApprovalsFiles();
    refreshAlwaysAllowEntries();
}

const AlwaysAllowEntry *AlwaysAllowList::find(const QString &digest) const
{
    const auto entry = std::ranges::find(m_entries, digest, &AlwaysAllowEntry::digest);
    return entry == m_entries.end() ? nullptr : &*entry;
}

QList<AlwaysAllowEntry> AlwaysAllowList::present(const QList<AlwaysAllowEntry> &entries) const
{
    QSet<QString> digests;
    for (const auto &entry : entries) {
        digests.insert(entry.digest);
    }
    QList<AlwaysAllowEntry> now;
    std::ranges::copy_if(m_entries, std::back_inserter(now), [&](const AlwaysAllowEntry &entry) {
        return digests.contains(entry.digest);
    });
    return now;
}

AlwaysAllowVerdict AlwaysAllowList::verdict(const QString &command) const
{
    if (m_app.digests().isEmpty()) {
        return AlwaysAllowVerdict::
            Unknown; // as most are: the digest would be a good part of what a request costs
    }
    const auto digest = normalizedCommandDigest(command);
    if (!digest || !m_app.digests().contains(*digest)) {
        return AlwaysAllowVerdict::Unknown;
    }
    return m_app.isAllowed(*digest, commandForm(command)) ? AlwaysAllowVerdict::Allowed
                                                          : AlwaysAllowVerdict::NotExact;
}

void AlwaysAllowList::rememberAlwaysAllow(const QString &command)
{
    const auto digest = normalizedCommandDigest(command);
    if (digest && m_app.insert(*digest, commandPreview(command), knownCommand(command, *digest))) {
        m_app.persistAlwaysAllowState();
        refreshAlwaysAllowEntries();
    }
}

bool AlwaysAllowList::isRemembered(const QString &command) const
{
    const auto digest = normalizedCommandDigest(command);
    return digest && m_app.isAllowed(*digest, commandForm(command));
}

qsizetype AlwaysAllowList::forgetAlwaysAllow(const QStringList &commands)
{
    qsizetype count = 0;
    for (const QString &command : commands) {
        const auto digest = normalizedCommandDigest(command);
        count += digest && m_app.removeForm(*digest, commandForm(command)) ? 1 : 0;
    }
    if (count > 0) {
        persistAndReload();
    }
    return count;
}

bool AlwaysAllowList::addAlwaysAllowEntryToAppList(const QList<AlwaysAllowEntry> &entries)
{
    bool isChanged = false;
    for (const auto &entry : entries) {
        isChanged = ensureAlwaysAllowEntryInAppList(entry) || isChanged;
    }
    persistAndReload();
    return isChanged;
}

bool AlwaysAllowList::removeAlwaysAllowEntryFromAppOnly(const QList<AlwaysAllowEntry> &entries)
{
    if (!takeFromApp(entries)) {
        return false;
    }
    persistAndReload();
    return true;
}

bool AlwaysAllowList::takeFromApp(const QList<AlwaysAllowEntry> &entries)
{
    bool isChanged = false;
    for (const auto &entry : entries) {
        if (entry.source != AlwaysAllowSource::BrackwenOnly) {
            isChanged = m_app.remove(entry.digest) || isChanged;
        }
    }
    return isChanged;
}

/// Each file is written once, however many entries go.
QCoro::Task<ExecApprovalsOutcome>
AlwaysAllowList::removeBrackwenAlwaysAllowEntry(const QList<AlwaysAllowEntry> &entries)
{
    QSet<QString> digests;
    for (const auto &entry : entries) {
        if (entry.source != AlwaysAllowSource::LocalOnly) {
            digests.insert(entry.digest);
        }
    }
    return digests.isEmpty() ? nothingToDo()
                             : m_files.removeAlwaysAllowDigestFromExecApprovalsFiles(digests);
}

bool AlwaysAllowList::clearApp()
{
    const bool isChanged = m_app.clear();
    persistAndReload();
    return isChanged;
}

QCoro::Task<ExecApprovalsOutcome>
AlwaysAllowList::removeAlwaysAllowEntryFromBrackwenOnly(QList<AlwaysAllowEntry> entries)
{
    bool isAdded = false;
    for (const auto &entry : entries) {
        isAdded = ensureAlwaysAllowEntryInAppList(entry) || isAdded;
    }
    if (isAdded) {
        m_app.persistAlwaysAllowState();
    }
    return following(this, removeBrackwenAlwaysAllowEntry(entries), isAdded, Reload::WhereChanged);
}

QCoro::Task<ExecApprovalsOutcome>
AlwaysAllowList::removeAlwaysAllowEntry(QList<AlwaysAllowEntry> entries)
{
    const bool isRemoved = takeFromApp(entries);
    m_app.persistAlwaysAllowState();
    return following(this, removeBrackwenAlwaysAllowEntry(entries), isRemoved, Reload::Always);
}

QCoro::Task<ExecApprovalsOutcome> AlwaysAllowList::clearBrackwen()
{
    return following(this, m_files.clearAlwaysAllowInExecApprovalsFiles(), false, Reload::Always);
}

QCoro::Task<ExecApprovalsOutcome> AlwaysAllowList::registerAtBrackwen(QStringList commands)
{
    return following(this, m_files.appendCommandsToExecApprovalsFiles(std::move(commands)), false,
                     Reload::Always);
}

QCoro::Task<ExecApprovalsOutcome> AlwaysAllowList::following(Self self,
                                                             QCoro::Task<ExecApprovalsOutcome> work,
                                                             bool isChangedHere, Reload reload)
{
    ExecApprovalsOutcome outcome = co_await work;
    outcome.isChanged = outcome.isChanged || isChangedHere;
    if (self && (outcome.isChanged || reload == Reload::Always)) {
        self->reload(AlwaysAllowScope::IncludeRegistered);
    }
    co_return outcome;
}

qsizetype AlwaysAllowList::restore(const QList<BackedUpCommand> &commands)
{
    qsizetype count = 0;
    for (const BackedUpCommand &backedUp : commands) {
        const QString &digest = backedUp.digest;
        if (!isCommandDigest(digest)) {
            continue;
        }
        KnownCommand known
            = backedUp.isTextExact ? knownCommand(backedUp.command, digest) : KnownCommand();
        known.forms += backedUp.forms;
        known.isSecuritySensitive = known.isSecuritySensitive || backedUp.isSecuritySensitive;
        const bool hasPreview = !m_app.preview(digest).isEmpty();
        m_app.insert(digest, hasPreview ? QString() : backedUp.command, known);
        ++count;
    }
    m_app.persistAlwaysAllowState();
    refreshAlwaysAllowEntries();
    return count;
}

bool AlwaysAllowList::ensureAlwaysAllowEntryInAppList(const AlwaysAllowEntry &entry)
{
    const QString pattern = m_platform.value(entry.digest);
    return m_app.insert(entry.digest, pattern.isEmpty() ? entry.command : pattern,
                        knownCommand(pattern, entry.digest));
}

void AlwaysAllowList::loadBrackwenAlwaysAllowFromExecApprovalsFiles()
{
    const auto patterns = m_files.load();
    m_platform = patterns.commandsByDigest;
    m_platformFileCount = patterns.paths.size();
}

void AlwaysAllowList::persistAndReload()
{
    m_app.persistAlwaysAllowState();
    reload(AlwaysAllowScope::IncludeRegistered);
}

QList<AlwaysAllowEntry> AlwaysAllowList::merged(AlwaysAllowScope scope) const
{
    const bool isPlatformShown = scope == AlwaysAllowScope::IncludeRegistered;
    QSet<QString> digests = m_app.digests();
    if (isPlatformShown) {
        for (auto pattern = m_platform.keyBegin(); pattern != m_platform.keyEnd(); ++pattern) {
            digests.insert(*pattern);
        }
    }
    QList<AlwaysAllowEntry> entries;
    entries.reserve(digests.size());
    for (const QString &digest : std::as_const(digests)) {
        const auto pattern = m_platform.constFind(digest);
        const bool isPlatforms = pattern != m_platform.cend();
        const bool isOwn = m_app.digests().contains(digest);
        const QString command = isPlatforms && isPlatformShown ? *pattern : m_app.preview(digest);
        entries.append({.digest = digest,
                        .command = command,
                        .source = !isPlatforms ? AlwaysAllowSource::LocalOnly
                            : isOwn            ? AlwaysAllowSource::Both
                                               : AlwaysAllowSource::BrackwenOnly,
                        .isSecuritySensitive
                        = isSecuritySensitiveCommand(command) || m_app.isSecuritySensitive(digest),
                        .forms = m_app.forms(digest)});
    }
    return inOrder(entries);
}

void AlwaysAllowList::refreshAlwaysAllowEntries()
{
    const auto entries = merged(m_scope);
    if (std::exchange(m_entries, entries) != entries) {
        Q_EMIT entriesChanged();
    }
}

} // namespace bram
