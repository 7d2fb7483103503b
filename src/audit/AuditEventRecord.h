// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLatin1StringView>
#include <QString>

#include <optional>

namespace bram
{

/// What happened, as it stands in `AuditEventRecord::kind` and in the files. Open-ended on purpose:
/// a file may hold kinds of other releases, and they are read like any other.
namespace AuditKind
{
inline constexpr QLatin1StringView approvalRequested("approval_requested");
inline constexpr QLatin1StringView approvalDecisionRequested("approval_decision_requested");
inline constexpr QLatin1StringView
    approvalDecisionIgnoredDuplicate("approval_decision_ignored_duplicate");
inline constexpr QLatin1StringView approvalExpired("approval_expired");
inline constexpr QLatin1StringView approvalResolveFailed("approval_resolve_failed");
inline constexpr QLatin1StringView approvalResolved("approval_resolved");
inline constexpr QLatin1StringView approvalUnknownId("approval_unknown_id");
inline constexpr QLatin1StringView approvalResolvedExternal("approval_resolved_external");
inline constexpr QLatin1StringView gatewayDisconnected("gateway_disconnected");
inline constexpr QLatin1StringView gatewayAuthFailure("gateway_auth_failure");
/// Events before this one could not be recorded.
inline constexpr QLatin1StringView auditGap("audit_gap");
/// Archives were deleted before their time, because there were too many.
inline constexpr QLatin1StringView auditArchivesDeletedEarly("audit_archives_deleted_early");
} // namespace AuditKind

/// What `AuditEventRecord::source` says of everything that a self-test or a simulation has made up. Nobody else's
/// word gets there, so that nothing real can pass for it.
inline constexpr QLatin1StringView exerciseSource("exercise");

/// One event of the audit log: one line of the file. The fields stand in the order of the file's
/// keys; an absent field has no key there. Never put a whole command or a secret in here: a command
/// goes in as its preview, a reason from outside goes through `redacted()` first. Texts are cut when they are
/// written: to 200 UTF-16 units, a note to 500; a long id ends in a part of its hash then.
struct AuditEventRecord {
    qint64 timestampMs = 0; ///< wall clock, milliseconds since the Unix epoch, truncated
    QString kind = {}; ///< one of `AuditKind`
    std::optional<QString> approvalId = {};
    std::optional<QString> agentId = {}; ///< the agent that asked
    std::optional<QString> decision = {}; ///< "allow-once", "allow-always", "deny"
    std::optional<QString> source = {}; ///< where the event or the decision came from
    std::optional<QString> actor = {}; ///< who acted
    std::optional<QString> risk = {}; ///< "high" or "low"
    std::optional<qint64> latencyMs = {}; ///< from the request's arrival to its resolution
    std::optional<QString> commandPreview = {}; ///< the program's name, never its arguments
    std::optional<QString> note = {}; ///< free text, such as an error

    bool operator==(const AuditEventRecord &) const = default;
};

} // namespace bram
