// SPDX-License-Identifier: Apache-2.0
#include "model/HonestDisplay.h"
#include "telegram/ChatText.h"
#include "telegram/PendingMessage.h"

#include <QCoreApplication>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
class WholeTr
{
    Q_DECLARE_TR_FUNCTIONS(TelegramChat)
};

constexpr qsizetype maxMessages = 10;
/// What a message has left when its headline, and a word about the token, have their room.
constexpr qsizetype maxBodyUnits = 3600;
constexpr qsizetype idCharacters = 60;
constexpr qsizetype maxIdUnits = 120;
constexpr qsizetype agentCharacters = 60;
constexpr qsizetype maxAgentUnits = 100;
constexpr qsizetype startUnits = 2; ///< of "│ "
/// A line that goes on is rather cut before a word than in it, if that costs no more than this.
constexpr qsizetype longestWord = 200;

/// Where to cut a line of which at most `room` units fit; after the first one.
qsizetype cutOf(const QString &line, qsizetype room)
{
    const qsizetype blank = line.lastIndexOf(u' ', room);
    const qsizetype wanted = blank > room - longestWord && blank > 0 ? blank : room;
    const qsizetype cut = cutBefore(line, wanted);
    return cut > 0 ? cut : room;
}

/// The lines of an honest text, spread over texts that fit into a message.
QStringList bodiesOf(const QString &shown)
{
    QStringList bodies;
    QString body;
    const auto endBody = [&] {
        bodies.append(body);
        body.clear();
    };
    for (const QString &line : shown.split(u'\n')) {
        QString rest = line;
        QString start = u"│ "_s;
        do {
            if (!body.isEmpty() && body.size() + 1 + startUnits + rest.size() > maxBodyUnits) {
                endBody();
            }
            const bool fits = startUnits + rest.size() <= maxBodyUnits;
            const qsizetype cut = fits ? rest.size() : cutOf(rest, maxBodyUnits - startUnits);
            body += (body.isEmpty() ? QString() : u"\n"_s) + start + rest.first(cut);
            rest = rest.sliced(cut);
            start = u"┆ "_s;
        } while (!rest.isEmpty());
    }
    endBody();
    return bodies;
}
} // namespace

WholeCommand renderWholeCommand(const TelegramApprovalEntry &entry, const ChatTerms &terms)
{
    const QString id = honestCut(entry.approvalId, idCharacters, maxIdUnits);
    const WholeCommand tooLong {
        {WholeTr::tr("BRAM request %1: the command has %2 characters, too many for a chat. "
                     "It can be denied here, and read where BRAM runs.")
             .arg(id)
             .arg(entry.command.size())},
        false};
    // Long ones are sorted out before anything walks through them.
    if (entry.command.size() > maxMessages * maxBodyUnits) {
        return tooLong;
    }
    const auto clean = withoutToken(entry.command, terms.mask);
    QString shown = honestDisplay(clean.value_or(entry.command)).text;
    shown.replace(u'│', u"⟨U+2502⟩"_s);
    shown.replace(u'┆', u"⟨U+2506⟩"_s);
    const QStringList bodies = bodiesOf(shown);
    if (bodies.size() > maxMessages) {
        return tooLong;
    }
    WholeCommand whole {{}, !clean};
    QString tags = entry.isHighRisk ? u"[HIGH] "_s : QString();
    if (entry.agentId) {
        tags += u'[' + honestCut(*entry.agentId, agentCharacters, maxAgentUnits) + u"] "_s;
    }
    for (qsizetype i = 0; i < bodies.size(); ++i) {
        const QString headline = bodies.size() == 1
            ? WholeTr::tr("BRAM request %1:").arg(id)
            : WholeTr::tr("BRAM request %1, part %2 of %3:").arg(id).arg(i + 1).arg(bodies.size());
        whole.messages.append(tags + headline + u'\n' + bodies.at(i));
    }
    if (clean) {
        whole.messages.last() += u'\n'
            + WholeTr::tr("The bot's own token stands in it, which is sent to no chat. It can be "
                          "denied here, and read where BRAM runs.");
    }
    return whole;
}

} // namespace bram
