// SPDX-License-Identifier: Apache-2.0
#include "audit/WeeklyAuditReport.h"

#include "model/HonestDisplay.h"
#include "model/TextRules.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype maxCellCharacters = 96;
constexpr qsizetype shortIdCharacters = 8;
constexpr qsizetype maxNames = 10; ///< of agents, and of commands

/// A text in both languages.
struct Wording {
    QStringView english;
    QStringView korean;

    QString in(MenuLanguage language) const
    {
        return (language == MenuLanguage::Korean ? korean : english).toString();
    }
};

struct KindWording {
    QLatin1StringView kind;
    Wording words;
};

constexpr std::array kindWordings {
    KindWording {AuditKind::approvalRequested, {u"Approval requested", u"승인 요청"}},
    KindWording {AuditKind::approvalDecisionRequested, {u"Decision requested", u"결정 요청 전송"}},
    KindWording {AuditKind::approvalResolved, {u"Approval resolved", u"승인 처리됨"}},
    KindWording {AuditKind::approvalResolvedExternal, {u"Externally resolved", u"외부 처리됨"}},
    KindWording {AuditKind::approvalResolveFailed, {u"Resolve failed", u"처리 실패"}},
    KindWording {AuditKind::approvalExpired, {u"Approval expired", u"승인 만료"}},
    KindWording {AuditKind::approvalDecisionIgnoredDuplicate,
                 {u"Duplicate ignored", u"중복 결정 무시"}},
};

constexpr Wording noHighRisk {u"- No high-risk log", u"- 고위험 로그 없음"};
constexpr Wording noNames {u"- None", u"- 없음"};
constexpr Wording tableHead {
    u"| Time (Local) | Event | Approval ID | Agent | Decision | Source | Latency (ms) | Command "
    u"preview | Note |",
    u"| 시각(로컬) | 이벤트 | 승인 ID | 에이전트 | 결정 | 입력 경로 | 지연(ms) | 명령 프리뷰 | "
    u"비고 |"};
constexpr QStringView tableRule = u"| --- | --- | --- | --- | --- | --- | --- | --- | --- |";

/// A text from outside on one line, with everything that could mislead marked. Line breaks are harmless here.
QString readable(QString text)
{
    return honestLine(text.replace(u'\n', u' ')).text;
}

/// Between backticks, and more of them than follow each other in the text, which would end it otherwise.
QString codeSpan(const QString &text)
{
    qsizetype longest = 0;
    qsizetype current = 0;
    for (const QChar character : text) {
        current = character == u'`' ? current + 1 : 0;
        longest = std::max(longest, current);
    }
    const QString fence(longest + 1, u'`');
    const QString gap = longest > 0 ? u" "_s : QString();
    return fence + gap + text + gap + fence;
}

class ReportWriter
{
public:
    explicit ReportWriter(MenuLanguage language)
        : m_language(language)
    {
    }

    QString text() const { return m_lines.join(u'\n') + u'\n'; }

    void line(const QString &text) { m_lines.append(text); }
    void line(const Wording &words) { m_lines.append(words.in(m_language)); }
    void title(const Wording &words) { m_lines.append(u"# "_s + words.in(m_language)); }
    void section(const Wording &words)
    {
        m_lines += {QString(), u"## "_s + words.in(m_language), QString()};
    }
    void value(const Wording &label, const QString &value)
    {
        m_lines.append(u"- "_s + label.in(m_language) + u": "_s + value);
    }
    void value(const Wording &label, qint64 count) { value(label, QString::number(count)); }

    void names(const QList<WeeklyAuditSummary::NamedCount> &counts)
    {
        for (const auto &[name, count] : counts.first(std::min(counts.size(), maxNames))) {
            m_lines.append(u"- %1 : %2"_s.arg(codeSpan(readable(name)), QString::number(count)));
        }
        if (counts.isEmpty()) {
            line(noNames);
        }
    }

    void row(const AuditEventRecord &record)
    {
        const auto shown = [](const std::optional<QString> &text) {
            return text ? std::optional(readable(*text)) : std::nullopt;
        };
        const std::array<std::optional<QString>, 9> cells {
            auditTimestampText(record.timestampMs),
            readable(auditKindText(record.kind, m_language)),
            record.approvalId
                ? std::optional(readable(firstCharacters(*record.approvalId, shortIdCharacters)))
                : std::nullopt,
            shown(record.agentId),
            shown(record.decision),
            shown(record.source),
            record.latencyMs ? std::optional(QString::number(*record.latencyMs)) : std::nullopt,
            shown(record.commandPreview),
            shown(record.note),
        };
        QStringList texts;
        for (const auto &cell : cells) {
            texts.append(markdownTableCell(cell));
        }
        m_lines.append(u"| "_s + texts.join(u" | "_s) + u" |"_s);
    }

private:
    const MenuLanguage m_language;
    QStringList m_lines;
};

void writeHead(ReportWriter &report, const WeeklyAuditSummary &summary, qint64 generatedAtMs,
               MenuLanguage language)
{
    report.title({u"BRAM Weekly Audit Report", u"BRAM 주간 감사 리포트"});
    report.line(QString());
    report.value({u"Generated at", u"생성 시각"}, auditTimestampText(generatedAtMs));
    report.value({u"Window", u"기간"}, Wording {u"7 days", u"7일"}.in(language));
    report.value({u"Total events", u"전체 이벤트"}, summary.totalEvents);
}

void writeCounts(ReportWriter &report, const WeeklyAuditSummary &summary)
{
    report.section({u"Approval Flow", u"승인 흐름"});
    report.value({u"Requested", u"요청"}, summary.requested);
    report.value({u"Resolved (total)", u"처리(전체)"}, summary.resolved);
    report.value({u"Externally resolved", u"외부 처리"}, summary.externalResolved);
    report.value({u"Unknown approval id", u"알 수 없는 승인 ID"}, summary.unknown);
    report.value({u"Allow once", u"한 번 허용"}, summary.allowOnce);
    report.value({u"Always allow", u"항상 허용"}, summary.allowAlways);
    report.value({u"Deny", u"거부"}, summary.deny);
    report.value({u"High-risk requested", u"고위험 요청"}, summary.highRiskRequested);
    report.value({u"High-risk resolved", u"고위험 처리"}, summary.highRiskResolved);

    report.section({u"Connectivity", u"연결 상태"});
    report.value({u"Disconnects", u"연결 끊김"}, summary.disconnects);
    report.value({u"Auth-failure suspected", u"토큰 인증 실패 추정"},
                 summary.authFailureDisconnects);

    report.section({u"Average Resolution Latency", u"평균 처리 지연"});
    report.value({u"Average", u"평균"}, summary.averageLatencyText());
}
} // namespace

QString auditTimestampText(qint64 ms)
{
    return QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(ms), u"yyyy-MM-dd HH:mm:ss");
}

QString markdownTableCell(const std::optional<QString> &text)
{
    if (!text || text->trimmed().isEmpty()) {
        return u"-"_s;
    }
    QString cell = *text;
    cell.replace(u'\n', u' ').replace(u"|"_s, u"\\|"_s);
    const QString beginning = firstCharacters(cell, maxCellCharacters);
    return beginning.size() == cell.size() ? cell : QString(beginning + u'…');
}

QString auditKindText(const QString &kind, MenuLanguage language)
{
    const auto known = std::ranges::find_if(
        kindWordings, [&kind](const KindWording &wording) { return kind == wording.kind; });
    return known == kindWordings.end() ? kind : known->words.in(language);
}

QString weeklyAuditReportMarkdown(const WeeklyAuditFindings &findings, qint64 generatedAtMs,
                                  MenuLanguage language)
{
    const WeeklyAuditSummary &summary = findings.summary;
    ReportWriter report(language);
    writeHead(report, summary, generatedAtMs, language);
    writeCounts(report, summary);

    report.section({u"Anomaly Signals", u"이상 징후"});
    for (const QString &signal : anomalySignalLines(summary, language)) {
        report.line(u"- "_s + signal);
    }
    report.section({u"High-Risk Events (7 days, newest first)", u"고위험 이벤트 (7일, 최신순)"});
    if (findings.highRiskRows.isEmpty()) {
        report.line(noHighRisk);
    } else {
        report.line(tableHead);
        report.line(tableRule.toString());
        for (const AuditEventRecord &record : findings.highRiskRows) {
            report.row(record);
        }
    }
    report.section({u"Top Agents", u"상위 에이전트"});
    report.names(summary.topAgents());
    report.section({u"Top Command Previews", u"상위 명령 프리뷰"});
    report.names(summary.topCommands());
    return report.text();
}

std::optional<QString> weeklyAuditReport(const std::vector<AuditLogFile> &files, qint64 nowMs,
                                         MenuLanguage language, AggregationProgress &progress,
                                         SystemLog &log)
{
    const AggregationOptions options {.sinceMs = nowMs - weeklyAuditWindowMs,
                                      .maxRows = weeklyAuditMaxRows};
    const auto findings = aggregateAuditLog(files, options, progress, log);
    if (!findings) {
        return std::nullopt;
    }
    return weeklyAuditReportMarkdown(*findings, nowMs, language);
}

} // namespace bram
