// SPDX-License-Identifier: Apache-2.0
#include "audit/WeeklyAuditAggregation.h"
#include "audit/AuditFixture.h"
#include "audit/AuditLineReader.h"
#include "audit/AuditLineScanner.h"

#include <QRandomGenerator>

#include <algorithm>
#include <string>
#include <vector>

namespace bram::test
{

using namespace Qt::StringLiterals;

namespace
{
/// What the scanner and the decoder make of one line.
struct Readings {
    const AuditEventView *scanned = nullptr;
    std::optional<AuditEventBytes> decoded;
};

Readings readBoth(AuditLineScanner &scanner, AuditRecordDecoder &decoder, std::string &line)
{
    const std::size_t size = line.size();
    line.resize(size + linePadding, '"'); // bytes behind a line are those of the next one
    const std::string_view view(line.data(), size);
    Readings readings {.scanned = scanner.scan(view), .decoded = std::nullopt};
    if (const auto record = decoder.decode(view)) {
        readings.decoded.emplace(*record);
    }
    return readings;
}

/// Lines that have gone wrong in every small way: one change to a good line.
class LineBreaker
{
public:
    QByteArray line()
    {
        QByteArray bytes = goodLines.at(below(goodLines.size()));
        switch (below(6)) {
        case 0:
            bytes.truncate(below(bytes.size()));
            break;
        case 1:
            bytes[below(bytes.size())] = static_cast<char>(m_random.bounded(256));
            break;
        case 2:
            bytes.insert(below(bytes.size()), pieces.at(below(pieces.size())));
            break;
        case 3:
            bytes.append(pieces.at(below(pieces.size())));
            break;
        default:
            break;
        }
        return bytes.replace('\n', ' ');
    }

    qsizetype below(qsizetype count)
    {
        return static_cast<qsizetype>(m_random.bounded(static_cast<quint32>(count)));
    }

private:
    const QByteArrayList goodLines {
        R"({"timestampMs":1718000000001,"kind":"approval_requested","approvalId":"a1","agentId":"main","source":"gateway","risk":"high","commandPreview":"git …"})",
        R"({"timestampMs":1718000000002,"kind":"approval_resolved","approvalId":"a1","decision":"deny","source":"app-local","actor":"app-user","risk":"high","latencyMs":0,"note":"say \"no\" \\ \t\u00e9"})",
        R"({"kind":"approval_resolved","timestampMs":1718000000003,"latencyMs":-5,"risk":null,"decision":"allow-once"})",
        R"( { "timestampMs" : 1718000000004 , "kind" : "gateway_disconnected" , "note" : "Unauthorized" } )",
        R"({"timestampMs":1718000000005,"kind":"approval_unknown_id","approvalId":"\ud83d\ude00","other":[1,{"kind":2}]})",
        R"({"timestampMs":1718000000006,"kind":"approval_requested","agentId":"a\u0062","commandPreview":"한글"})",
    };
    const QByteArrayList pieces {R"(\)",
                                 R"(\u)",
                                 R"(\q)",
                                 R"(")",
                                 R"(})",
                                 R"(,)",
                                 R"({})",
                                 " ",
                                 "\t",
                                 "\xff",
                                 "\xed\xa0\x80",
                                 "\xef\xbb\xbf",
                                 R"(1e3)",
                                 "-",
                                 "0",
                                 R"("a":1)",
                                 QByteArray(1, '\0')};
    QRandomGenerator m_random {20'260'101};
};

class WeeklyAuditAggregation : public AuditTest
{
protected:
    void expectNaiveResult(qint64 sinceMs, qsizetype maxRows)
    {
        AuditLogStore store(folder, {}, log);
        const auto records = store.records(sinceMs);
        const auto files = store.openLogFiles();
        for (const int threads : {1, 2, 5}) {
            AggregationProgress progress;
            const auto findings = aggregateAuditLog(
                files, {.sinceMs = sinceMs, .maxRows = maxRows, .threads = threads}, progress, log);
            ASSERT_TRUE(findings);
            EXPECT_EQ(findings->summary, buildWeeklyAuditSummary(records));
            EXPECT_EQ(findings->highRiskRows, highRiskAuditRows(records, maxRows));
            EXPECT_EQ(progress.bytesDone, progress.bytesTotal);
        }
    }
};
} // namespace

TEST(AuditLineScanner, takesTheLinesThatTheDecoderTakes)
{
    AuditLineScanner scanner;
    AuditRecordDecoder decoder;
    LineBreaker lines;
    int records = 0;
    int others = 0;
    for (int i = 0; i < 100'000; ++i) {
        const QByteArray bytes = lines.line();
        std::string line = bytes.toStdString();
        const Readings readings = readBoth(scanner, decoder, line);
        ASSERT_EQ(readings.scanned != nullptr, readings.decoded.has_value())
            << bytes.toPercentEncoding(" {}\":,[]\\").constData();
        if (readings.scanned != nullptr) {
            ++records;
            ASSERT_EQ(*readings.scanned, readings.decoded->view()) << bytes.constData();
        } else {
            ++others;
        }
    }
    EXPECT_GT(records, 10'000);
    EXPECT_GT(others, 10'000);
}

TEST_F(WeeklyAuditAggregation, equalsCountingTheRecords)
{
    LineBreaker lines;
    for (int file = 0; file < 7; ++file) {
        QByteArray bytes;
        for (qsizetype i = lines.below(3000); i > 0; --i) {
            bytes += lines.line() + '\n';
        }
        bytes += lines.line(); // torn off by a crash
        writeFile(file == 0 ? currentName : u"audit-events-%1.jsonl"_s.arg(file), bytes,
                  file * 1000);
    }
    expectNaiveResult(0, 20);
    expectNaiveResult(1'718'000'000'003, 0);
    expectNaiveResult(1'718'000'000'006, 100'000);
}

TEST_F(WeeklyAuditAggregation, lineLengthsNearTheReadersBlocksDoNotMatter)
{
    QByteArray bytes;
    for (const qsizetype size : {1, 100'000, 262'143, 262'144, 262'145, 600'000, 5, 2'000'000}) {
        bytes += R"({"timestampMs":1,"kind":"approval_requested","risk":"high","note":")"
            + QByteArray(size, 'n') + "\"}\n\n";
    }
    bytes += QByteArray(17 * 1024 * 1024, 'x') + "\n" + R"({"timestampMs":2,"kind":"last"})";
    writeFile(currentName, bytes);
    expectNaiveResult(0, 3);
    expectNaiveResult(2, 3);
}

TEST_F(WeeklyAuditAggregation, countsTheLogAsItWasWhenItWasOpened)
{
    writeFile(u"audit-events-1.jsonl"_s, R"({"timestampMs":1,"kind":"approval_unknown_id"})");
    AuditLogStore store(folder, {.maxBytes = 100}, log);
    store.append(record(2));
    const auto files = store.openLogFiles();
    store.append(record(3, QString(200, u'n'))); // rotates the current file away
    store.flush();
    ASSERT_TRUE(QFile::remove(path(u"audit-events-1.jsonl"_s)));
    AggregationProgress progress;
    const auto findings = aggregateAuditLog(files, {}, progress, log);
    ASSERT_TRUE(findings);
    EXPECT_EQ(findings->summary.totalEvents, 2);
    EXPECT_EQ(findings->summary.unknown, 1);
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(WeeklyAuditAggregation, canBeCancelledAndMeetsUnreadableFiles)
{
    writeFile(currentName, R"({"timestampMs":1,"kind":"approval_resolved"})");
    writeFile(u"audit-events-1.jsonl"_s, "");
    {
        const WithoutRoot withoutRoot(temporary.path());
        ASSERT_TRUE(QFile::setPermissions(path(u"audit-events-1.jsonl"_s), {}));
        AuditLogStore store(folder, {}, log);
        EXPECT_EQ(store.openLogFiles().size(), 1u);
    }
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines().first().startsWith(u"[Brackwen][Audit] read failed: "_s));

    AuditLogStore store(folder, {}, log);
    const auto files = store.openLogFiles();
    AggregationProgress progress;
    progress.isCancelled = true;
    EXPECT_FALSE(aggregateAuditLog(files, {}, progress, log));
}

} // namespace bram::test
