// SPDX-License-Identifier: Apache-2.0
#include "allowlist/ExactJson.h"

#include <QUtf8StringView>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int deepestLevel = 256;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int hexValue(char c)
{
    return isDigit(c)            ? c - '0'
        : (c >= 'a' && c <= 'f') ? c - 'a' + 10
        : (c >= 'A' && c <= 'F') ? c - 'A' + 10
                                 : -1;
}

/// Reads one text from its beginning to its end. Each step moves on and is false where the grammar is
/// broken.
class Parser
{
public:
    explicit Parser(const QByteArray &source)
        : m_begin(source.constData())
        , m_at(m_begin + (source.startsWith(byteOrderMark) ? byteOrderMark.size() : 0))
        , m_end(m_begin + source.size())
    {
    }

    bool document(ExactJson &root)
    {
        skipBlanks();
        if (!value(root, 0)) {
            return false;
        }
        skipBlanks();
        return m_at == m_end;
    }

    qsizetype offset() const { return m_at - m_begin; }

private:
    char next() const { return m_at < m_end ? *m_at : '\0'; }

    void skipBlanks()
    {
        while (m_at < m_end && (*m_at == ' ' || *m_at == '\t' || *m_at == '\n' || *m_at == '\r')) {
            ++m_at;
        }
    }

    bool take(char wanted)
    {
        if (m_at == m_end || *m_at != wanted) {
            return false;
        }
        ++m_at;
        return true;
    }

    bool takeAfterBlanks(char wanted)
    {
        skipBlanks();
        return take(wanted);
    }

    bool value(ExactJson &result, int level)
    {
        switch (next()) {
        case '{':
            return level < deepestLevel && object(result, level);
        case '[':
            return level < deepestLevel && array(result, level);
        case '"':
            result.kind = ExactJson::Kind::String;
            return string(result.token);
        case 't':
            return word("true", result);
        case 'f':
            return word("false", result);
        case 'n':
            return word("null", result);
        default:
            return number(result);
        }
    }

    bool object(ExactJson &result, int level)
    {
        result.kind = ExactJson::Kind::Object;
        ++m_at;
        if (takeAfterBlanks('}')) {
            return true;
        }
        do {
            skipBlanks();
            if (next() != '"' || !string(result.keys.emplace_back()) || !takeAfterBlanks(':')) {
                return false;
            }
            skipBlanks();
            if (!value(result.values.emplace_back(), level + 1)) {
                return false;
            }
        } while (takeAfterBlanks(','));
        return take('}');
    }

    bool array(ExactJson &result, int level)
    {
        result.kind = ExactJson::Kind::Array;
        ++m_at;
        if (takeAfterBlanks(']')) {
            return true;
        }
        do {
            skipBlanks();
            if (!value(result.values.emplace_back(), level + 1)) {
                return false;
            }
        } while (takeAfterBlanks(','));
        return take(']');
    }

    bool string(QByteArray &token)
    {
        const char *const begin = m_at++;
        while (m_at < m_end && *m_at != '"') {
            if (static_cast<unsigned char>(*m_at) < 0x20 || (*m_at == '\\' && !escape())) {
                return false;
            }
            ++m_at;
        }
        if (!take('"')) {
            return false;
        }
        token = QByteArray::fromRawData(begin, m_at - begin);
        return true;
    }

    /// Stops at the last character of the escape.
    bool escape()
    {
        ++m_at;
        if (next() == 'u') {
            for (int digit = 0; digit < 4; ++digit) {
                ++m_at;
                if (hexValue(next()) < 0) {
                    return false;
                }
            }
            return true;
        }
        return next() != '\0' && std::strchr("\"\\/bfnrt", next()) != nullptr;
    }

    bool word(const char *wanted, ExactJson &result)
    {
        const auto length = static_cast<qsizetype>(std::strlen(wanted));
        if (m_end - m_at < length || std::memcmp(m_at, wanted, std::strlen(wanted)) != 0) {
            return false;
        }
        result.token = QByteArray::fromRawData(m_at, length);
        m_at += length;
        return true;
    }

    bool digits()
    {
        const char *const begin = m_at;
        while (isDigit(next())) {
            ++m_at;
        }
        return m_at != begin;
    }

    bool number(ExactJson &result)
    {
        const char *const begin = m_at;
        take('-');
        if (!take('0') && !digits()) {
            return false;
        }
        if (take('.') && !digits()) {
            return false;
        }
        if (take('e') || take('E')) {
            if (!take('+')) {
                take('-');
            }
            if (!digits()) {
                return false;
            }
        }
        result.token = QByteArray::fromRawData(begin, m_at - begin);
        return true;
    }

    const char *m_begin;
    const char *m_at;
    const char *m_end;
};

QString decoded(const QByteArray &token)
{
    const QString raw = QString::fromUtf8(token.constData() + 1, token.size() - 2);
    if (!raw.contains(u'\\')) {
        return raw;
    }
    QString text;
    text.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        if (raw[i] != u'\\') {
            text += raw[i];
            continue;
        }
        ++i;
        switch (raw[i].unicode()) {
        case u'b':
            text += u'\b';
            break;
        case u'f':
            text += u'\f';
            break;
        case u'n':
            text += u'\n';
            break;
        case u'r':
            text += u'\r';
            break;
        case u't':
            text += u'\t';
            break;
        case u'u':
            text += QChar(QStringView(raw).sliced(i + 1, 4).toUShort(nullptr, 16));
            i += 4;
            break;
        default:
            text += raw[i];
        }
    }
    return text;
}

QByteArray encoded(QStringView text)
{
    QString result = u"\""_s;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (character == u'"' || character == u'\\') {
            result += u'\\';
            result += character;
        } else if (character.isHighSurrogate() && i + 1 < text.size()
                   && text[i + 1].isLowSurrogate()) {
            result += character;
            result += text[++i];
        } else if (character == u'\n') {
            result += u"\\n";
        } else if (character == u'\t') {
            result += u"\\t";
        } else if (character < u' ' || character.isSurrogate()) {
            result += u"\\u%1"_s.arg(uint(character.unicode()), 4, 16, QChar(u'0'));
        } else {
            result += character;
        }
    }
    return (result + u'"').toUtf8();
}

void write(QByteArray &out, const ExactJson &value, qsizetype level)
{
    const bool isObject = value.isObject();
    if (!isObject && !value.isArray()) {
        out += value.token;
        return;
    }
    out += isObject ? '{' : '[';
    std::vector<std::size_t> order(value.values.size());
    std::iota(order.begin(), order.end(), std::size_t {0});
    if (isObject) {
        std::vector<QString> names;
        std::ranges::transform(value.keys, std::back_inserter(names), decoded);
        std::ranges::stable_sort(order, {},
                                 [&](std::size_t i) -> const QString & { return names[i]; });
    }
    bool isFirst = true;
    for (const std::size_t i : order) {
        out += isFirst ? "\n" : ",\n";
        isFirst = false;
        out.append(2 * (level + 1), ' ');
        if (isObject) {
            out += value.keys[i];
            out += ": ";
        }
        write(out, value.values[i], level + 1);
    }
    if (!isFirst) {
        out += '\n';
        out.append(2 * level, ' ');
    }
    out += isObject ? '}' : ']';
}
} // namespace

ExactJson ExactJson::string(const QString &text)
{
    return {.kind = Kind::String, .token = encoded(text)};
}

QString ExactJson::text() const
{
    return decoded(token);
}

const ExactJson *ExactJson::member(const QString &name) const
{
    for (std::size_t i = keys.size(); i-- > 0;) {
        if (decoded(keys[i]) == name) {
            return &values[i];
        }
    }
    return nullptr;
}

ExactJson *ExactJson::member(const QString &name)
{
    return const_cast<ExactJson *>(std::as_const(*this).member(name));
}

ExactJson &ExactJson::setMember(const QString &name, ExactJson value)
{
    if (auto *known = member(name)) {
        return *known = std::move(value);
    }
    keys.push_back(encoded(name));
    return values.emplace_back(std::move(value));
}

std::expected<ExactJsonDocument, Error> parseExactJson(const QByteArray &source)
{
    if (!QUtf8StringView(source).isValidUtf8()) {
        return std::unexpected(Error {u"not UTF-8"_s});
    }
    ExactJsonDocument document {.source = source, .root = {}};
    Parser parser(document.source);
    if (!parser.document(document.root)) {
        return std::unexpected(Error {u"not JSON at byte %1"_s.arg(parser.offset())});
    }
    return document;
}

QByteArray prettyText(const ExactJson &value)
{
    QByteArray text;
    write(text, value, 0);
    return text + '\n';
}

} // namespace bram
