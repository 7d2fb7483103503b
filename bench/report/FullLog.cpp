// SPDX-License-Identifier: Apache-2.0
#include "report/FullLog.h"

#include "audit/AuditLogStore.h"
#include "system/SystemLog.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace bram::bench
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::size_t fullFiles = 25;
/// The last file is almost full, too, when this much is there.
constexpr std::size_t fullBytes = 262'000'000;

class FatalLog final : public SystemLog
{
public:
    void write(QStringView line) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(line.toString()));
        std::exit(2);
    }
};

AuditEventRecord disconnect(int i)
{
    AuditEventRecord record;
    record.kind = AuditKind::gatewayDisconnected;
    record.source = u"gateway"_s;
    record.note = i % 2 == 0 ? u"socket closed (code 1006)"_s : u"unauthorized: token mismatch"_s;
    return record;
}

AuditEventRecord sampleRecord(int i)
{
    static const std::array previews {u"git …"_s, u"python3 …"_s, u"rm …"_s, u"cargo …"_s, u"ls"_s};
    if (i % 400 == 399) {
        return disconnect(i);
    }
    const int request = i / 3;
    AuditEventRecord record;
    record.approvalId = u"9b2f6c1e-4d7a-4c55-8f0e-%1"_s.arg(request, 12, 16, QChar(u'0'));
    record.risk = request % 5 == 0 ? u"high"_s : u"low"_s;
    if (i % 3 == 0) {
        record.kind = AuditKind::approvalRequested;
        record.agentId = u"agent-%1"_s.arg(request % 7);
        record.source = u"gateway"_s;
        record.commandPreview = previews[static_cast<std::size_t>(request) % previews.size()];
        return record;
    }
    record.kind = i % 3 == 1 ? AuditKind::approvalDecisionRequested : AuditKind::approvalResolved;
    record.decision = request % 3 == 0 ? u"deny"_s : u"allow-once"_s;
    record.source = u"desktop-notification-action"_s;
    record.actor = u"app-user"_s;
    record.note = request % 8 == 0
        ? u"decisionSource=\"desktop-notification-action\" actor=app-user 승인"_s
        : u"decisionSource=desktop-notification-action actor=app-user"_s;
    if (i % 3 == 2) {
        record.latencyMs = 1200 + i % 1000;
    }
    return record;
}
} // namespace

std::vector<AuditLogFile> writeFullLog(const QString &folder)
{
    constexpr int batch = 5'000;
    FatalLog log;
    AuditLogStore store(folder, {}, log);
    for (int next = 0;;) {
        for (const int end = next + batch; next < end; ++next) {
            AuditEventRecord record = sampleRecord(next);
            record.timestampMs = firstTimestampMs + 1000LL * next;
            store.append(record);
        }
        auto files = store.openLogFiles();
        std::size_t bytes = 0;
        for (const AuditLogFile &file : files) {
            bytes += file.size();
        }
        if (files.size() == fullFiles && bytes >= fullBytes) {
            return files;
        }
        if (files.size() > fullFiles) {
            std::fprintf(stderr, "%zu files of %zu bytes\n", files.size(), bytes);
            std::exit(2);
        }
    }
}

} // namespace bram::bench
