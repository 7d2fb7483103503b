// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// A point in the terminal's dialogue: how much the operator had been shown. Grows, never falls.
using DialogueMoment = qint64;

/// Which request a typed text means.
struct RequestLookup {
    enum class Kind {
        Found,
        Unknown, ///< no request is meant
        Ambiguous, ///< more than one could be meant
        Gone, ///< the number of a request that is no longer pending
    };

    Kind kind = Kind::Unknown;
    ApprovalItem item; ///< of `Found`
    int number = 0; ///< of `Gone`

    bool operator==(const RequestLookup &) const = default;
};

/// Whether a line may decide a request.
enum class Answerability {
    Answerable,
    ShownInPart, ///< the operator has seen its beginning only
    NotShown, ///< the operator has not seen it
    ShownSince, ///< shown only after the line was begun
    ChangedSinceShown, ///< not what the operator has seen
};

/// How much of a request's command has been shown.
enum class ShownExtent {
    Part,
    Whole,
};

/// The numbers under which the operator knows requests, and what they had seen of them at which moment.
///
/// A request gets its number when it is first shown; numbers are never reused nor shifted. A request
/// that comes back after it was gone, even under the same id, is a new one.
class RequestNumbers
{
public:
    /// The number to show a request under.
    int give(const QString &approvalId);

    /// Notes that the operator is shown this question, and at which moment the last of it was out.
    void show(const ApprovalItem &item, DialogueMoment shownBy,
              ShownExtent extent = ShownExtent::Whole);

    /// Whether this question has been shown.
    bool isShown(const ApprovalItem &item) const;
    /// Whether something else has been shown under this id.
    bool isChanged(const ApprovalItem &item) const;

    /// The request's number, also for a while after it is gone; nothing when it never had one.
    std::optional<int> number(const QString &approvalId) const;

    /// Notes that a request is no longer pending.
    void forget(const QString &approvalId, DialogueMoment goneAt);
    /// Ids that have a number and are not noted as gone.
    QStringList knownIds() const { return m_shown.keys(); }

    /// Finds the request that `text` names on a line begun at `begunAt`: an id, a number (`3`, `#3`) or
    /// the beginning of exactly one id. Digits alone are a number or, where no such number was ever given, a
    /// whole id, never a beginning: a number must not meet another request, mistyped or late. A text that fits in two ways is ambiguous, and so
    /// is one that became unique only because another request went away since the line was begun.
    RequestLookup find(const QString &text, const QList<ApprovalItem> &pending,
                       DialogueMoment begunAt) const;

    Answerability answerability(const ApprovalItem &item, DialogueMoment begunAt) const;

private:
    struct Shown {
        int number = 0;
        std::optional<ApprovalItem> item; ///< nothing until it has been shown
        DialogueMoment at = 0;
        std::optional<DialogueMoment> wholeAt {}; ///< nothing while only a part has been
    };
    struct Gone {
        int number = 0;
        QString approvalId;
        DialogueMoment at = 0;
    };

    /// The number that `text` is, 0 for one that was never given; nothing for what is no number.
    std::optional<int> numberMeant(const QString &text) const;
    RequestLookup findNumbered(const QString &text, int number, const QList<ApprovalItem> &pending,
                               DialogueMoment begunAt) const;

    QHash<QString, Shown> m_shown;
    QList<Gone> m_gone; ///< the latest ones, oldest first
    int m_lastNumber = 0;
};

} // namespace bram
