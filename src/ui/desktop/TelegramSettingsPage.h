// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/SettingsPage.h"

#include <QCheckBox>

namespace bram
{

class SharedPollingSetting;

/// How decisions by chat work.
class TelegramSettingsPage final : public SettingsPage
{
    Q_OBJECT

public:
    explicit TelegramSettingsPage(SharedPollingSetting &sharedPolling);

    QString title() const override;
    void refresh() override;

protected:
    void retranslate() override;

private:
    SharedPollingSetting &m_sharedPolling;
    QCheckBox *m_allow;
    QLabel *m_problem;
    QLabel *m_meaning;
};

} // namespace bram
