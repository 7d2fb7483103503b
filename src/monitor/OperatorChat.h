// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QObject>
#include <QString>

namespace bram
{

/// The chat of the practice mode, in which the operator is the person with the phone as well. Implemented over
/// the practice Bot API; there only in practice, and shown by both front-ends. Main thread.
class OperatorChat : public QObject
{
    Q_OBJECT

public:
    struct Button {
        int number = 0; ///< for `press`, from 1
        QString text {};

        bool operator==(const Button &) const = default;
    };
    using ButtonRows = QList<QList<Button>>;

    struct Message {
        bool isFromBot = false;
        QString text {};
        ButtonRows buttons {}; ///< under the message

        bool operator==(const Message &) const = default;
    };

    /// Oldest first. Texts are fit to be shown.
    virtual QList<Message> messages() const = 0;
    /// The keys below the chat, each of which says its text.
    virtual ButtonRows keys() const = 0;

    /// False when no button has this number.
    virtual bool press(int number) = 0;
    virtual void say(const QString &text) = 0;

Q_SIGNALS:
    void changed();
    /// What the person with the phone is shown for a moment after a press.
    void answered(const QString &text);
};

} // namespace bram
