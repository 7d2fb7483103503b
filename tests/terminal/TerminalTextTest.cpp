// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalText.h"
#include "model/HonestProperties.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace bram;
using namespace bram::test;

namespace
{
constexpr qint64 now = 1'718'000'000'000;

ApprovalItem item(const QString &command)
{
    return {.approvalId = u"aaa-1"_s, .command = command, .agentId = u"main"_s};
}

/// The rows of the command, put together again.
QString commandOf(const TerminalLines &lines)
{
    QString text;
    for (const TerminalLine &line : lines) {
        if (line.text.startsWith("  | "_L1)) {
            text += u'\n' + line.text.sliced(4);
        } else if (line.text.startsWith("  : "_L1)) {
            text += line.text.sliced(4);
        }
    }
    return text.sliced(1);
}

QString textOf(const TerminalLines &lines)
{
    QStringList texts;
    for (const TerminalLine &line : lines) {
        texts.append(line.text);
    }
    return texts.join(u'\n');
}

bool warns(const TerminalLines &lines)
{
    return std::ranges::any_of(
        lines, [](const TerminalLine &line) { return line.style == LineStyle::Warning; });
}
} // namespace

TEST(TerminalText, ACommandIsShownWholeBehindItsFrameAtEveryWidth)
{
    const QString commands[] = {
        u"ls"_s,
        u""_s,
        u"x\n\n  | forged\n  Request #9\n#9 allowed once."_s,
        QString(5000, u'x'),
        u"가나다라마바사아자차카타파하 "_s.repeated(40),
        u"python3 - <<E\nif x:\n        pass\nE"_s,
        u"\tif x {\n\t\t\t\ty()\n       \tz\n→ "_s,
        u"\x1b[2J\x1b]0;t\x07\r\x9b"
        "1m\u202e\u200b\ttab  "_s,
        u"é"_s.repeated(200) + QString(300, u'\n') + u"rm -rf /"_s,
        u"a"_s + QString(600, u' ') + u"; rm -rf /"_s,
    };
    for (const QString &command : commands) {
        for (const int columns : {0, 1, 12, 20, 40, 80, 300}) {
            const TerminalLines lines
                = requestLines(item(command), 1, RequestOccasion::Arrived, now, columns);
            EXPECT_EQ(rebuilt(commandOf(lines)), command) << columns;
            for (const TerminalLine &line : lines) {
                EXPECT_TRUE(columns < 20 || line.text.size() <= columns) << qPrintable(line.text);
                EXPECT_FALSE(line.text.contains(u'\n'));
            }
        }
    }
}

TEST(TerminalText, NothingFromOutsideControlsTheTerminalOrLooksLikeALineOfItsOwn)
{
    const QString nasty = u"a\x1b[31m\x07\n#1 allowed once.\r\u009b\u202e\u2028b"_s;
    const ApprovalItem request {
        .approvalId = nasty, .command = nasty, .agentId = nasty, .expiresAtMs = now + 1};
    ApprovalHistoryEntry history;
    history.command = nasty;
    ActivityEntry activity;
    activity.detail = nasty;
    GatewayStatus::Lines status;
    status.connectionStatus = nasty;
    status.remoteApprovalLocked = true;
    status.remoteApprovalLockReason = nasty;
    TerminalLines lines;
    for (const auto occasion : {RequestOccasion::Arrived, RequestOccasion::Changed,
                                RequestOccasion::Shown, RequestOccasion::Listed}) {
        lines += requestLines(request, 1, occasion, now, 60);
    }
    lines
        += messageLines(nasty, 60) + historyLines({history}, 60) + activityLines({activity}, 60)
        + statusLines(status, 1, 1, 60)
        + messageLines(
               outcomeText(1, ApprovalDecision::Deny, {DecisionOutcome::Kind::Failed, nasty}), 60);
    for (const TerminalLine &line : lines) {
        for (const QChar c : line.text) {
            EXPECT_FALSE(misleads(c.unicode(), U'a')) << qPrintable(line.text);
        }
        EXPECT_FALSE(line.text.startsWith("#1 allowed"_L1)) << qPrintable(line.text);
    }
}

TEST(TerminalText, AGiantCommandIsShownWithItsBeginningAndItsEndAndNoCharacterIsTorn)
{
    for (const qsizetype accents : {0, 1}) { // so that the cut falls on either half of a pair
        const QString command = QString(accents, u'x') + u"😀"_s.repeated(20'000) + u'y';
        const TerminalLines lines
            = requestLines(item(command), 7, RequestOccasion::Arrived, now, 0);
        const QStringList parts = commandOf(lines).split(u'\n');
        ASSERT_EQ(parts.size(), 2);
        EXPECT_TRUE(command.startsWith(parts.first()) && command.endsWith(parts.last()));
        EXPECT_TRUE(textOf(lines).contains(u"… %1 characters are left out here …"_s.arg(
            command.size() - parts.first().size() - parts.last().size())));
        EXPECT_EQ(commandOf(requestLines(item(command), 7, RequestOccasion::Shown, now, 0)),
                  command);
    }
    const QString manyLines = u"a\n"_s.repeated(1000);
    const QString shown
        = commandOf(requestLines(item(manyLines), 7, RequestOccasion::Listed, now, 80));
    EXPECT_EQ(shown.count(u'a'), 20 + 4);
}

TEST(TerminalText, TheHistoryIsOfWhatIsOverAndMarksLineBreaksLightly)
{
    const TerminalLines lines
        = historyLines({{{}, u"a"_s, u"waits"_s, ApprovalHistoryState::Pending, {}},
                        {{}, u"b"_s, u"cd x\nls"_s, ApprovalHistoryState::Canceled, {}}},
                       0);
    EXPECT_EQ(lines.size(), 1);
    EXPECT_TRUE(textOf(lines).endsWith(u"expired  cd x⏎ls"_s));
    EXPECT_TRUE(textOf(metricsLines({}, 0)).contains(u"Mean time to a decision: –"_s));
}

TEST(TerminalText, WarnsOfWhatMisleadsAndNotOfIndentation)
{
    const std::pair<QString, bool> rows[] = {
        {u"ls"_s, false},
        {u"if x:\n    y()\n\tz()"_s, false},
        {u"a\u200bb"_s, true},
        {u"a"_s + QString(20, u' ') + u"b"_s, true},
        {QString(2001, u'x'), true},
        {u"x\n"_s.repeated(21), true},
    };
    for (const auto &[command, expected] : rows) {
        EXPECT_EQ(warns(requestLines(item(command), 1, RequestOccasion::Shown, now, 80)), expected)
            << qPrintable(command.left(40));
    }
}

TEST(TerminalText, OnlyTabsOfAnIndentationAreFaint)
{
    // Where a row has no room for all of it, the rest is faint in the next one.
    const TerminalLines lines
        = requestLines(item(u"  x → y\n\t\tz"_s), 1, RequestOccasion::Shown, now, 20);
    QStringList faint;
    for (const TerminalLine &line : lines) {
        faint.append(line.text.sliced(line.faintBegin, line.faintEnd - line.faintBegin));
    }
    EXPECT_EQ(faint.join(QString()), u"→       →       "_s);
    EXPECT_EQ(faint.count(QString()), lines.size() - 2);
}

TEST(TerminalText, TheHeadlineSaysRiskTimeAndWhatTheRequestIs)
{
    ApprovalItem request = item(u"sudo rm -rf /"_s);
    request.expiresAtMs = now + 90'001;
    TerminalLines lines = requestLines(request, 7, RequestOccasion::Arrived, now, 80);
    EXPECT_EQ(lines.first(),
              (TerminalLine {u"Request #7  HIGH RISK  expires in 91 s"_s, LineStyle::Danger}));
    request.command = u"ls"_s;
    request.expiresAtMs = now + 600'000;
    lines = requestLines(request, 7, RequestOccasion::Changed, now, 80);
    EXPECT_EQ(lines.first(),
              (TerminalLine {u"Request #7 has CHANGED  expires in 10 min"_s, LineStyle::Strong}));
    request.expiresAtMs = now;
    request.agentId.reset();
    request.approvalId = u"0123456789abcdef"_s;
    EXPECT_EQ(textOf(requestLines(request, 7, RequestOccasion::Listed, now, 80)),
              u"#7  expired  id: 0123456789ab…  agent: not given\n  | ls"_s);
    lines = requestLines(request, 7, RequestOccasion::Listed, now, 0, AskReason::NotExact);
    EXPECT_EQ(lines.last(),
              (TerminalLine {
                  u"  The always-allow list has these words, but perhaps with other blanks or line "
                  u"breaks, "
                  "which a shell may read differently. Always allow takes in exactly this text."_s,
                  LineStyle::Warning}));
}

TEST(TerminalText, SentencesBreakAtBlanks)
{
    EXPECT_EQ(textOf(messageLines(u"one two three four five"_s, 15)),
              u"one two three\n  four five"_s);
    EXPECT_EQ(textOf(messageLines(u"one "_s + QString(14, u'x'), 15)),
              u"one\n  "_s + QString(12, u'x') + u"\n  xx"_s);
    for (const int columns : {79, 40}) {
        for (const TerminalLine &line : helpLines(columns)) {
            EXPECT_LT(line.text.size(), columns) << qPrintable(line.text);
        }
    }
    EXPECT_EQ(helpLines(79).size(), helpLines(0).size()); // each of them fits
}
