// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditEventView.h"
#include "audit/AuditRecordCodec.h"

#include <memory>
#include <optional>
#include <string_view>

namespace bram
{

/// Reads lines of the audit log without making records of them: several times as fast, for who goes through
/// a whole log. Takes exactly the lines that `AuditRecordDecoder` takes, and reads the same in them: it only
/// reads by itself what looks as the store writes it, and leaves every other line to the decoder. Not safe
/// to share between threads.
class AuditLineScanner
{
public:
    AuditLineScanner();
    ~AuditLineScanner();
    Q_DISABLE_COPY_MOVE(AuditLineScanner)

    /// `line` is without its line feed and has `linePadding` readable bytes behind it. The event is valid until
    /// the next call, and no longer than the line itself. Null when the line is no record.
    const AuditEventView *scan(std::string_view line);

private:
    struct Parser;

    std::unique_ptr<Parser> m_parser;
    AuditRecordDecoder m_decoder;
    AuditEventView m_event;
    std::optional<AuditEventBytes> m_decoded;
};

} // namespace bram
