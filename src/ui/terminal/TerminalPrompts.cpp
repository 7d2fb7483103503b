// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalPrompts.h"

#include "model/HonestDisplay.h"
#include "ui/terminal/CommandLine.h"
#include "ui/terminal/TerminalRows.h"
#include "ui/terminal/TerminalText.h"
#include "ui/terminal/TerminalTr.h"
#include "ui/terminal/TerminalVoice.h"
#include "ui/terminal/TypedPath.h"

#include <QFileInfo>
#include <QPointer>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Texts of a question, each of their own lines behind a blank margin: no command of a request and no
/// line of this program looks like it.
TerminalLines paragraphs(const QString &title, const QString &text, int columns)
{
    TerminalLines lines {TerminalLine()};
    appendRows(lines, {}, u"  "_s, honestLine(title).text, LineStyle::Strong, columns,
               RowBreaks::AtBlanks);
    for (const QString &line : text.split(u'\n', Qt::SkipEmptyParts)) {
        appendRows(lines, u"  "_s, u"  "_s, honestLine(line).text, LineStyle::Plain, columns,
                   RowBreaks::AtBlanks);
    }
    return lines;
}

TerminalLines linesOf(const Question &question, int columns)
{
    TerminalLines lines = paragraphs(question.title, question.text, columns);
    for (const QString &note : question.notes) {
        appendRows(lines, u"  "_s, u"  "_s, honestLine(note).text, LineStyle::Plain, columns,
                   RowBreaks::AtBlanks);
    }
    for (qsizetype i = 0; i < question.buttons.size(); ++i) {
        appendRows(lines, u"  %1) "_s.arg(i + 1), u"     "_s,
                   honestLine(question.buttons.at(i)).text, LineStyle::Plain, columns,
                   RowBreaks::AtBlanks);
    }
    const QString how = question.harmless == Question::noButton
        ? TerminalTr::tr("Answer with the number of a choice or its words; an empty line means "
                         "none.")
        : TerminalTr::tr("Answer with the number of a choice or its words.");
    appendRows(lines, u"  "_s, u"  "_s, how, LineStyle::Quiet, columns, RowBreaks::AtBlanks);
    return lines;
}

TerminalLines linesOf(const FileQuestion &question, int columns)
{
    TerminalLines lines
        = paragraphs(question.title,
                     question.suggestedName.isEmpty()
                         ? QString()
                         : TerminalTr::tr("Suggested name: ") + question.suggestedName,
                     columns);
    const QString what = question.kind == FileQuestion::Kind::Folder
        ? TerminalTr::tr("Answer with the path of a folder, beginning with / or . or ~; an empty "
                         "line means none.")
        : TerminalTr::tr("Answer with the path of a file, beginning with / or . or ~; an empty "
                         "line means none.");
    appendRows(lines, u"  "_s, u"  "_s, what, LineStyle::Quiet, columns, RowBreaks::AtBlanks);
    return lines;
}

/// The choice that a line names; -1 for none.
qsizetype choiceMeant(const QStringList &buttons, const QString &line)
{
    const QString typed = line.simplified();
    bool isNumber = false;
    const qsizetype number = typed.toInt(&isNumber);
    if (isNumber) {
        return number >= 1 && number <= buttons.size() ? number - 1 : -1;
    }
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        if (buttons.at(i).simplified().compare(typed, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    return -1;
}

Question replaceQuestion(const QString &path)
{
    return {.title = TerminalTr::tr("Replace the file?"),
            .text = TerminalTr::tr("There is a file already: ") + path,
            .buttons = {TerminalTr::tr("Replace"), TerminalTr::tr("Keep it")},
            .harmless = 1};
}
} // namespace

TerminalPrompts::TerminalPrompts(TerminalVoice &voice)
    : m_voice(voice)
{
}

QCoro::Task<> TerminalPrompts::inform(Alert alert)
{
    m_voice.print(paragraphs(alert.title, alert.text, m_voice.columns()));
    co_return;
}

QCoro::Task<qsizetype> TerminalPrompts::ask(Question question)
{
    const qsizetype answer = co_await open(question);
    co_return answer;
}

QCoro::Task<std::optional<QString>> TerminalPrompts::askForFile(FileQuestion question)
{
    const QPointer self(this);
    while (self) {
        const std::optional<QString> path = co_await self->open(question);
        if (!path || question.kind != FileQuestion::Kind::SaveFile || !QFileInfo::exists(*path)) {
            co_return path;
        }
        if (!self) {
            break;
        }
        const bool agreed = co_await self->agreeToReplace(*path);
        if (agreed) {
            co_return path;
        }
    }
    co_return std::nullopt;
}

QCoro::Task<bool> TerminalPrompts::agreeToReplace(QString path)
{
    const Question question = replaceQuestion(path);
    const qsizetype answer = co_await open(question);
    co_return answer == 0;
}

QCoro::Task<bool> TerminalPrompts::openFile(QString path)
{
    m_voice.say(TerminalTr::tr("The file: ") + path);
    co_return true;
}

QCoro::Task<std::optional<QString>> TerminalPrompts::askForSecret(QString text)
{
    if (m_isStopped || m_secret) {
        co_return std::nullopt;
    }
    const ReplySource<std::optional<QString>> source {std::nullopt};
    m_secret.emplace(source);
    m_voice.printQuestion(messageLines(text, m_voice.columns()));
    m_voice.hideInput(true);
    auto reply = source.reply();
    std::optional<QString> answer = co_await reply;
    co_return answer;
}

void TerminalPrompts::takeSecret(const QString &line)
{
    if (const auto source = std::exchange(m_secret, std::nullopt)) {
        m_voice.hideInput(false);
        const QString secret = line.trimmed();
        source->answer(secret.isEmpty() ? std::nullopt : std::optional(secret));
    }
}

Reply<qsizetype> TerminalPrompts::open(const Question &question)
{
    const ReplySource<qsizetype> source(question.harmless);
    if (m_isStopped) {
        // Whoever ends the input at once, as a script does, is still told what it was about.
        m_voice.print(paragraphs(question.title, question.text, m_voice.columns()));
        m_voice.say(TerminalTr::tr("Not answered: the input has ended."), LineStyle::Warning);
        return source.reply();
    }
    enqueue({.lines = linesOf(question, m_voice.columns()),
             .takeAnswer = [buttons = question.buttons, harmless = question.harmless,
                            source](const QString &line) -> QString {
                 if (line.trimmed().isEmpty()) {
                     if (harmless == Question::noButton) {
                         source.answer(harmless);
                         return {};
                     }
                     return TerminalTr::tr("The question is still open.");
                 }
                 const qsizetype choice = choiceMeant(buttons, line);
                 if (choice < 0) {
                     return TerminalTr::tr("Neither a command nor one of the choices 1 to %1: %2")
                         .arg(QString::number(buttons.size()), beginningOfTyped(line));
                 }
                 source.answer(choice);
                 return {};
             }});
    return source.reply();
}

Reply<std::optional<QString>> TerminalPrompts::open(const FileQuestion &question)
{
    const ReplySource<std::optional<QString>> source {std::nullopt};
    enqueue({.lines = linesOf(question, m_voice.columns()),
             .takeAnswer = [kind = question.kind, source](const QString &line) -> QString {
                 const QString typed = line.trimmed();
                 if (typed.isEmpty()) {
                     source.answer(std::nullopt);
                     return {};
                 }
                 if (!u"/.~"_s.contains(typed.front())) {
                     return TerminalTr::tr("Neither a command nor a path beginning with / or . or "
                                           "~: ")
                         + beginningOfTyped(typed);
                 }
                 const auto path = usableTypedPath(typed, kind);
                 if (!path) {
                     return path.error().message;
                 }
                 source.answer(*path);
                 return {};
             }});
    return source.reply();
}

void TerminalPrompts::enqueue(const OpenQuestion &question)
{
    if (m_isStopped) {
        return; // its source answers by going
    }
    m_questions.push_back(question);
    if (m_questions.size() == 1) {
        showFirst();
    }
}

void TerminalPrompts::recall()
{
    if (isAsking()) {
        showFirst();
    }
}

void TerminalPrompts::showFirst()
{
    m_voice.readWaiting();
    m_voice.printQuestion(m_questions.front().lines);
    m_shownBy = m_voice.given();
}

void TerminalPrompts::takeLine(const QString &text, DialogueMoment begunAt, const QString &fault)
{
    if (begunAt < m_shownBy) {
        m_voice.say(TerminalTr::tr("Not answered: the question came after the line was begun; type "
                                   "it again."),
                    LineStyle::Warning);
        return;
    }
    if (const QString noAnswer = m_questions.front().takeAnswer(text); !noAnswer.isEmpty()) {
        m_voice.say(fault.isEmpty() ? noAnswer : fault, LineStyle::Warning);
        return;
    }
    m_questions.pop_front();
    if (isAsking()) {
        showFirst();
    }
}

void TerminalPrompts::stop()
{
    m_isStopped = true;
    m_questions.clear(); // their sources answer by going
    takeSecret({});
}

} // namespace bram
