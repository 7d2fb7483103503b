// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditEventRecord.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace bram
{

/// What the counting of events needs of a record, as UTF-8 bytes that somebody else keeps: a full log has a
/// million records, and making a QString of each text costs more than reading it.
struct AuditEventView {
    qint64 timestampMs = 0;
    std::string_view kind = {};
    std::optional<std::string_view> agentId = {};
    std::optional<std::string_view> decision = {};
    std::optional<std::string_view> source = {};
    std::optional<std::string_view> risk = {};
    std::optional<qint64> latencyMs = {};
    std::optional<std::string_view> commandPreview = {};
    std::optional<std::string_view> note = {};

    bool operator==(const AuditEventView &) const = default;

    bool isHighRisk() const { return risk == "high"; }
    bool isExercise() const { return source == std::string_view(exerciseSource.data()); }
};

/// The bytes for the view of a record that is at hand as a record.
class AuditEventBytes
{
public:
    explicit AuditEventBytes(const AuditEventRecord &record);

    AuditEventView view() const;

private:
    qint64 m_timestampMs;
    std::optional<qint64> m_latencyMs;
    /// kind, agentId, decision, source, risk, commandPreview, note
    std::array<std::optional<std::string>, 7> m_texts;
};

} // namespace bram
