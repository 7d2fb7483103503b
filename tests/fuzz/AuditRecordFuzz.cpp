// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "audit/AuditRecordCodec.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

namespace
{
/// Longer texts of a record are cut when it is written.
constexpr qsizetype neverCut = 200;

bool isNeverCut(const AuditEventRecord &record)
{
    for (const auto &text : {record.approvalId, record.agentId, record.decision, record.source,
                             record.actor, record.risk, record.commandPreview, record.note}) {
        if (text && text->size() > neverCut) {
            return false;
        }
    }
    return true;
}

void checkRoundTrip(AuditRecordDecoder &decoder, const AuditEventRecord &record)
{
    std::string lines = "before\n";
    appendAuditLine(record, lines);
    std::string_view line(lines);
    line.remove_prefix(7);
    require(line.find('\n') == line.size() - 1, "a record is one line");
    line.remove_suffix(1);
    const auto readBack = decoder.decode(line);
    require(readBack.has_value(), "what was written can be read");
    if (isNeverCut(record)) {
        require(readBack == record, "a record survives being written");
        return;
    }
    std::string again;
    appendAuditLine(*readBack, again);
    require(again == lines.substr(7), "what was cut once is not cut again");
}

/// What a reader gets back: UTF-8 cannot carry half a surrogate pair.
QString readBackOf(const QString &text)
{
    QString result;
    for (const char32_t c : text.toUcs4()) { // has U+FFFD for each half
        result.append(QChar::fromUcs4(c));
    }
    return result;
}

/// A line that holds whatever the input is made of.
void checkWriting(AuditRecordDecoder &decoder, const QByteArray &bytes)
{
    const QString text = fuzz::toText(bytes);
    const QString readBack = readBackOf(text);
    AuditEventRecord record {.timestampMs = text.size(), .kind = text};
    record.note = text;
    record.commandPreview = text;
    std::string line;
    appendAuditLine(record, line);
    AuditEventRecord expected {.timestampMs = text.size(), .kind = readBack};
    expected.note = readBack;
    expected.commandPreview = readBack;
    const auto written = decoder.decode(line);
    require(written.has_value(), "every text can be written");
    require(!isNeverCut(record) || written == expected, "every text is written as it is");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static AuditRecordDecoder decoder;
    const QByteArray bytes = fuzz::toBytes(data, size);
    if (const auto record = decoder.decode(std::string_view(bytes.data(), size))) {
        checkRoundTrip(decoder, *record);
        const QJsonObject object = QJsonDocument::fromJson(bytes).object();
        require(object.value("kind"_L1).toString() == record->kind,
                "another reader reads the same kind");
        require(object.value("timestampMs"_L1).toInteger() == record->timestampMs,
                "another reader reads the same time");
    }
    checkWriting(decoder, bytes);
    return 0;
}
