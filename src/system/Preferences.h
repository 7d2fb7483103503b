// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

#include <optional>

namespace bram
{

/// The per-user preferences: one INI file, 0600 in a folder 0700, because the device key falls back
/// to it where no keyring is. Main thread only. A file that cannot be read counts as empty; one
/// that cannot be written keeps its changes for this run.
class Preferences
{
public:
    /// `path` is the absolute path of the INI file; its folder is made when first written.
    explicit Preferences(const QString &path);

    /// The text under `key`; nothing when absent or not a text.
    std::optional<QString> text(const QString &key) const;
    void setText(const QString &key, const QString &value);
    void remove(const QString &key);

    /// Writes what has changed to the disk. False when that failed.
    bool save();

private:
    void makePrivate() const;

    bool m_isChanged = false;
    QString m_path;
    QSettings m_settings;
};

} // namespace bram
