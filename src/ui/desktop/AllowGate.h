// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QObject>
#include <QTimer>

class QAbstractButton;
class QLabel;

namespace bram
{

class CommandTextView;
class StoredSwitch;

/// Keeps the buttons that allow off until the command beside them has been read: its end has been in view, and
/// it has been there for a moment, so that no click that was meant for what was there before allows it.
class AllowGate final : public QObject
{
    Q_OBJECT

public:
    /// `allow` are off at first; `hint` says what they wait for.
    AllowGate(CommandTextView &command, const QList<QAbstractButton *> &allow, QLabel &hint,
              QObject *parent);

    /// Where it is on, the end need not have been in view.
    void setAllowPartlyShown(const StoredSwitch &allowPartlyShown);

    /// Another request is shown, which waits for a decision.
    void begin();
    /// What is shown cannot be decided.
    void close();
    /// In the language of the moment.
    void retranslate();

private:
    void apply();

    CommandTextView &m_command;
    const QList<QAbstractButton *> m_allow;
    QLabel &m_hint;
    const StoredSwitch *m_allowPartlyShown = nullptr;
    QTimer m_moment; ///< of being there
    bool m_isPending = false;
};

} // namespace bram
