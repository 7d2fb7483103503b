// SPDX-License-Identifier: Apache-2.0
#include "gateway/UsualFrames.h"

#include "model/TextRules.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace bram
{

namespace
{
using simdjson::dom::element;
using simdjson::dom::object;

/// Longer ones are rare, and their buffers would stay.
constexpr std::size_t maxFrameBytes = 65'536;
/// A request has three levels.
constexpr std::size_t maxDepth = 8;

/// The values of the known keys of an object, in the order of the keys. Nothing when one comes twice.
template<std::size_t N>
std::optional<std::array<std::optional<element>, N>>
fields(const object &object, const std::array<std::string_view, N> &keys)
{
    std::array<std::optional<element>, N> values;
    for (const auto &[key, value] : object) {
        const auto known = std::ranges::find(keys, key);
        if (known == keys.end()) {
            continue;
        }
        auto &place = values[static_cast<std::size_t>(known - keys.begin())];
        if (place) {
            return std::nullopt;
        }
        place = value;
    }
    return values;
}

template<typename T>
std::optional<T> as(const std::optional<element> &field)
{
    T value;
    return field && field->get(value) == simdjson::SUCCESS ? std::optional(value) : std::nullopt;
}

/// Nothing also for a text that begins with U+FEFF: the conversion would take that for a mark of the encoding.
std::optional<QString> textOf(const std::optional<element> &field)
{
    const auto utf8 = as<std::string_view>(field);
    return utf8 && !utf8->starts_with("\xef\xbb\xbf")
        ? std::optional(QString::fromUtf8(utf8->data(), static_cast<qsizetype>(utf8->size())))
        : std::nullopt;
}

std::optional<IncomingFrame> readRequested(const object &payload)
{
    const auto outer = fields<4>(payload, {"id", "request", "createdAtMs", "expiresAtMs"});
    const auto request = outer ? as<object>(outer->at(1)) : std::nullopt;
    const auto inner = request ? fields<2>(*request, {"command", "agentId"}) : std::nullopt;
    if (!inner) {
        return std::nullopt;
    }
    const auto id = textOf(outer->at(0));
    const auto command = textOf(inner->at(0));
    const auto agentId = textOf(inner->at(1));
    const auto createdAtMs = as<std::int64_t>(outer->at(2));
    const auto expiresAtMs = as<std::int64_t>(outer->at(3));
    if (!id || !command || !agentId || !createdAtMs || !expiresAtMs) {
        return std::nullopt;
    }
    return ApprovalRequested {
        {*id, *command, trimmedOrAbsent(agentId), *createdAtMs, *expiresAtMs}};
}

std::optional<IncomingFrame> readResolved(const object &payload)
{
    const auto known = fields<1>(payload, {"id"});
    const auto id = known ? textOf(known->front()) : std::nullopt;
    return id ? std::optional<IncomingFrame>(ApprovalResolved {*id}) : std::nullopt;
}

std::optional<IncomingFrame> readEvent(std::string_view name, const object &payload)
{
    if (name == approvalRequestedEvent.latin1()) {
        return readRequested(payload);
    }
    return name == approvalResolvedEvent.latin1() ? readResolved(payload) : std::nullopt;
}

/// A call that has succeeded and has nothing to say.
std::optional<IncomingFrame> readAnswer(const QString &id, const std::optional<element> &ok,
                                        const std::optional<element> &payload)
{
    if (!as<bool>(ok).value_or(false)) {
        return std::nullopt;
    }
    if (payload) {
        const auto values = as<object>(payload);
        if (!values || values->begin() != values->end()) {
            return std::nullopt;
        }
    }
    return ResponseFrame {id, QJsonObject()};
}

std::optional<IncomingFrame> readFrame(const object &frame)
{
    const auto known = fields<5>(frame, {"type", "event", "payload", "id", "ok"});
    if (!known) {
        return std::nullopt;
    }
    const auto &[type, event, payload, id, ok] = *known;
    const auto typeName = as<std::string_view>(type);
    if (typeName == "event") {
        const auto name = as<std::string_view>(event);
        const auto values = as<object>(payload);
        return name && values ? readEvent(*name, *values) : std::nullopt;
    }
    const auto idText = textOf(id);
    return typeName == "res" && idText ? readAnswer(*idText, ok, payload) : std::nullopt;
}
} // namespace

struct UsualFrameReader::Parser {
    simdjson::dom::parser json {maxFrameBytes};
    std::vector<char> bytes; ///< the frame and the readable bytes the parser wants behind it
};

UsualFrameReader::UsualFrameReader()
    : m_parser(std::make_unique<Parser>())
{
    // What is nested deeper is an error of this parser, and so not usual.
    [[maybe_unused]] const auto error = m_parser->json.allocate(maxFrameBytes, maxDepth);
}

UsualFrameReader::~UsualFrameReader() = default;

std::optional<IncomingFrame> UsualFrameReader::read(const QByteArray &utf8)
{
    const auto length = static_cast<std::size_t>(utf8.size());
    if (length > maxFrameBytes) {
        return std::nullopt;
    }
    auto &bytes = m_parser->bytes;
    bytes.assign(utf8.begin(), utf8.end());
    bytes.resize(bytes.size() + simdjson::SIMDJSON_PADDING);
    object frame;
    if (m_parser->json.parse(bytes.data(), length, false).get(frame) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    return readFrame(frame);
}

} // namespace bram
