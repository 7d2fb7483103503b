// SPDX-License-Identifier: Apache-2.0
#include "audit/WeeklyAuditSummary.h"

#include "audit/AuditRecordCodec.h"

#include <algorithm>
#include <cmath>
#include <ranges>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 manyUnknown = 5;
constexpr qint64 decisionsForRatio = 10;
constexpr double highDenyRatio = 0.4;
constexpr qint64 manyHighRisk = 3;

bool is(std::string_view kind, QLatin1StringView name)
{
    return kind == std::string_view(name.data(), static_cast<std::size_t>(name.size()));
}

bool speaksOfAuthentication(std::string_view note)
{
    const QString lower = auditText(note).toLower();
    return lower.contains("unauthorized"_L1) || lower.contains("token"_L1);
}

QList<WeeklyAuditSummary::NamedCount> highestFirst(const QHash<QString, qint64> &counts)
{
    QList<WeeklyAuditSummary::NamedCount> list;
    list.reserve(counts.size());
    for (const auto &[name, count] : counts.asKeyValueRange()) {
        list.append({name, count});
    }
    std::ranges::sort(list, [](const auto &left, const auto &right) {
        return left.second != right.second ? left.second > right.second : left.first < right.first;
    });
    return list;
}

template<typename Counts>
QHash<QString, qint64> named(const Counts &counts)
{
    QHash<QString, qint64> result;
    result.reserve(static_cast<qsizetype>(counts.size()));
    for (const auto &[name, count] : counts) {
        result.insert(auditText(name), count);
    }
    return result;
}
} // namespace

QString WeeklyAuditSummary::averageLatencyText() const
{
    return latencySamples < 1 ? u"n/a"_s
                              : QString::number(latencyTotalMs / latencySamples) + u" ms"_s;
}

QList<WeeklyAuditSummary::NamedCount> WeeklyAuditSummary::topAgents() const
{
    return highestFirst(agentCounts);
}

QList<WeeklyAuditSummary::NamedCount> WeeklyAuditSummary::topCommands() const
{
    return highestFirst(commandCounts);
}

void WeeklyAuditFold::add(const AuditEventView &event)
{
    ++m_counters.totalEvents;
    if (is(event.kind, AuditKind::approvalRequested)) {
        addRequested(event);
    } else if (is(event.kind, AuditKind::approvalResolved)) {
        addResolved(event);
    } else if (is(event.kind, AuditKind::approvalResolvedExternal)) {
        ++m_counters.externalResolved;
    } else if (is(event.kind, AuditKind::approvalUnknownId)) {
        ++m_counters.unknown;
    } else if (is(event.kind, AuditKind::gatewayDisconnected)) {
        ++m_counters.disconnects;
        if (event.note && speaksOfAuthentication(*event.note)) {
            ++m_counters.authFailureDisconnects;
        }
    } else if (is(event.kind, AuditKind::gatewayAuthFailure)) {
        ++m_counters.authFailureDisconnects;
    }
}

void WeeklyAuditFold::addRequested(const AuditEventView &event)
{
    ++m_counters.requested;
    if (event.isHighRisk()) {
        ++m_counters.highRiskRequested;
    }
    count(m_agents, event.agentId);
    count(m_commands, event.commandPreview);
}

void WeeklyAuditFold::addResolved(const AuditEventView &event)
{
    ++m_counters.resolved;
    if (event.decision == "allow-once") {
        ++m_counters.allowOnce;
    } else if (event.decision == "allow-always") {
        ++m_counters.allowAlways;
    } else if (event.decision == "deny") {
        ++m_counters.deny;
    }
    if (event.isHighRisk()) {
        ++m_counters.highRiskResolved;
    }
    if (event.latencyMs) {
        // A file that says anything must not make a signed sum overflow.
        m_counters.latencyTotalMs
            = static_cast<qint64>(static_cast<quint64>(m_counters.latencyTotalMs)
                                  + static_cast<quint64>(*event.latencyMs));
        ++m_counters.latencySamples;
    }
}

void WeeklyAuditFold::count(Counts &counts, const std::optional<std::string_view> &name)
{
    if (!name) {
        return;
    }
    const auto found = counts.find(*name);
    if (found != counts.end()) {
        ++found->second;
    } else {
        counts.emplace(*name, 1);
    }
}

void WeeklyAuditFold::add(const WeeklyAuditFold &other)
{
    const WeeklyAuditSummary &more = other.m_counters;
    for (const auto member :
         {&WeeklyAuditSummary::totalEvents, &WeeklyAuditSummary::requested,
          &WeeklyAuditSummary::resolved, &WeeklyAuditSummary::externalResolved,
          &WeeklyAuditSummary::unknown, &WeeklyAuditSummary::allowOnce,
          &WeeklyAuditSummary::allowAlways, &WeeklyAuditSummary::deny,
          &WeeklyAuditSummary::highRiskRequested, &WeeklyAuditSummary::highRiskResolved,
          &WeeklyAuditSummary::disconnects, &WeeklyAuditSummary::authFailureDisconnects,
          &WeeklyAuditSummary::latencySamples}) {
        m_counters.*member += more.*member;
    }
    m_counters.latencyTotalMs = static_cast<qint64>(static_cast<quint64>(m_counters.latencyTotalMs)
                                                    + static_cast<quint64>(more.latencyTotalMs));
    for (const auto &[name, count] : other.m_agents) {
        m_agents[name] += count;
    }
    for (const auto &[name, count] : other.m_commands) {
        m_commands[name] += count;
    }
}

WeeklyAuditSummary WeeklyAuditFold::summary() const
{
    WeeklyAuditSummary summary = m_counters;
    summary.agentCounts = named(m_agents);
    summary.commandCounts = named(m_commands);
    return summary;
}

WeeklyAuditSummary buildWeeklyAuditSummary(const QList<AuditEventRecord> &records)
{
    WeeklyAuditFold fold;
    for (const AuditEventRecord &record : records) {
        if (record.source != exerciseSource) {
            fold.add(AuditEventBytes(record).view());
        }
    }
    return fold.summary();
}

QStringList anomalySignalLines(const WeeklyAuditSummary &summary, MenuLanguage language)
{
    const bool korean = language == MenuLanguage::Korean;
    QStringList lines;
    const auto signal = [&](const QString &english, const QString &inKorean) {
        lines.append(korean ? inKorean : english);
    };
    if (summary.authFailureDisconnects >= 1) {
        const QString count = QString::number(summary.authFailureDisconnects);
        signal(u"Auth-failure suspected connectivity issues: "_s + count,
               u"인증 실패 추정 연결 이슈 "_s + count + u"건"_s);
    }
    if (summary.unknown >= manyUnknown) {
        const QString count = QString::number(summary.unknown);
        signal(u"Unknown approval-id events increased ("_s + count + u')',
               u"알수없는 승인 ID 이벤트 증가 ("_s + count + u"건)"_s);
    }
    const qint64 decisions = summary.allowOnce + summary.allowAlways + summary.deny;
    const double denyRatio
        = decisions == 0 ? 0 : static_cast<double>(summary.deny) / static_cast<double>(decisions);
    if (decisions >= decisionsForRatio && denyRatio >= highDenyRatio) {
        const QString percent = QString::number(std::lround(denyRatio * 100));
        signal(u"High deny ratio ("_s + percent + u"%)"_s,
               u"거부 비율 높음 ("_s + percent + u"%)"_s);
    }
    if (summary.highRiskRequested >= manyHighRisk
        && summary.highRiskResolved < summary.highRiskRequested) {
        const QString requested = QString::number(summary.highRiskRequested);
        const QString resolved = QString::number(summary.highRiskResolved);
        signal(u"High-risk requests exceed resolutions (requested %1 / resolved %2)"_s.arg(
                   requested, resolved),
               u"고위험 요청이 해결보다 많음 (요청 %1 / 해결 %2)"_s.arg(requested, resolved));
    }
    if (lines.isEmpty()) {
        signal(u"No major anomaly signal detected"_s, u"주요 이상 징후 없음"_s);
    }
    return lines;
}

QList<AuditEventRecord> highRiskAuditRows(const QList<AuditEventRecord> &records, qsizetype maxRows)
{
    QList<AuditEventRecord> rows;
    for (const AuditEventRecord &record : records | std::views::reverse) {
        if (record.risk == u"high"_s && record.source != exerciseSource) {
            rows.append(record);
        }
    }
    std::ranges::stable_sort(rows, std::greater(), &AuditEventRecord::timestampMs);
    rows.resize(std::clamp<qsizetype>(maxRows, 0, rows.size()));
    return rows;
}

} // namespace bram
