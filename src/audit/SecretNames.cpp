// SPDX-License-Identifier: Apache-2.0
#include "audit/SecretNames.h"

#include <QString>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype longestName = 128; // more would be looked at again and again

constexpr std::array<QStringView, 13> secretParts {
    u"password",   u"passwd",     u"passphrase", u"passcode",  u"token",
    u"secret",     u"credential", u"privatekey", u"accesskey", u"apikey",
    u"signingkey", u"sharedkey",  u"licensekey",
};
constexpr std::array<QStringView, 3> moreOfVariables {u"key", u"pass", u"pwd"};
/// Where they are the last of several words, or behind dashes.
constexpr std::array<QStringView, 8> secretWords {u"pass", u"pwd",    u"pw",      u"key",
                                                  u"auth", u"passin", u"passout", u"cookie"};
/// Options that name where a secret is, not the secret.
constexpr std::array<QStringView, 4> endsOfPlaces {u"file", u"path", u"stdin", u"dir"};

template<std::size_t N>
bool containsAny(QStringView text, const std::array<QStringView, N> &parts)
{
    return std::ranges::any_of(parts, [text](QStringView part) { return text.contains(part); });
}

bool isSeparator(QChar c)
{
    return c == u'-' || c == u'_' || c == u'.';
}

/// In lower case and without what separates words, so that all spellings of a name are one.
QString flattened(QStringView name)
{
    QString flat = name.last(std::min(name.size(), longestName)).toString().toLower();
    flat.removeIf(isSeparator);
    return flat;
}

bool namesPlace(QStringView flat)
{
    return std::ranges::any_of(endsOfPlaces,
                               [flat](QStringView end) { return flat.endsWith(end); });
}

struct KeyShape {
    QStringView prefix;
    qsizetype least; ///< units after the prefix
};

constexpr std::array<KeyShape, 29> keyShapes {{
    {u"sk-", 16},    {u"sk_live_", 8},     {u"sk_test_", 8}, {u"rk_live_", 8}, {u"rk_test_", 8},
    {u"whsec_", 16}, {u"ghp_", 16},        {u"gho_", 16},    {u"ghu_", 16},    {u"ghs_", 16},
    {u"ghr_", 16},   {u"github_pat_", 16}, {u"glpat-", 16},  {u"gldt-", 16},   {u"xoxa-", 8},
    {u"xoxb-", 8},   {u"xoxp-", 8},        {u"xoxr-", 8},    {u"xoxs-", 8},    {u"xapp-", 8},
    {u"AKIA", 16},   {u"ASIA", 16},        {u"AIza", 30},    {u"ya29.", 16},   {u"npm_", 30},
    {u"pypi-", 30},  {u"hf_", 30},         {u"dop_v1_", 30}, {u"SG.", 30},
}};

bool isKeyCharacter(QChar c)
{
    return c.unicode() < 0x80 && (c.isLetterOrNumber() || isSeparator(c));
}

/// As three texts in base 64 with dots between them, of which the first begins a JSON object.
bool isWebToken(QStringView word)
{
    constexpr qsizetype shortestPart = 4;
    constexpr qsizetype longestParts = 2048;
    word = word.first(std::min(word.size(), longestParts));
    const qsizetype first = word.indexOf(u'.');
    const qsizetype second = first < 0 ? -1 : word.indexOf(u'.', first + 1);
    return first >= shortestPart && second - first > shortestPart;
}
} // namespace

bool isNameOfSecretVariable(QStringView name)
{
    const QString flat = flattened(name);
    return containsAny(flat, secretParts) || containsAny(flat, moreOfVariables);
}

bool isNameOfSecretOption(QStringView name)
{
    const QString flat = flattened(name);
    if (containsAny(flat, secretParts)) {
        return !namesPlace(flat);
    }
    const qsizetype lastSeparator
        = std::ranges::find_if(name.rbegin(), name.rend(), isSeparator).base() - name.begin();
    const bool hasSeparator = lastSeparator > 0;
    const QString last = flattened(name.sliced(lastSeparator));
    return hasSeparator && std::ranges::find(secretWords, last) != secretWords.end();
}

qsizetype keyLength(QStringView word)
{
    const auto lengthOfRun
        = [word] { return std::ranges::find_if_not(word, isKeyCharacter) - word.begin(); };
    for (const auto &[prefix, least] : keyShapes) {
        if (word.startsWith(prefix)) {
            const qsizetype length = lengthOfRun();
            return length >= prefix.size() + least ? length : 0;
        }
    }
    if (word.startsWith(u"eyJ") && isWebToken(word)) {
        return lengthOfRun();
    }
    return 0;
}

} // namespace bram
