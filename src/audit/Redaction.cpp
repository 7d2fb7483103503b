// SPDX-License-Identifier: Apache-2.0
#include "audit/Redaction.h"

#include <QRegularExpression>

#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
struct RedactionRule {
    QRegularExpression pattern;
    QString replacement;
};

RedactionRule makeRule(const QString &pattern, const QString &replacement)
{
    RedactionRule rule{QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption),
                       replacement};
    rule.pattern.optimize();
    return rule;
}

const std::array<RedactionRule, 4> &redactionRules()
{
    static const std::array rules{
        makeRule(uR"re(\b\d{6,}:[A-Za-z0-9_-]{20,}\b)re"_s, u"[REDACTED_BOT_TOKEN]"_s),
        makeRule(uR"re((?i)(bearer\s+)[A-Za-z0-9._-]+)re"_s, uR"(\1[REDACTED])"_s),
        makeRule(
            uR"re((?i)\b(token|password|passwd|secret|api[_-]?key)\b\s*[:=]\s*[^\\s\"',;]+)re"_s,
            uR"(\1=[REDACTED])"_s),
        makeRule(
            uR"re((?i)(BRACKWEN_[A-Z0-9_]*(TOKEN|PASSWORD|SECRET)[A-Z0-9_]*\s*=\s*)[^\\s\"',;]+)re"_s,
            uR"(\1[REDACTED])"_s),
    };
    return rules;
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
        if (rule.pattern.isValid()) {
            result.replace(rule.pattern, rule.replacement);
        }
    }
    return result;
}

} // namespace bram
