// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "allowlist/CommandDigest.h"
#include "allowlist/ExecApprovalsEdit.h"

#include <QJsonDocument>

#include <algorithm>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

namespace
{
/// All tokens, in no order: what an edit must not change.
void collect(const ExactJson &value, QByteArrayList &tokens)
{
    tokens.append(value.token);
    for (const QByteArray &key : value.keys) {
        tokens.append(key);
    }
    for (const ExactJson &inner : value.values) {
        collect(inner, tokens);
    }
}

QByteArrayList tokensOf(const ExactJson &value)
{
    QByteArrayList tokens;
    collect(value, tokens);
    std::ranges::sort(tokens);
    return tokens;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray source = fuzz::toBytes(data, size);
    auto document = parseExactJson(source);
    QJsonParseError error;
    QJsonDocument::fromJson(source, &error); // which refuses numbers that it cannot hold
    if (!document) {
        return 0;
    }
    require(error.error == QJsonParseError::NoError || error.error == QJsonParseError::IllegalNumber
                || !document->root.isObject(),
            "what is taken for an object is JSON for others, too");
    const QByteArray pretty = prettyText(document->root);
    const auto again = parseExactJson(pretty);
    require(again && prettyText(again->root) == pretty,
            "what is written can be read, and is final");
    require(tokensOf(again->root) == tokensOf(document->root), "no token is lost or changed");
    if (!document->root.isObject()) {
        return 0;
    }
    const QStringList before = allowlistPatterns(document->root);
    const QString command = u"added command"_s;
    if (const auto appended = appendCommands(document->root, {command}); appended && *appended) {
        require(allowlistPatterns(document->root).contains(command), "what is added is there");
        require(appendCommands(document->root, {command}) == false, "nothing is added twice");
    }
    require(removeDigests(document->root, {*normalizedCommandDigest(command)}).has_value(),
            "removing never fails");
    for (const QString &pattern : before) {
        require(fuzz::isTrimmed(pattern), "patterns are trimmed");
        if (const auto digest = normalizedCommandDigest(pattern)) {
            require(isCommandDigest(*digest), "a digest is one");
            require(removeDigests(document->root, {*digest}).has_value(), "removing never fails");
        }
    }
    for (const QString &left : allowlistPatterns(document->root)) {
        require(!normalizedCommandDigest(left), "what has a digest can be removed");
    }
    require(clearAllowlists(document->root).has_value(), "clearing never fails");
    require(allowlistPatterns(document->root).isEmpty(), "cleared lists are empty");
    require(parseExactJson(prettyText(document->root)).has_value(), "an edited file can be read");
    return 0;
}
