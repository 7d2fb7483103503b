// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QJsonDocument>
#include <QMap>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <expected>
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
    /// A list of texts, and texts by name; empty when absent. An error says that the value is malformed.
    /// They are kept as JSON, because the file's own lists do not tell one text from a list of one.
    std::expected<QStringList, Error> textList(const QString &key) const;
    std::expected<QMap<QString, QString>, Error> textMap(const QString &key) const;
    void setTextList(const QString &key, const QStringList &values);
    void setTextMap(const QString &key, const QMap<QString, QString> &values);
    bool contains(const QString &key) const { return m_settings.contains(key); }
    void remove(const QString &key);

    /// Writes what has changed to the disk. False when that failed.
    bool save();

private:
    /// The JSON kept under the key; null when there is none.
    std::expected<QJsonDocument, Error> json(const QString &key) const;
    void makePrivate() const;

    bool m_isChanged = false;
    QString m_path;
    QSettings m_settings;
};

} // namespace bram
