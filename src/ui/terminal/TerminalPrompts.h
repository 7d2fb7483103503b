// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/OperatorPrompts.h"
#include "system/Reply.h"
#include "ui/terminal/RequestNumbers.h"
#include "ui/terminal/TerminalLine.h"

#include <QObject>

#include <deque>
#include <functional>
#include <optional>

namespace bram
{

class TerminalVoice;

/// Tells and asks the operator in the terminal's dialogue, one question at a time. Main thread.
///
/// What a line means while a question is open is never in doubt: a line that is a command is
/// one, and only another line can be an answer. The answer is the number of a choice, which is no
/// command, or its words, or an empty line where the question can be left without a choice; of a file question, a path beginning with / or . or ~, or an empty line for none.
/// A line that was begun before the question was shown does not answer it.
class TerminalPrompts final : public QObject, public OperatorPrompts
{
    Q_OBJECT

public:
    explicit TerminalPrompts(TerminalVoice &voice);

    QCoro::Task<> inform(Alert alert) override;
    QCoro::Task<qsizetype> ask(Question question) override;
    QCoro::Task<std::optional<QString>> askForFile(FileQuestion question) override;
    /// There is nothing here to open it with: says where it is.
    QCoro::Task<bool> openFile(QString path) override;
    /// Shows the open question again.
    void recall() override;

    /// A text that is not shown while it is typed, blanks around it removed; nothing for an empty line. The next
    /// line is the answer, whenever it was begun, also before one to a question.
    QCoro::Task<std::optional<QString>> askForSecret(QString text);
    bool isAskingForSecret() const { return m_secret.has_value(); }
    /// Does nothing when none is asked for.
    void takeSecret(const QString &line);

    /// Whether the file at `path`, which is there, may be replaced.
    QCoro::Task<bool> agreeToReplace(QString path);

    bool isAsking() const { return !m_questions.empty(); }
    /// Takes a line, which is no command, for an answer to the open question. `fault`: what to say when it is none;
    /// empty for the usual words.
    void takeLine(const QString &text, DialogueMoment begunAt, const QString &fault = {});

    /// Answers all that is asked, now and later, as one who turns away. What operations tell is still said.
    void stop();

private:
    /// One that is open or waits to be.
    struct OpenQuestion {
        TerminalLines lines;
        /// Takes a line; why it is no answer, empty when it was one.
        std::function<QString(const QString &text)> takeAnswer;
    };

    Reply<qsizetype> open(const Question &question);
    Reply<std::optional<QString>> open(const FileQuestion &question);
    void enqueue(const OpenQuestion &question);
    void showFirst();

    TerminalVoice &m_voice;
    std::deque<OpenQuestion> m_questions; ///< the first one is shown
    DialogueMoment m_shownBy = 0; ///< the first one
    std::optional<ReplySource<std::optional<QString>>> m_secret; ///< asked for
    bool m_isStopped = false;
};

} // namespace bram
