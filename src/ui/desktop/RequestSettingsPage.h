// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/SettingsPage.h"

#include <QCheckBox>

namespace bram
{

class StoredSwitch;

/// What the operator may switch on at their own risk: where requests may be allowed, and where they come from.
class RequestSettingsPage final : public SettingsPage
{
    Q_OBJECT

public:
    RequestSettingsPage(StoredSwitch &allowPartlyShown, StoredSwitch &unencryptedGateway);

    QString title() const override;
    void refresh() override;

protected:
    void retranslate() override;

private:
    struct Row {
        StoredSwitch &setting;
        QCheckBox *box;
        QLabel *problem;
        QLabel *meaning;
    };

    Row makeRow(StoredSwitch &setting);

    Row m_partlyShown;
    Row m_unencrypted;
};

} // namespace bram
