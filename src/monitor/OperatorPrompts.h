// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// Something the operator is told after an operation of theirs.
struct Alert {
    QString title;
    QString text;
};

/// A question with buttons, in their order. `harmless` is the answer of who turns away from it: Escape, a
/// closed window, the end of the input.
struct Question {
    /// For `harmless`, where turning away is none of the answers offered.
    static constexpr qsizetype noButton = -1;

    QString title;
    QString text;
    QStringList buttons;
    qsizetype harmless = 0;
    /// What the question is about, below the text and each on a line of its own. May be from outside.
    QStringList notes {};
    /// A box to tick, off at first. While it is on, `needsTick` is the only answer beside the harmless one;
    /// while it is off, that one is none. Where there are no boxes, all are offered: their words say it.
    QString tick {};
    qsizetype needsTick = noButton;
};

/// Which file or folder an operation is about.
struct FileQuestion {
    enum class Kind {
        SaveFile, ///< may be new; one that exists is replaced after the operator has agreed
        OpenFile, ///< has to exist
        Folder, ///< may be made in the dialog
    };

    Kind kind = Kind::SaveFile;
    QString title;
    QString suggestedName; ///< of a file to save, without folder
    QString acceptLabel; ///< of the button that takes the choice; empty: the platform's own
    /// Each operation remembers its last folder under a name of its own.
    QString rememberedAs;
};

/// How operations of the operator tell and ask. Implemented by the desktop (dialogs) and the terminal (lines
/// on its two streams); tests answer from a script. Called by the operations in `monitor/`, on the main
/// thread; texts are in the language of the moment. Nothing blocks: requests go on arriving and can be
/// decided while a question is open. Questions come one after the other, in the order of the calls.
///
/// A task ends when the operator has answered, or with the answer of who turns away when the program
/// ends. Parameters are values because they live on in a coroutine.
class OperatorPrompts
{
public:
    virtual ~OperatorPrompts() = default;

    virtual QCoro::Task<> inform(Alert alert) = 0;
    /// The index of the button, or `Question::harmless`.
    virtual QCoro::Task<qsizetype> ask(Question question) = 0;
    /// An absolute path, or nothing when the operator has chosen none.
    virtual QCoro::Task<std::optional<QString>> askForFile(FileQuestion question) = 0;
    /// Lets the operator read a text file that was written for them: in the desktop's program for it, or by saying
    /// where it is where there is no desktop. False when that failed.
    virtual QCoro::Task<bool> openFile(QString path) = 0;
    /// What is asked is wanted again, and comes before the operator's eyes where it may have gone from them.
    virtual void recall() { }
};

} // namespace bram
