// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditRecordCodec.h"

#include <gtest/gtest.h>

#include <limits>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
AuditEventRecord fullRecord()
{
    return {.timestampMs = 1'718'000'000'123,
            .kind = AuditKind::approvalResolved,
            .approvalId = u"id-1"_s,
            .agentId = u"main"_s,
            .decision = u"allow-once"_s,
            .source = u"app-local"_s,
            .actor = u"app-user"_s,
            .risk = u"high"_s,
            .latencyMs = -7,
            .commandPreview = u"git …"_s,
            .note = u"a\"b\\c"_s};
}

std::string encoded(const AuditEventRecord &record)
{
    std::string line;
    appendAuditLine(record, line);
    return line;
}
} // namespace

TEST(AuditRecordCodec, writesTheKeysInOrderAndLeavesAbsentOnesOut)
{
    EXPECT_EQ(encoded(fullRecord()),
              R"({"timestampMs":1718000000123,"kind":"approval_resolved","approvalId":"id-1",)"
              R"("agentId":"main","decision":"allow-once","source":"app-local","actor":"app-user",)"
              R"("risk":"high","latencyMs":-7,"commandPreview":"git …","note":"a\"b\\c"})"
              "\n");
    std::string lines = "before\n";
    appendAuditLine({.timestampMs = 5, .kind = u"k"_s, .note = u""_s}, lines);
    appendAuditLine({.timestampMs = 6, .kind = u"k"_s}, lines);
    EXPECT_EQ(lines,
              "before\n{\"timestampMs\":5,\"kind\":\"k\",\"note\":\"\"}\n"
              "{\"timestampMs\":6,\"kind\":\"k\"}\n");
}

TEST(AuditRecordCodec, everyTextSurvivesAndStaysOneLine)
{
    QString controls;
    for (char16_t unit = 0; unit <= 0x80; ++unit) {
        controls += QChar(unit);
    }
    const QString loneHigh = u"a"_s + QChar(0xd83d);
    const QString loneLow = QChar(0xde00) + u"b"_s;
    const struct {
        QString text;
        QString readBack;
    } rows[] = {
        {controls, controls},
        {u"결제 승인 é \u07ff\u0800\uffff"_s, u"결제 승인 é \u07ff\u0800\uffff"_s},
        {u"🚀👩‍💻\U0010ffff"_s, u"🚀👩‍💻\U0010ffff"_s},
        {u"\u2028\u202e</script>"_s, u"\u2028\u202e</script>"_s},
        {loneHigh, u"a\ufffd"_s},
        {loneHigh + u"b"_s, u"a\ufffdb"_s},
        {loneLow, u"\ufffdb"_s},
        {QString(500, QChar(1)), QString(500, QChar(1))},
    };
    AuditRecordDecoder decoder;
    for (const auto &row : rows) {
        auto record = fullRecord();
        record.kind = row.text;
        record.note = row.text;
        const std::string line = encoded(record);
        EXPECT_EQ(line.find('\n'), line.size() - 1);
        record.kind = row.readBack;
        record.note = row.readBack;
        EXPECT_EQ(decoder.decode(std::string_view(line).substr(0, line.size() - 1)), record);
    }
    for (const qint64 edge :
         {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()}) {
        const AuditEventRecord record {.timestampMs = edge, .kind = u"k"_s, .latencyMs = edge};
        EXPECT_EQ(decoder.decode(encoded(record)), record);
    }
}

TEST(AuditRecordCodec, longTextsAreCutAndIdsStayTold)
{
    AuditRecordDecoder decoder;
    const auto written = [&decoder](const QString &text) {
        auto record = fullRecord();
        for (auto field :
             {&AuditEventRecord::approvalId, &AuditEventRecord::agentId, &AuditEventRecord::actor,
              &AuditEventRecord::commandPreview, &AuditEventRecord::note}) {
            record.*field = text;
        }
        return decoder.decode(encoded(record)).value();
    };
    const QString fitting(200, u'x');
    EXPECT_EQ(written(fitting).approvalId, fitting);
    const QString longText = QString(198, u'x') + u"🚀"_s + QString(3'900'000, u'y');
    const auto first = written(longText);
    EXPECT_EQ(first.commandPreview, QString(198, u'x') + u'…');
    EXPECT_EQ(first.note->size(), 500);
    const auto second = written(longText + u'z');
    for (auto id : {&AuditEventRecord::approvalId, &AuditEventRecord::agentId}) {
        EXPECT_EQ((first.*id)->size(), 200);
        EXPECT_NE(first.*id, second.*id);
        EXPECT_EQ(first.*id, written(longText).*id);
    }
}

TEST(AuditRecordCodec, readsRecordsAndNothingElse)
{
    const AuditEventRecord plain {.timestampMs = 1, .kind = u"k"_s};
    auto noted = plain;
    noted.note = u"결제"_s;
    const struct {
        std::string_view line;
        std::optional<AuditEventRecord> record;
    } rows[] = {
        {R"({"timestampMs":1,"kind":"k"})", plain},
        {" { \"kind\" : \"k\", \"timestampMs\" : 1 }\r", plain},
        {R"({"timestampMs":1,"kind":"k","note":null,"latencyMs":null})", plain},
        {R"({"timestampMs":1,"kind":"k","later":{"a":[1,2]}})", plain},
        {R"({"timestampMs":1,"kind":"k","note":"\uacb0\uc81c"})", noted},
        {"", std::nullopt},
        {"{}", std::nullopt},
        {"[]", std::nullopt},
        {"garbage", std::nullopt},
        {R"({"timestampMs":1})", std::nullopt},
        {R"({"kind":"k"})", std::nullopt},
        {R"({"timestampMs":1,"kind":null})", std::nullopt},
        {R"({"timestampMs":"1","kind":"k"})", std::nullopt},
        {R"({"timestampMs":9223372036854775808,"kind":"k"})", std::nullopt},
        {R"({"timestampMs":1,"kind":"k","note":3})", std::nullopt},
        {R"({"timestampMs":1,"kind":"k","latencyMs":"3"})", std::nullopt},
        {R"({"timestampMs":1,"kind":"k"}{"timestampMs":1,"kind":"k"})", std::nullopt},
        {R"({"timestampMs":1,"kind":"k","no)", std::nullopt},
        {"{\"timestampMs\":1,\"kind\":\"\xff\"}", std::nullopt},
    };
    AuditRecordDecoder decoder;
    for (const auto &row : rows) {
        EXPECT_EQ(decoder.decode(row.line), row.record) << row.line;
    }
}

} // namespace bram
