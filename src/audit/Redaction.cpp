// SPDX-License-Identifier: Apache-2.0
#include "audit/Redaction.h"

#include "audit/SecretMask.h"

#include <QRegularExpression>

#include <array>
#include <optional>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// What stays of a match when its secret is masked: a captured group, if any, and a fixed text.
struct RedactionRule {
    QRegularExpression pattern;
    int keptGroup; ///< 0 for none
    QString replacement;
};

RedactionRule makeRule(const QString &pattern, int keptGroup, const QString &replacement)
{
    RedactionRule rule {QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption),
                        keptGroup, replacement};
    rule.pattern.optimize();
    return rule;
}

const std::array<RedactionRule, 4> &redactionRules()
{
    static const std::array rules {
        makeRule(uR"re(\b\d{6,}:[A-Za-z0-9_-]{20,}\b)re"_s, 0, u"[REDACTED_BOT_TOKEN]"_s),
        makeRule(uR"re((?i)(bearer\s+)[A-Za-z0-9._-]+)re"_s, 1, u"[REDACTED]"_s),
        makeRule(
            uR"re((?i)\b(token|password|passwd|secret|api[_-]?key)\b\s*[:=]\s*[^\\s\"',;]+)re"_s, 1,
            u"=[REDACTED]"_s),
        makeRule(
            uR"re((?i)(BRACKWEN_[A-Z0-9_]*(TOKEN|PASSWORD|SECRET)[A-Z0-9_]*\s*=\s*)[^\\s\"',;]+)re"_s,
            1, u"[REDACTED]"_s),
    };
    return rules;
}

/// `text` with every match masked; nothing when the matcher gave up, which it does on texts that make
/// it try too much. Replacing with the regular expression would then leave the secrets as they are.
std::optional<QString> masked(const QString &text, const RedactionRule &rule)
{
    QString result;
    qsizetype copied = 0;
    auto matches = rule.pattern.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        result += QStringView(text).sliced(copied, match.capturedStart() - copied);
        if (rule.keptGroup > 0) {
            result += match.capturedView(rule.keptGroup);
        }
        result += rule.replacement;
        copied = match.capturedEnd();
    }
    if (!matches.isValid()) {
        return std::nullopt;
    }
    result += QStringView(text).sliced(copied);
    return result;
}

/// Regular expressions refuse a text that is not valid UTF-16, and would leave its secrets as they
/// are.
QString withValidSurrogates(QString text)
{
    if (text.isValidUtf16()) {
        return text;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate()) {
            continue;
        }
        if (text.at(i).isHighSurrogate() && i + 1 < text.size()
            && text.at(i + 1).isLowSurrogate()) {
            ++i;
        } else {
            text[i] = QChar::ReplacementCharacter;
        }
    }
    return text;
}
} // namespace

QString redacted(const QString &text)
{
    QString result = withValidSurrogates(text);
    for (const RedactionRule &rule : redactionRules()) {
        auto next = masked(result, rule);
        if (!next) {
            return u"[REDACTED]"_s;
        }
        result = *std::move(next);
    }
    return withSecretsMasked(result);
}

} // namespace bram
