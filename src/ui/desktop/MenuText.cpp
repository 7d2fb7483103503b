// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/MenuText.h"

#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "model/TextRules.h"
#include "ui/language/Words.h"

#include <QCoreApplication>
#include <QDateTime>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
class MenuTextTr
{
    Q_DECLARE_TR_FUNCTIONS(Menu)
};

constexpr qsizetype shortenedLength = 60;
constexpr qsizetype rowLength = 64;
constexpr qsizetype statusRowLength = 100;
constexpr qsizetype mostRows = 10;
/// More of a command is never looked at for a menu; a character may be several units.
constexpr qsizetype mostLookedAt = 8192;
} // namespace

QString menuLabel(const QString &text, MenuDrawing drawing)
{
    QString label = text;
    if (drawing == MenuDrawing::OwnWindow) {
        return label.replace(u'&', u"&&"_s);
    }
    const qsizetype ampersand = label.indexOf(u'&');
    const qsizetype underscore = label.indexOf(u'_');
    if (ampersand < 0 || underscore < 0) {
        label.replace(u'_', u"__"_s);
        // The one that is turned into a mark is an extra one, before the first letter.
        return ampersand < 0 ? label : u'&' + label;
    }
    if (underscore < ampersand) {
        // Turned into "_", it makes a pair with the one that is there, and is no mark.
        label.replace(u'_', u"__"_s);
        label[underscore] = u'&';
        return label;
    }
    // Panels of GTK read a label with a mark twice, so that a pair would be a mark in the second reading, and
    // disappear. Others read once and show each underscore doubled here, which hides nothing.
    return u'&' + label.replace(u'_', u"____"_s);
}

QString shortenedCommand(const QString &command)
{
    const QString looked = command.first(std::min(mostLookedAt, command.size()));
    const qsizetype lineEnd = looked.indexOf(u'\n');
    const QString line = lineEnd < 0 ? looked : looked.first(lineEnd);
    const QString honest = honestLine(line).text;
    const QString beginning = firstCharacters(honest, shortenedLength);
    const bool isWhole = beginning.size() == honest.size() && line.size() == command.size();
    return isWhole ? beginning : beginning + u'…';
}

MenuCommandRows commandRows(const QString &command)
{
    MenuCommandRows result;
    const QString looked = command.first(std::min(mostLookedAt, command.size()));
    result.isWhole = looked.size() == command.size();
    for (const QString &line : honestDisplay(looked).text.split(u'\n')) {
        QString rest = line;
        do {
            if (result.rows.size() == mostRows) {
                result.isWhole = false;
                return result;
            }
            const QString row = firstCharacters(rest, rowLength);
            result.rows += row;
            rest = rest.sliced(row.size());
        } while (!rest.isEmpty());
    }
    return result;
}

QString statusRowText(const QString &line)
{
    const QString beginning = firstCharacters(line, statusRowLength);
    return beginning.size() < line.size() ? beginning + u'…' : line;
}

QString pendingRowText(const ApprovalItem &item)
{
    QStringList parts;
    if (commandRiskLevel(item.command) == CommandRisk::High) {
        parts += MenuTextTr::tr("HIGH RISK");
    }
    if (honestDisplay(item.command.first(std::min(mostLookedAt, item.command.size()))).suspicious) {
        parts += MenuTextTr::tr("misleading characters");
    }
    if (item.expiresAtMs > 0) {
        const auto until = QDateTime::fromMSecsSinceEpoch(item.expiresAtMs);
        parts += MenuTextTr::tr("until %1")
                     .arg(until.toString(until.date() == QDate::currentDate() ? u"HH:mm:ss"_s
                                                                              : u"MM-dd HH:mm"_s));
    }
    const QString command = shortenedCommand(item.command);
    parts += item.agentId && !item.agentId->isEmpty()
        ? firstCharacters(honestLine(*item.agentId).text, 20) + u": "_s + command
        : command;
    return parts.join(u" · "_s);
}

QString historyRowText(const ApprovalHistoryEntry &entry)
{
    return u"%1 · %2 · %3"_s.arg(historyStateWord(entry.state, entry.maker), entry.timestampText(),
                                 shortenedCommand(entry.command));
}

} // namespace bram
