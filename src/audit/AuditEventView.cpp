// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditEventView.h"

namespace bram
{

namespace
{
std::optional<std::string> toBytes(const std::optional<QString> &text)
{
    return text ? std::optional(text->toStdString()) : std::nullopt;
}
} // namespace

AuditEventBytes::AuditEventBytes(const AuditEventRecord &record)
    : m_timestampMs(record.timestampMs)
    , m_latencyMs(record.latencyMs)
    , m_texts {toBytes(record.kind),   toBytes(record.agentId), toBytes(record.decision),
               toBytes(record.source), toBytes(record.risk),    toBytes(record.commandPreview),
               toBytes(record.note)}
{
}

AuditEventView AuditEventBytes::view() const
{
    const auto &[kind, agentId, decision, source, risk, commandPreview, note] = m_texts;
    return {.timestampMs = m_timestampMs,
            .kind = *kind,
            .agentId = agentId,
            .decision = decision,
            .source = source,
            .risk = risk,
            .latencyMs = m_latencyMs,
            .commandPreview = commandPreview,
            .note = note};
}

} // namespace bram
