// SPDX-License-Identifier: Apache-2.0
#include "audit/AutomaticAnswers.h"

#include "audit/AuditLineReader.h"
#include "audit/AuditLineScanner.h"
#include "system/SystemLog.h"

#include <QFile>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::string_view noteBeginning = "auto-allow entry=";
/// As good as the whole digest, for telling the entries of one list apart.
constexpr qsizetype digitsOnRecord = 16;

/// The beginning of the digest, for a record of an automatic answer.
std::optional<std::string_view> entryOf(const AuditEventView &event)
{
    if (event.kind != std::string_view(AuditKind::approvalResolved.data()) || !event.note) {
        return std::nullopt;
    }
    const auto at = event.note->rfind(noteBeginning);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const auto digits = event.note->substr(at + noteBeginning.size());
    return digits.size() == digitsOnRecord ? std::optional(digits) : std::nullopt;
}
} // namespace

QString automaticAnswerNote(const QString &digest)
{
    return QLatin1StringView(noteBeginning) + digest.first(std::min(digitsOnRecord, digest.size()));
}

std::optional<qint64> AutomaticAnswers::lastAnswerMs(const QString &digest) const
{
    const auto found = m_lastAnswerMs.constFind(digest.left(digitsOnRecord).toLatin1());
    return found == m_lastAnswerMs.cend() ? std::nullopt : std::optional(*found);
}

std::optional<AutomaticAnswers> AutomaticAnswers::find(const std::vector<AuditLogFile> &files,
                                                       const std::atomic<bool> &isCancelled,
                                                       SystemLog &log)
{
    AutomaticAnswers result;
    AuditLineReader reader;
    AuditLineScanner scanner;
    for (const AuditLogFile &file : files) {
        bool isFirstRecord = true;
        const auto consume = [&](std::string_view line) {
            // Few lines are of interest, and finding that out is much quicker than reading them.
            const bool isCandidate = line.find(noteBeginning) != std::string_view::npos;
            const AuditEventView *event
                = isCandidate || isFirstRecord ? scanner.scan(line) : nullptr;
            if (event == nullptr) {
                return;
            }
            if (std::exchange(isFirstRecord, false)) {
                result.m_logSinceMs = std::min(result.m_logSinceMs.value_or(event->timestampMs),
                                               event->timestampMs);
            }
            if (const auto entry = entryOf(*event)) {
                qint64 &last = result.m_lastAnswerMs[QByteArray(entry->data(), digitsOnRecord)];
                last = std::max(last, event->timestampMs);
            }
        };
        const auto goOn = [&](std::size_t) { return !isCancelled; };
        if (const auto read = reader.read(file, consume, goOn); !read) {
            logAuditFailure(
                log, u"read",
                u"%1: %2"_s.arg(QFile::decodeName(file.path().c_str()), read.error().message));
        }
        if (isCancelled) {
            return std::nullopt;
        }
    }
    return result;
}

} // namespace bram
