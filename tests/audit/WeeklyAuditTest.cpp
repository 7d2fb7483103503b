// SPDX-License-Identifier: Apache-2.0
#include "audit/WeeklyAuditReport.h"
#include "audit/WeeklyAuditSummary.h"

#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace bram::test
{

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::HasSubstr;

namespace
{
AuditEventRecord event(QLatin1StringView kind, const QString &decision = {},
                       const QString &risk = {})
{
    AuditEventRecord record {.timestampMs = 1, .kind = kind};
    if (!decision.isEmpty()) {
        record.decision = decision;
    }
    if (!risk.isEmpty()) {
        record.risk = risk;
    }
    return record;
}

QList<AuditEventRecord> times(qsizetype count, const AuditEventRecord &record)
{
    return QList<AuditEventRecord>(count, record);
}

QStringList signalsOf(const QList<AuditEventRecord> &records,
                      MenuLanguage language = MenuLanguage::English)
{
    return anomalySignalLines(buildWeeklyAuditSummary(records), language);
}
const QStringList noSignal {u"No major anomaly signal detected"_s};
} // namespace

TEST(WeeklyAudit, countsEachKindForItself)
{
    QList<AuditEventRecord> records {
        event(AuditKind::approvalRequested, {}, u"high"_s),
        event(AuditKind::approvalRequested, {}, u"low"_s),
        event(AuditKind::approvalResolved, u"allow-once"_s, u"high"_s),
        event(AuditKind::approvalResolved, u"allow-always"_s),
        event(AuditKind::approvalResolved, u"deny"_s),
        event(AuditKind::approvalResolved, u"something else"_s),
        event(AuditKind::approvalDecisionRequested, u"deny"_s, u"high"_s),
        event(AuditKind::approvalResolvedExternal),
        event(AuditKind::approvalUnknownId),
        event(AuditKind::gatewayDisconnected),
        event(AuditKind::gatewayDisconnected),
        event(AuditKind::gatewayDisconnected),
        event(AuditKind::gatewayAuthFailure),
        event("a kind of another release"_L1),
    };
    auto exercise = event(AuditKind::approvalRequested, {}, u"high"_s);
    exercise.source = exerciseSource;
    records.append(exercise);
    records[0].agentId = u"main"_s;
    records[0].commandPreview = u"git …"_s;
    records[2].latencyMs = 100;
    records[3].latencyMs = 201;
    records[7].latencyMs = 9000; // not ours
    records[10].note = u"Unauthorized"_s;
    records[11].note = u"the TOKEN is old"_s;
    const WeeklyAuditSummary expected {.totalEvents = 14,
                                       .requested = 2,
                                       .resolved = 4,
                                       .externalResolved = 1,
                                       .unknown = 1,
                                       .allowOnce = 1,
                                       .allowAlways = 1,
                                       .deny = 1,
                                       .highRiskRequested = 1,
                                       .highRiskResolved = 1,
                                       .disconnects = 3,
                                       .authFailureDisconnects = 3,
                                       .latencyTotalMs = 301,
                                       .latencySamples = 2,
                                       .agentCounts = {{u"main"_s, 1}},
                                       .commandCounts = {{u"git …"_s, 1}}};
    const WeeklyAuditSummary summary = buildWeeklyAuditSummary(records);
    EXPECT_EQ(summary, expected);
    EXPECT_EQ(summary.averageLatencyText(), u"150 ms"_s);
    EXPECT_EQ(WeeklyAuditSummary().averageLatencyText(), u"n/a"_s);
}

TEST(WeeklyAudit, namesAreSortedByCountAndThenByName)
{
    const WeeklyAuditSummary summary {.agentCounts
                                      = {{u"b"_s, 2}, {u"a"_s, 2}, {u"c"_s, 5}, {u"B"_s, 2}}};
    QStringList names;
    for (const auto &[name, count] : summary.topAgents()) {
        names.append(name);
    }
    EXPECT_EQ(names, QStringList({u"c"_s, u"B"_s, u"a"_s, u"b"_s}));
}

TEST(WeeklyAudit, signalsAppearFromTheirLimitsOn)
{
    const auto unknown = event(AuditKind::approvalUnknownId);
    EXPECT_EQ(signalsOf({}), noSignal);
    EXPECT_EQ(signalsOf({}, MenuLanguage::Korean), QStringList {u"주요 이상 징후 없음"_s});
    EXPECT_EQ(signalsOf(times(4, unknown)), noSignal);
    EXPECT_EQ(signalsOf(times(5, unknown)),
              QStringList {u"Unknown approval-id events increased (5)"_s});

    const auto deny = event(AuditKind::approvalResolved, u"deny"_s);
    const auto allow = event(AuditKind::approvalResolved, u"allow-once"_s);
    EXPECT_EQ(signalsOf(times(9, deny)), noSignal);
    EXPECT_EQ(signalsOf(times(4, deny) + times(6, allow)),
              QStringList {u"High deny ratio (40%)"_s});
    EXPECT_EQ(signalsOf(times(3, deny) + times(7, allow)), noSignal);

    const auto asked = event(AuditKind::approvalRequested, {}, u"high"_s);
    const auto done = event(AuditKind::approvalResolved, {}, u"high"_s);
    EXPECT_EQ(signalsOf(times(2, asked)), noSignal);
    EXPECT_EQ(signalsOf(times(3, asked) + times(3, done)), noSignal);
    EXPECT_EQ(signalsOf(times(3, asked) + times(2, done)),
              QStringList {u"High-risk requests exceed resolutions (requested 3 / resolved 2)"_s});

    const auto failure = event(AuditKind::gatewayAuthFailure);
    EXPECT_EQ(signalsOf(times(1, failure) + times(5, unknown) + times(10, deny) + times(3, asked),
                        MenuLanguage::Korean),
              QStringList({u"인증 실패 추정 연결 이슈 1건"_s,
                           u"알수없는 승인 ID 이벤트 증가 (5건)"_s, u"거부 비율 높음 (100%)"_s,
                           u"고위험 요청이 해결보다 많음 (요청 3 / 해결 0)"_s}));
}

TEST(WeeklyAudit, rowsOfHighRiskAreTheNewest)
{
    QList<AuditEventRecord> records;
    for (const auto &[time, note] : std::initializer_list<std::pair<qint64, QString>> {
             {5, u"five"_s}, {9, u"nine"_s}, {9, u"nine, later"_s}, {7, u"seven"_s}}) {
        records.append(event(AuditKind::approvalResolved, {}, u"high"_s));
        records.last().timestampMs = time;
        records.last().note = note;
    }
    records.append(event(AuditKind::approvalResolved, {}, u"low"_s));
    records.last().timestampMs = 100;
    const auto notes = [&records](qsizetype maxRows) {
        QStringList result;
        for (const auto &row : highRiskAuditRows(records, maxRows)) {
            result.append(*row.note);
        }
        return result;
    };
    EXPECT_EQ(notes(3), QStringList({u"nine, later"_s, u"nine"_s, u"seven"_s}));
    EXPECT_EQ(notes(10).size(), 4);
    EXPECT_TRUE(notes(0).isEmpty());
}

TEST(WeeklyAudit, cellsHoldOneShortLine)
{
    EXPECT_EQ(markdownTableCell({}), u"-"_s);
    EXPECT_EQ(markdownTableCell(u" \n\t"_s), u"-"_s);
    EXPECT_EQ(markdownTableCell(u"a\nb | c"_s), u"a b \\| c"_s);
    EXPECT_EQ(markdownTableCell(QString(96, u'x')), QString(96, u'x'));
    EXPECT_EQ(markdownTableCell(QString(100, u'x')), QString(96, u'x') + u'…');
    EXPECT_EQ(markdownTableCell(u"😀"_s.repeated(97)), u"😀"_s.repeated(96) + u'…');
}

TEST(WeeklyAudit, anEmptyLogGivesAWholeReport)
{
    const std::string report
        = weeklyAuditReportMarkdown({}, 0, MenuLanguage::English).toStdString();
    for (const char *line :
         {"# BRAM Weekly Audit Report\n", "Generated at: 1970-01-01 ", "Window: 7 days\n",
          "Total events: 0\n", "Approval Flow\n", "Resolved (total): 0\n",
          "Unknown approval id: 0\n", "Auth-failure suspected: 0\n", "Average: n/a\n",
          "- No major anomaly signal detected\n", "- No high-risk log\n", "Top Agents\n",
          "Top Command Previews\n"}) {
        EXPECT_THAT(report, HasSubstr(line));
    }
    EXPECT_FALSE(QString::fromStdString(report).contains(u'|'));
}

TEST(WeeklyAudit, textFromOutsideCannotChangeTheReport)
{
    WeeklyAuditFindings findings {.summary = {.agentCounts = {{u"a`\n# forged"_s, 3}}}};
    auto row = event(AuditKind::approvalDecisionIgnoredDuplicate, u"deny"_s, u"high"_s);
    row.approvalId = u"0123456789abcdef"_s;
    row.agentId = u"left\u202Eright"_s;
    row.commandPreview = u"a|b …"_s;
    row.note = u"one\ntwo"_s;
    findings.highRiskRows = {row};
    const QString report = weeklyAuditReportMarkdown(findings, 0, MenuLanguage::Korean);
    const QString time = auditTimestampText(1);
    EXPECT_TRUE(QRegularExpression(u"^1970-01-01 \\d\\d:\\d\\d:00$"_s).match(time).hasMatch()
                || time.startsWith(u"1969-12-31"_s));
    const QStringList lines = report.split(u'\n');
    EXPECT_TRUE(lines.contains(u"# BRAM 주간 감사 리포트"_s));
    EXPECT_TRUE(lines.contains(u"| 시각(로컬) | 이벤트 | 승인 ID | 에이전트 | 결정 | 입력 경로 | "
                               u"지연(ms) | 명령 프리뷰 | 비고 |"_s));
    EXPECT_TRUE(lines.contains(QString(
        u"| "_s + time
        + u" | 중복 결정 무시 | 01234567 | left⟨U+202E⟩right | deny | - | - | a\\|b … | one two |"_s)))
        << report.toStdString();
    EXPECT_TRUE(lines.contains(u"- `` a` # forged `` : 3"_s)) << report.toStdString();
}

} // namespace bram::test
