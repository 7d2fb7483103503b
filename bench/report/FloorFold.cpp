// SPDX-License-Identifier: Apache-2.0
#include "report/FloorFold.h"

#include <simdjson.h>

#include <QString>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>

#include <unistd.h>

namespace bram::bench
{

namespace
{
struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
};
using Counts = std::unordered_map<std::string, qint64, Hash, std::equal_to<>>;

void count(Counts &counts, std::string_view name)
{
    if (name.empty()) {
        return;
    }
    const auto found = counts.find(name);
    if (found == counts.end()) {
        counts.emplace(name, 1);
    } else {
        ++found->second;
    }
}

struct Fields {
    int64_t timestampMs = 0;
    int64_t latencyMs = -1;
    std::string_view kind;
    std::string_view agentId;
    std::string_view decision;
    std::string_view risk;
    std::string_view preview;
    std::string_view note;
};

class Floor
{
public:
    void addFile(const AuditLogFile &file, qint64 sinceMs)
    {
        m_bytes.resize(file.size() + simdjson::SIMDJSON_PADDING);
        if (::pread(file.descriptor(), m_bytes.data(), file.size(), 0)
            != static_cast<ssize_t>(file.size())) {
            std::perror("pread");
            std::exit(2);
        }
        for (std::size_t begin = 0; begin < file.size();) {
            const char *line = m_bytes.data() + begin;
            const auto *end
                = static_cast<const char *>(std::memchr(line, '\n', file.size() - begin));
            const auto length = static_cast<std::size_t>(end - line);
            addLine(line, length, sinceMs);
            begin += length + 1;
        }
    }

    WeeklyAuditSummary summary;
    Counts agents;
    Counts commands;

private:
    void addLine(const char *line, std::size_t length, qint64 sinceMs)
    {
        auto document = m_parser.iterate(line, length, length + simdjson::SIMDJSON_PADDING);
        Fields fields;
        for (auto field : document.get_object()) {
            const std::string_view key = field.unescaped_key();
            if (key == "timestampMs") {
                fields.timestampMs = field.value().get_int64();
            } else if (key == "kind") {
                fields.kind = field.value().get_string();
            } else if (key == "agentId") {
                fields.agentId = field.value().get_string();
            } else if (key == "decision") {
                fields.decision = field.value().get_string();
            } else if (key == "risk") {
                fields.risk = field.value().get_string();
            } else if (key == "latencyMs") {
                fields.latencyMs = field.value().get_int64();
            } else if (key == "commandPreview") {
                fields.preview = field.value().get_string();
            } else if (key == "note") {
                fields.note = field.value().get_string();
            }
        }
        if (fields.timestampMs >= sinceMs) {
            fold(fields);
        }
    }

    void fold(const Fields &fields)
    {
        ++summary.totalEvents;
        const bool high = fields.risk == "high";
        if (fields.kind == "approval_requested") {
            ++summary.requested;
            summary.highRiskRequested += high ? 1 : 0;
            count(agents, fields.agentId);
            count(commands, fields.preview);
        } else if (fields.kind == "approval_resolved") {
            ++summary.resolved;
            summary.highRiskResolved += high ? 1 : 0;
            summary.allowOnce += fields.decision == "allow-once" ? 1 : 0;
            summary.allowAlways += fields.decision == "allow-always" ? 1 : 0;
            summary.deny += fields.decision == "deny" ? 1 : 0;
            if (fields.latencyMs >= 0) {
                summary.latencyTotalMs += fields.latencyMs;
                ++summary.latencySamples;
            }
        } else if (fields.kind == "approval_resolved_external") {
            ++summary.externalResolved;
        } else if (fields.kind == "approval_unknown_id") {
            ++summary.unknown;
        } else if (fields.kind == "gateway_disconnected") {
            ++summary.disconnects;
            const bool isAuth = fields.note.find("unauthorized") != fields.note.npos
                || fields.note.find("token") != fields.note.npos;
            summary.authFailureDisconnects += isAuth ? 1 : 0;
        } else if (fields.kind == "gateway_auth_failure") {
            ++summary.authFailureDisconnects;
        }
    }

    simdjson::ondemand::parser m_parser;
    std::vector<char> m_bytes;
};
} // namespace

WeeklyAuditSummary floorFold(const std::vector<AuditLogFile> &files, qint64 sinceMs)
{
    Floor floor;
    for (const AuditLogFile &file : files) {
        floor.addFile(file, sinceMs);
    }
    for (const auto &[name, times] : floor.agents) {
        floor.summary.agentCounts.insert(QString::fromStdString(name), times);
    }
    for (const auto &[name, times] : floor.commands) {
        floor.summary.commandCounts.insert(QString::fromStdString(name), times);
    }
    return floor.summary;
}

} // namespace bram::bench
