// SPDX-License-Identifier: Apache-2.0
#include "model/CommandRules.h"

#include "model/LeadingAssignments.h"
#include "model/TextRules.h"

#include <QStringBuilder>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::array<QStringView, 15> highRiskParts {
    u"sudo ",  u"rm -rf",    u"diskutil erase", u"mkfs",     u"dd if=", u"curl ", u"wget ", u"| sh",
    u"| bash", u"chmod 777", u"payment",        u"checkout", u"stripe", u"송금",  u"결제",
};

constexpr std::array<QStringView, 21> sensitiveParts {
    u"sudo",
    u"codesign",
    u"security",
    u"spctl",
    u"csrutil",
    u"launchctl",
    u"systemextensionsctl",
    u"profiles",
    u"chmod",
    u"chown",
    u"xattr",
    u"defaults write",
    u"diskutil",
    u"installer",
    u"networksetup",
    u"ifconfig",
    u"pfctl",
    u"rm -rf",
    u"/etc/",
    u"/system/",
    u"/library/launchdaemons",
};

/// Which characters stand at a place of the parts, a bit for each, shared by those with the same last six
/// bits.
template<std::size_t N>
consteval quint64 charactersAt(qsizetype place, const std::array<QStringView, N> &parts)
{
    quint64 bits = 0;
    for (const QStringView part : parts) {
        bits |= Q_UINT64_C(1) << (part.at(place).unicode() % 64);
    }
    return bits;
}

constexpr bool hasBit(quint64 bits, QChar character)
{
    return (bits >> (character.unicode() % 64) & 1) != 0;
}

/// One pass over the text, quick where no part can begin: every event on record needs the risk, and commands
/// can be long.
template<const auto &parts>
bool containsAny(QStringView text)
{
    constexpr quint64 first = charactersAt(0, parts);
    constexpr quint64 second = charactersAt(1, parts); // each part has two
    for (; text.size() > 1; text = text.sliced(1)) {
        if (!hasBit(first, text[0]) || !hasBit(second, text[1])) {
            continue;
        }
        for (const QStringView part : parts) {
            if (part.front() == text.front() && text.startsWith(part)) {
                return true;
            }
        }
    }
    return false;
}

constexpr qsizetype mostNames = 3;
constexpr qsizetype maxNameUnits = 40;
constexpr qsizetype maxPreviewUnits = 200;

/// The last path component of the first word. What stands behind a "=" in it is no program's name but a value.
QString programOf(QStringView command)
{
    const auto blank = std::ranges::find_if(command, [](QChar c) { return c.isSpace(); });
    const QStringView word = command.first(blank - command.begin());
    const QStringView path = word.first(std::ranges::find(word, u'=') - word.begin());
    QStringView program = path;
    while (program.size() > 1 && program.endsWith(u'/')) {
        program.chop(1);
    }
    if (program.size() > 1) {
        program = program.sliced(program.lastIndexOf(u'/') + 1);
    }
    return program % (path.size() < word.size() ? u"=…"_s : QString())
        % (blank != command.end() ? u" …"_s : QString());
}
} // namespace

QString rawText(CommandRisk risk)
{
    return risk == CommandRisk::High ? u"high"_s : u"low"_s;
}

CommandRisk commandRiskLevel(QStringView command)
{
    return containsAny<highRiskParts>(command.toString().toLower()) ? CommandRisk::High
                                                                    : CommandRisk::Low;
}

bool isSecuritySensitiveCommand(QStringView command)
{
    const QString lowered = command.toString().toLower();
    return lowered == "*"_L1 || lowered == "all"_L1 || lowered.contains("wildcard"_L1)
        || containsAny<sensitiveParts>(lowered);
}

QString commandPreview(QStringView command)
{
    const auto [names, rest] = leadingAssignments(command.trimmed());
    QString preview;
    for (const QStringView name : names.first(std::min(names.size(), mostNames))) {
        preview += shortened(name, maxNameUnits) % u"=… "_s;
    }
    preview += rest ? programOf(*rest) : u"…"_s;
    return shortened(QStringView(preview).trimmed(), maxPreviewUnits);
}

} // namespace bram
