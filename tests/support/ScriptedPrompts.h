// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/OperatorPrompts.h"

#include <QList>

namespace bram::test
{

/// An operator whose answers a test has written down; without one, they turn away.
class ScriptedPrompts final : public OperatorPrompts
{
public:
    QCoro::Task<> inform(Alert alert) override
    {
        alerts.append(alert);
        co_return;
    }
    QCoro::Task<qsizetype> ask(Question question) override
    {
        questions.append(question);
        co_return answers.isEmpty() ? question.harmless : answers.takeFirst();
    }
    QCoro::Task<std::optional<QString>> askForFile(FileQuestion question) override
    {
        fileQuestions.append(question);
        std::optional<QString> answer;
        if (!files.isEmpty()) {
            answer = files.takeFirst();
        }
        co_return answer;
    }
    QCoro::Task<bool> openFile(QString path) override
    {
        opened.append(path);
        co_return canOpen;
    }

    QList<qsizetype> answers;
    QStringList files;
    QList<Alert> alerts;
    QList<Question> questions;
    QList<FileQuestion> fileQuestions;
    QStringList opened;
    bool canOpen = true;
};

} // namespace bram::test
