// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditEventRecord.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace bram
{

/// Appends the record to `lines` as one line of the audit log: a JSON object in UTF-8 without
/// blanks, keys in the order of the record's fields, absent fields left out, a line feed at the
/// end. The object itself never holds a raw line feed, so that line feeds are the borders between
/// records. Half of a surrogate pair, which UTF-8 cannot carry, becomes U+FFFD. Writes into the
/// caller's buffer because this is what an event costs the main thread. Texts over 200 units (500 of the
/// note) are cut, with "…", and an id that is cut ends in a hash of the whole: whoever chooses these texts
/// must not be able to push older records out of the log.
void appendAuditLine(const AuditEventRecord &record, std::string &lines);

/// Text of the audit log's files, which are in UTF-8, as it stands: a U+FEFF at its beginning is kept.
QString auditText(std::string_view utf8);

/// Reads lines of the audit log back. Keeps its buffers from line to line, so one decoder serves a
/// whole run; not safe to share between threads.
class AuditRecordDecoder
{
public:
    AuditRecordDecoder();
    ~AuditRecordDecoder();
    Q_DISABLE_COPY_MOVE(AuditRecordDecoder)

    /// The record in `line` (without its line feed). Nothing when the line is not one JSON object
    /// in valid UTF-8, when `timestampMs` or `kind` is missing, or when a known key has the wrong
    /// type. A known optional key with the value null counts as absent; unknown keys are passed
    /// over.
    std::optional<AuditEventRecord> decode(std::string_view line);

private:
    struct Parser;
    std::unique_ptr<Parser> m_parser;
};

} // namespace bram
