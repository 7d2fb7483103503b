// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditRecordCodec.h"

#include "model/TextRules.h"
#include "system/PlainText.h"

#include <QCryptographicHash>
#include <QStringDecoder>
#include <QStringView>

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <span>

namespace bram
{

namespace
{
constexpr std::string_view timestampPrefix = R"({"timestampMs":)";
constexpr std::string_view kindPrefix = R"(,"kind":")";
constexpr std::string_view latencyPrefix = R"(,"latencyMs":)";
constexpr std::size_t maxIntegerBytes = 20;
/// What a UTF-16 unit needs at most: a control character as \u0000.
constexpr std::size_t maxBytesPerUnit = 6;

/// An optional text: what stands before its characters in the line, and where it lives.
struct TextField {
    std::string_view prefix;
    std::optional<QString> AuditEventRecord::*member;

    constexpr std::string_view key() const { return prefix.substr(2, prefix.size() - 5); }
};

constexpr std::array textFields {
    TextField {R"(,"approvalId":")", &AuditEventRecord::approvalId},
    TextField {R"(,"agentId":")", &AuditEventRecord::agentId},
    TextField {R"(,"decision":")", &AuditEventRecord::decision},
    TextField {R"(,"source":")", &AuditEventRecord::source},
    TextField {R"(,"actor":")", &AuditEventRecord::actor},
    TextField {R"(,"risk":")", &AuditEventRecord::risk},
    TextField {R"(,"commandPreview":")", &AuditEventRecord::commandPreview},
    TextField {R"(,"note":")", &AuditEventRecord::note},
};
static_assert(textFields[0].key() == "approvalId");

/// The latency stands between these two.
constexpr auto fieldsBeforeLatency = std::span(textFields).first<6>();
constexpr auto fieldsAfterLatency = std::span(textFields).last<2>();

char *writeBytes(char *out, std::string_view bytes)
{
    std::memcpy(out, bytes.data(), bytes.size());
    return out + bytes.size();
}

char *writeInteger(char *out, qint64 value)
{
    return std::to_chars(out, out + maxIntegerBytes, value).ptr;
}

constexpr bool isPlain(char16_t unit)
{
    return (unit >= 0x20) & (unit < 0x80) & (unit != u'"') & (unit != u'\\');
}

/// A quote, a backslash or a control character.
char *writeEscape(char *out, char16_t unit)
{
    constexpr std::string_view digits = "0123456789abcdef";
    switch (unit) {
    case u'"':
        return writeBytes(out, R"(\")");
    case u'\\':
        return writeBytes(out, R"(\\)");
    case u'\b':
        return writeBytes(out, R"(\b)");
    case u'\f':
        return writeBytes(out, R"(\f)");
    case u'\n':
        return writeBytes(out, R"(\n)");
    case u'\r':
        return writeBytes(out, R"(\r)");
    case u'\t':
        return writeBytes(out, R"(\t)");
    default:
        out = writeBytes(out, R"(\u00)");
        *out++ = digits[unit >> 4];
        *out++ = digits[unit & 0xf];
        return out;
    }
}

/// A code point of two to four bytes.
char *writeUtf8(char *out, char32_t codePoint)
{
    const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (codePoint < 0x800) {
        put(0xc0 | (codePoint >> 6));
    } else {
        if (codePoint < 0x10000) {
            put(0xe0 | (codePoint >> 12));
        } else {
            put(0xf0 | (codePoint >> 18));
            put(0x80 | ((codePoint >> 12) & 0x3f));
        }
        put(0x80 | ((codePoint >> 6) & 0x3f));
    }
    put(0x80 | (codePoint & 0x3f));
    return out;
}

char *writeText(char *out, QStringView text)
{
    const char16_t *unit = text.utf16();
    const char16_t *const end = unit + text.size();
    for (;;) {
        const qsizetype copied = copyPlainUnits(QStringView(unit, end), out, isPlain);
        out += copied;
        unit += copied;
        if (unit == end) {
            return out;
        }
        const char16_t current = *unit++;
        if (current < 0x80) {
            out = writeEscape(out, current);
        } else if (!QChar::isSurrogate(current)) {
            out = writeUtf8(out, current);
        } else if (QChar::isHighSurrogate(current) && unit != end && QChar::isLowSurrogate(*unit)) {
            out = writeUtf8(out, QChar::surrogateToUcs4(current, *unit++));
        } else {
            out = writeUtf8(out, QChar::ReplacementCharacter);
        }
    }
}

char *writeTextFields(char *out, const AuditEventRecord &record, std::span<const TextField> fields)
{
    for (const TextField &field : fields) {
        if (const auto &text = record.*field.member) {
            out = writeText(writeBytes(out, field.prefix), *text);
            *out++ = '"';
        }
    }
    return out;
}

/// An upper limit for the bytes of the record's line.
std::size_t maxLineBytes(const AuditEventRecord &record)
{
    constexpr std::size_t fixed = timestampPrefix.size() + kindPrefix.size() + latencyPrefix.size()
        + 2 * maxIntegerBytes + std::string_view("\"}\n").size();
    std::size_t bytes = fixed + maxBytesPerUnit * static_cast<std::size_t>(record.kind.size());
    for (const TextField &field : textFields) {
        if (const auto &text = record.*field.member) {
            bytes += field.prefix.size() + 1
                + maxBytesPerUnit * static_cast<std::size_t>(text->size());
        }
    }
    return bytes;
}

constexpr qsizetype maxUnits = 200;
constexpr qsizetype maxNoteUnits = 500;
constexpr qsizetype hashDigits = 16;
constexpr qsizetype maxUnitsBeforeHash = maxUnits - hashDigits - 2;

bool fits(const AuditEventRecord &record)
{
    return std::ranges::all_of(textFields, [&record](const TextField &field) {
        const auto &text = record.*field.member;
        return !text || text->size() <= maxUnits
            || (field.member == &AuditEventRecord::note && text->size() <= maxNoteUnits);
    });
}

/// Two long ids that begin alike stay two.
QString cappedId(const QString &id)
{
    const QByteArray hash = QCryptographicHash::hash(id.toUtf8(), QCryptographicHash::Sha256);
    return shortened(id, maxUnitsBeforeHash) + u'#'
        + QString::fromLatin1(hash.toHex().first(hashDigits));
}

AuditEventRecord capped(AuditEventRecord record)
{
    for (const TextField &field : textFields) {
        auto &text = record.*field.member;
        const bool isNote = field.member == &AuditEventRecord::note;
        const bool isId = field.member == &AuditEventRecord::approvalId
            || field.member == &AuditEventRecord::agentId;
        const qsizetype most = isNote ? maxNoteUnits : maxUnits;
        if (text && text->size() > most) {
            text = isId ? cappedId(*text) : shortened(*text, most - 1);
        }
    }
    return record;
}

/// Puts an optional text where it belongs. False when the value is neither a text nor null.
bool readTextField(std::string_view key, simdjson::dom::element value, AuditEventRecord &record)
{
    const auto field = std::ranges::find(textFields, key, &TextField::key);
    if (field == textFields.end() || value.is_null()) {
        return true;
    }
    std::string_view text;
    if (value.get(text) != simdjson::SUCCESS) {
        return false;
    }
    record.*(field->member) = auditText(text);
    return true;
}
} // namespace

void appendAuditLine(const AuditEventRecord &record, std::string &lines)
{
    if (!fits(record)) {
        appendAuditLine(capped(record), lines);
        return;
    }
    const std::size_t before = lines.size();
    lines.resize_and_overwrite(before + maxLineBytes(record), [&](char *begin, std::size_t) {
        char *out = writeInteger(writeBytes(begin + before, timestampPrefix), record.timestampMs);
        out = writeText(writeBytes(out, kindPrefix), record.kind);
        *out++ = '"';
        out = writeTextFields(out, record, fieldsBeforeLatency);
        if (record.latencyMs) {
            out = writeInteger(writeBytes(out, latencyPrefix), *record.latencyMs);
        }
        out = writeTextFields(out, record, fieldsAfterLatency);
        return writeBytes(out, "}\n") - begin;
    });
}

QString auditText(std::string_view utf8)
{
    // Not fromUtf8: that takes a U+FEFF at the beginning for a mark of the encoding and drops it.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder(QByteArrayView(utf8.data(), static_cast<qsizetype>(utf8.size())));
}

struct AuditRecordDecoder::Parser {
    simdjson::dom::parser json;
    std::vector<char> bytes; ///< the line and the readable bytes the parser wants behind it
};

AuditRecordDecoder::AuditRecordDecoder()
    : m_parser(std::make_unique<Parser>())
{
}

AuditRecordDecoder::~AuditRecordDecoder() = default;

std::optional<AuditEventRecord> AuditRecordDecoder::decode(std::string_view line)
{
    auto &bytes = m_parser->bytes;
    bytes.assign(line.begin(), line.end());
    bytes.resize(line.size() + simdjson::SIMDJSON_PADDING);

    simdjson::dom::object object;
    if (m_parser->json.parse(bytes.data(), line.size(), false).get(object) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    AuditEventRecord record;
    bool hasTimestamp = false;
    bool hasKind = false;
    for (const auto &[key, value] : object) {
        if (key == "timestampMs") {
            int64_t timestampMs = 0;
            hasTimestamp = value.get(timestampMs) == simdjson::SUCCESS;
            record.timestampMs = timestampMs;
        } else if (key == "kind") {
            std::string_view kind;
            hasKind = value.get(kind) == simdjson::SUCCESS;
            record.kind = auditText(kind);
        } else if (key == "latencyMs") {
            if (value.is_null()) {
                continue;
            }
            int64_t latencyMs = 0;
            if (value.get(latencyMs) != simdjson::SUCCESS) {
                return std::nullopt;
            }
            record.latencyMs = latencyMs;
        } else if (!readTextField(key, value, record)) {
            return std::nullopt;
        }
    }
    return hasTimestamp && hasKind ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace bram
