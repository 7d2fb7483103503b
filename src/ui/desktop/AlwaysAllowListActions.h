// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGroupBox>

#include <array>

class QPushButton;

namespace bram
{

/// What can be done with the whole always-allow list.
class AlwaysAllowListActions final : public QGroupBox
{
    Q_OBJECT

public:
    enum Action {
        Load,
        Register,
        AddAll,
        Backup,
        Restore,
        Clear,
        ActionCount,
    };

    explicit AlwaysAllowListActions(QWidget *parent = nullptr);

    void retranslate();

Q_SIGNALS:
    void requested(bram::AlwaysAllowListActions::Action action);

protected:
    void changeEvent(QEvent *event) override;

private:
    std::array<QPushButton *, ActionCount> m_buttons;
};

} // namespace bram
