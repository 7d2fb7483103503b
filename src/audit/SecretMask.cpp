// SPDX-License-Identifier: Apache-2.0
#include "audit/SecretMask.h"

#include "audit/SecretNames.h"

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QStringView mask = u"[REDACTED]";
constexpr qsizetype farthest = 100;

/// A program that takes a password behind a short option.
struct PasswordOption {
    QStringView program;
    QStringView option;
    bool canBeApart; ///< from its value, by a blank
};

constexpr std::array<PasswordOption, 19> passwordOptions {{
    {u"mysql", u"-p", false},
    {u"mysqldump", u"-p", false},
    {u"mysqladmin", u"-p", false},
    {u"mysqlimport", u"-p", false},
    {u"mariadb", u"-p", false},
    {u"mariadb-dump", u"-p", false},
    {u"mariadb-admin", u"-p", false},
    {u"7z", u"-p", false},
    {u"7za", u"-p", false},
    {u"7zr", u"-p", false},
    {u"sshpass", u"-p", true},
    {u"login", u"-p", true},
    {u"zip", u"-P", true},
    {u"unzip", u"-P", true},
    {u"redis-cli", u"-a", true},
    {u"ldapsearch", u"-w", true},
    {u"ldapmodify", u"-w", true},
    {u"ldapadd", u"-w", true},
    {u"ldapwhoami", u"-w", true},
}};

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'-' || c == u'_' || c == u'.';
}

bool isQuote(QChar c)
{
    return c == u'"' || c == u'\'';
}

bool endsCommand(QChar c)
{
    return QStringView(u"\n;|&").contains(c);
}

struct Range {
    qsizetype begin = 0;
    qsizetype end = 0;
};

/// Goes through the text once. Looks ahead without limit only for what is then passed over, or for what is then
/// known not to come any more.
class SecretMasker
{
public:
    explicit SecretMasker(QStringView text)
        : m_text(text)
    {
    }

    QString run()
    {
        while (m_at < m_text.size()) {
            const QChar c = m_text[m_at];
            if (isWordCharacter(c)) {
                readWord();
            } else if (c == u'[' && comesAt(m_at, u"[REDACTED")) {
                readMark();
            } else if (c == u':' && comesAt(m_at, u"://")) {
                readAddress();
            } else {
                m_program = endsCommand(c) ? nullptr : m_program;
                ++m_at;
            }
        }
        return m_result += m_text.sliced(m_copied);
    }

private:
    bool comesAt(qsizetype at, QStringView what) const
    {
        return at < m_text.size() && m_text.sliced(at).startsWith(what);
    }
    bool isBlankAt(qsizetype at) const { return at >= m_text.size() || m_text[at].isSpace(); }
    QChar charAt(qsizetype at) const { return at < m_text.size() ? m_text[at] : QChar(); }

    qsizetype skipBlanks(qsizetype at) const
    {
        while (at < m_text.size() && (m_text[at] == u' ' || m_text[at] == u'\t')) {
            ++at;
        }
        return at;
    }

    template<typename Ends>
    qsizetype find(qsizetype at, Ends ends) const
    {
        return std::find_if(m_text.begin() + std::min(at, m_text.size()), m_text.end(), ends)
            - m_text.begin();
    }

    /// Looks a little ahead only.
    template<typename Matches>
    bool comesBeforeBlank(qsizetype at, Matches matches) const
    {
        const QStringView ahead = m_text.sliced(std::min(at, m_text.size())).left(farthest);
        const auto found
            = std::ranges::find_if(ahead, [&](QChar c) { return c.isSpace() || matches(c); });
        return found != ahead.end() && !found->isSpace();
    }

    void hide(Range range)
    {
        if (range.begin < range.end
            && m_text.sliced(range.begin, range.end - range.begin) != u"…") {
            m_result += m_text.sliced(m_copied, range.begin - m_copied);
            m_result += mask;
            m_copied = range.end;
        }
        m_at = std::max(range.end, m_at);
    }

    /// A value without quotes around it, up to a blank or to the quote of what it stands in.
    qsizetype endOfBareValue(qsizetype at) const
    {
        for (; !isBlankAt(at); ++at) {
            if (m_text[at] == u'\\') {
                ++at;
            } else if (isQuote(m_text[at])) {
                const QChar next = charAt(at + 1);
                if (isBlankAt(at + 1) || QStringView(u",;:)}]>|&\"'\\").contains(next)) {
                    return at;
                }
                const qsizetype close = m_text.indexOf(m_text[at], at + 1);
                at = close < 0 ? at : close;
            }
        }
        return std::min(at, m_text.size());
    }

    qsizetype closingQuote(qsizetype at, QChar quote) const
    {
        for (; at < m_text.size(); ++at) {
            if (m_text[at] == quote) {
                return at;
            }
            at += m_text[at] == u'\\' && quote == u'"' ? 1 : 0;
        }
        return -1;
    }

    Range valueAt(qsizetype at) const
    {
        const QChar first = charAt(at);
        if (first == u'\\' && isQuote(charAt(at + 1))) {
            const qsizetype close = m_text.indexOf(m_text.sliced(at, 2), at + 2);
            return close < 0 ? Range {at, endOfBareValue(at)} : Range {at + 2, close};
        }
        const qsizetype close = isQuote(first) ? closingQuote(at + 1, first) : -1;
        if (close < 0) {
            return {at, endOfBareValue(at)};
        }
        const bool goesOn = close + 1 < m_text.size() && isWordCharacter(m_text[close + 1]);
        return goesOn ? Range {at, endOfBareValue(close + 1)} : Range {at + 1, close};
    }

    void hideValue(qsizetype at)
    {
        if (comesAt(at, u"[REDACTED")) {
            m_at = at;
        } else {
            hide(valueAt(at));
        }
    }

    void readWord()
    {
        const qsizetype begin = m_at;
        const qsizetype end = find(begin, [](QChar c) { return !isWordCharacter(c); });
        const QStringView word = m_text.sliced(begin, end - begin);
        if (readPrivateKey(word) || readKey(word) || readPassword(word, end)
            || readNamedValue(word, end) || readCredentials(word, end)) {
            return;
        }
        m_at = end;
        const auto program = std::ranges::find(passwordOptions, word, &PasswordOption::program);
        m_program = program != passwordOptions.end() ? program : m_program;
    }

    bool readPrivateKey(QStringView word)
    {
        constexpr qsizetype longestHeader = 64;
        if (!word.startsWith(u"-----BEGIN")
            || !m_text.sliced(m_at).left(longestHeader).contains(u"PRIVATE KEY-----")) {
            return false;
        }
        const qsizetype end = m_text.indexOf(u"-----END", m_at);
        const qsizetype dashes
            = end < 0 ? -1 : m_text.sliced(end).left(longestHeader).indexOf(u"KEY-----");
        hide({m_at, dashes < 0 ? m_text.size() : end + dashes + 8});
        return true;
    }

    bool readKey(QStringView word)
    {
        // Further inside are no words of their own but parts of a long one.
        constexpr qsizetype mostBefore = 64;
        for (qsizetype i = 0; i < std::min(word.size(), mostBefore); ++i) {
            const bool begins = i == 0 || !word[i - 1].isLetterOrNumber();
            const qsizetype length = begins ? keyLength(word.sliced(i)) : 0;
            if (length > 0) {
                hide({m_at + i, m_at + i + length});
                return true;
            }
        }
        return false;
    }

    /// Name and value, of a variable, an option, a header or a field.
    bool readNamedValue(QStringView name, qsizetype end)
    {
        qsizetype at = end + (charAt(end) == u'\\' && isQuote(charAt(end + 1)) ? 1 : 0);
        const bool isQuoted = isQuote(charAt(at));
        at = isQuoted ? at + 1 : at;
        const qsizetype separator = skipBlanks(at);
        const bool isApart = separator > at;
        const QChar c = charAt(separator);
        if (c == u'=' && isNameOfSecretVariable(name)) {
            at = find(separator, [](QChar sign) { return sign != u'=' && sign != u'>'; });
            hideValue(isApart || isQuoted ? skipBlanks(at) : at);
            return true;
        }
        const QChar next = charAt(separator + 1);
        if (c == u':' && (!isApart || isQuoted) && next != u':' && !comesAt(separator, u"://")) {
            return readHeader(name, skipBlanks(separator + (next == u'=' ? 2 : 1)));
        }
        const bool isOption = name.startsWith(u'-') && name.size() > 2 && isApart && !isQuoted
            && c != u'-' && !endsCommand(c) && !isBlankAt(separator);
        if (isOption && isNameOfSecretOption(name)) {
            hideValue(separator);
            return true;
        }
        return false;
    }

    bool readHeader(QStringView name, qsizetype at)
    {
        const QStringView last = name.sliced(name.lastIndexOf(u'.') + 1);
        const bool isCookie = last.endsWith(u"cookie", Qt::CaseInsensitive);
        if (isCookie || last.endsWith(u"authorization", Qt::CaseInsensitive)) {
            const qsizetype scheme = find(at, [](QChar c) { return !isWordCharacter(c); });
            const qsizetype credentials = skipBlanks(scheme);
            at = credentials > scheme && !isCookie ? credentials : at;
            if (comesAt(at, u"[REDACTED")) {
                m_at = at;
            } else {
                hide({at, find(at, [](QChar c) { return isQuote(c) || c == u'\n'; })});
            }
            return true;
        }
        if (!isBlankAt(at) && isNameOfSecretOption(last)) {
            hideValue(at);
            return true;
        }
        return false;
    }

    /// User and password, as HTTP clients take them; what consists of digits is user and group.
    bool readCredentials(QStringView option, qsizetype end)
    {
        const bool isAttached = option.size() > 2 && option.startsWith(u"-u") && charAt(end) == u':'
            && !isBlankAt(end + 1) && !comesAt(end, u"://");
        const bool isApart = option == u"-u" || option == u"-U" || option == u"--user"
            || option == u"--proxy-user";
        if (!isAttached && !isApart) {
            return false;
        }
        const qsizetype begin = isAttached ? end : skipBlanks(end + (charAt(end) == u'=' ? 1 : 0));
        if (!comesBeforeBlank(begin, [](QChar c) { return c == u':'; })
            || comesBeforeBlank(begin, [](QChar c) { return c == u'/'; })) {
            return false;
        }
        const Range value = isAttached ? Range {m_at + 2, endOfBareValue(end)} : valueAt(begin);
        const QStringView text = m_text.sliced(value.begin, value.end - value.begin);
        const bool hasPassword
            = std::ranges::any_of(text, [](QChar c) { return !c.isDigit() && c != u':'; });
        if (hasPassword) {
            hide(value);
        }
        return hasPassword;
    }

    bool readPassword(QStringView word, qsizetype end)
    {
        if (m_program == nullptr || !word.startsWith(m_program->option)) {
            return false;
        }
        const qsizetype value = m_at + m_program->option.size();
        const bool isApart = value == end && isBlankAt(end);
        if (isApart && !m_program->canBeApart) {
            return false;
        }
        m_program = nullptr;
        hideValue(isApart ? skipBlanks(end) : value);
        return true;
    }

    /// User name and password before the host.
    void readAddress()
    {
        const bool isWeb = m_text.first(m_at).endsWith(u"http", Qt::CaseInsensitive)
            || m_text.first(m_at).endsWith(u"https", Qt::CaseInsensitive);
        const qsizetype begin = m_at + 3;
        m_at = begin;
        const auto endsAddress = [](QChar c) { return c.isSpace() || isQuote(c) || c == u'\\'; };
        const qsizetype end = find(
            begin, [&](QChar c) { return endsAddress(c) || QStringView(u"/?#<>").contains(c); });
        const QStringView authority = m_text.sliced(begin, end - begin);
        const qsizetype host = authority.lastIndexOf(u'@');
        if (host > 0 && (isWeb || authority.first(host).contains(u':'))) {
            hide({begin, begin + host});
            return;
        }
        const qsizetype colon = authority.indexOf(u':');
        const bool isPort = colon < 0 || host >= 0
            || std::ranges::all_of(
                                authority.sliced(colon + 1), [](QChar c) { return c.isDigit(); });
        if (isPort) {
            return;
        }
        // A password that has a slash in it.
        const QStringView ahead = m_text.sliced(begin).left(farthest);
        const auto blank = std::ranges::find_if(ahead, endsAddress);
        const qsizetype sign = ahead.first(blank - ahead.begin()).indexOf(u'@');
        hide({begin, begin + std::max<qsizetype>(sign, 0)});
    }

    /// Of a value that was masked in part, the rest.
    void readMark()
    {
        const qsizetype end = m_text.indexOf(u']', m_at) + 1;
        if (end == 0) {
            m_at = m_text.size();
            return;
        }
        const bool isInAddress = m_text.first(m_at).endsWith(u"://");
        m_at = end;
        const QChar c = charAt(end);
        const bool isNextPair = (c == u',' || c == u';')
            && (isBlankAt(end + 1)
                || comesBeforeBlank(end, [](QChar sign) { return sign == u'=' || sign == u':'; }));
        // Another mark than that of the rules before stands for a whole value.
        const bool mayBePart = m_text.first(end).endsWith(mask) && !isInAddress;
        if (mayBePart && !isNextPair && !QStringView(u")}]>|&").contains(c)) {
            m_result += m_text.sliced(m_copied, end - m_copied);
            m_copied = endOfBareValue(end);
            m_at = m_copied;
        }
    }

    const QStringView m_text;
    QString m_result;
    qsizetype m_copied = 0; ///< up to where the text is in the result, or masked there
    qsizetype m_at = 0;
    const PasswordOption *m_program = nullptr; ///< named last in the command
};
} // namespace

QString withSecretsMasked(const QString &text)
{
    return SecretMasker(text).run();
}

} // namespace bram
