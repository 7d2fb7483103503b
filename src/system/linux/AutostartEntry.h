// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/LoginStart.h"

#include <QStringList>

#include <optional>

namespace bram
{

/// The start at login of the freedesktop.org desktops: a desktop entry in the user's autostart folder, which
/// comes before one of the same name in the system's. An entry that says "Hidden" is off, and so is one that
/// GNOME has switched off. What a person has written into the entry stays.
class AutostartEntry final : public LoginStart
{
public:
    struct Places {
        QString userFolder; ///< made when needed
        QStringList systemFolders;
        QString program; ///< absolute path of this one

        /// Those of the XDG base directories, and the program that runs.
        static Places ofProcess();
    };

    explicit AutostartEntry(const Places &places);

    State state() const override;
    std::expected<void, Error> setOn(bool isOn) override;

    static const QString fileName;

private:
    std::expected<std::optional<QString>, Error> load(const QString &folder) const;
    std::expected<std::optional<QString>, Error> loadSystemEntry() const;
    State stateOf(const QString &entry) const;
    std::expected<void, Error> save(const QString &entry) const;
    std::expected<void, Error> switchOn();
    std::expected<void, Error> switchOff();
    QString path() const { return m_places.userFolder + u'/' + fileName; }

    Places m_places;
};

/// The value of a desktop entry's key "Exec" that starts this program without arguments, whatever its path
/// is made of; and the program that such a value starts.
QString execValue(const QString &program);
QString programOfExec(const QString &value);

} // namespace bram
