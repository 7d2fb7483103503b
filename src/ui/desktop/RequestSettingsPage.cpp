// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/RequestSettingsPage.h"

#include "config/StoredSwitch.h"

#include <QFormLayout>

namespace bram
{

RequestSettingsPage::RequestSettingsPage(StoredSwitch &allowPartlyShown,
                                         StoredSwitch &unencryptedGateway)
    : m_partlyShown(makeRow(allowPartlyShown))
    , m_unencrypted(makeRow(unencryptedGateway))
{
    retranslate();
}

RequestSettingsPage::Row RequestSettingsPage::makeRow(StoredSwitch &setting)
{
    auto *box = new QCheckBox(this);
    form()->addRow(box);
    const Row row {setting, box, addNote(NotePlace::WholeRow), addNote(NotePlace::WholeRow)};
    setNote(row.problem, {});
    connect(box, &QCheckBox::clicked, this, [this, row](bool isOn) {
        const bool isKept = row.setting.setOn(isOn);
        setNote(row.problem,
                isKept ? QString()
                       : tr("This could not be remembered; it lasts until the program ends."));
    });
    connect(&setting, &StoredSwitch::changed, box, &QCheckBox::setChecked);
    return row;
}

QString RequestSettingsPage::title() const
{
    return tr("Re&quests");
}

void RequestSettingsPage::refresh()
{
    for (const Row &row : {m_partlyShown, m_unencrypted}) {
        row.box->setChecked(row.setting.isOn());
    }
}

void RequestSettingsPage::retranslate()
{
    m_partlyShown.box->setText(tr("Offer allow also where a command is not sho&wn whole"));
    setNote(m_partlyShown.meaning,
            tr("Off, a notification or a menu that cuts a command, hides a line break or marks "
               "something in it lets you deny it and look at it, and a window allows it once its "
               "end has been in view. On, you can allow what you have not read."));
    m_unencrypted.box->setText(tr("Allow an &unencrypted gateway on another machine"));
    setNote(m_unencrypted.meaning,
            tr("Off, an address that begins with ws:// and leads to another machine is refused: "
               "everybody on the way there could read the token and decide in your place."));
    refresh();
}

} // namespace bram
