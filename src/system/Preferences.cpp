// SPDX-License-Identifier: Apache-2.0
#include "system/Preferences.h"

#include "system/Files.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
std::unexpected<Error> malformed(const QString &key)
{
    return std::unexpected(
        Error {u"the preference %1 is malformed and counts as empty"_s.arg(key)});
}

QString compact(const QJsonDocument &document)
{
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}
} // namespace

Preferences::Preferences(const QString &path)
    : m_path(path)
    , m_settings(path, QSettings::IniFormat)
{
}

std::optional<QString> Preferences::text(const QString &key) const
{
    const QVariant value = m_settings.value(key);
    if (value.typeId() != QMetaType::QString) {
        return std::nullopt;
    }
    return value.toString();
}

void Preferences::setText(const QString &key, const QString &value)
{
    if (text(key) == value) {
        return;
    }
    m_isChanged = true;
    makePrivate();
    m_settings.setValue(key, value);
}

std::expected<QStringList, Error> Preferences::textList(const QString &key) const
{
    const auto document = json(key);
    if (!document) {
        return std::unexpected(document.error());
    }
    if (!document->isNull() && !document->isArray()) {
        return malformed(key);
    }
    QStringList values;
    for (const QJsonValue &value : document->array()) {
        if (!value.isString()) {
            return malformed(key);
        }
        values.append(value.toString());
    }
    return values;
}

std::expected<QMap<QString, QString>, Error> Preferences::textMap(const QString &key) const
{
    const auto document = json(key);
    if (!document) {
        return std::unexpected(document.error());
    }
    if (!document->isNull() && !document->isObject()) {
        return malformed(key);
    }
    QMap<QString, QString> values;
    const QJsonObject members = document->object();
    for (auto member = members.begin(); member != members.end(); ++member) {
        if (!member->isString()) {
            return malformed(key);
        }
        values.insert(member.key(), member->toString());
    }
    return values;
}

void Preferences::setTextList(const QString &key, const QStringList &values)
{
    setText(key, compact(QJsonDocument(QJsonArray::fromStringList(values))));
}

void Preferences::setTextMap(const QString &key, const QMap<QString, QString> &values)
{
    QJsonObject members;
    for (const auto &[name, value] : values.asKeyValueRange()) {
        members.insert(name, value);
    }
    setText(key, compact(QJsonDocument(members)));
}

std::expected<QJsonDocument, Error> Preferences::json(const QString &key) const
{
    if (!contains(key)) {
        return QJsonDocument();
    }
    const auto document = QJsonDocument::fromJson(text(key).value_or(QString()).toUtf8());
    if (document.isNull()) {
        return malformed(key);
    }
    return document;
}

void Preferences::remove(const QString &key)
{
    if (!m_settings.contains(key)) {
        return;
    }
    m_isChanged = true;
    makePrivate();
    m_settings.remove(key);
}

bool Preferences::save()
{
    if (!m_isChanged) {
        return true;
    }
    makePrivate(); // again: what kept an earlier change from being written may be gone
    m_settings.sync();
    if (m_settings.status() == QSettings::AccessError) {
        // An error sticks to the object that met it, also after a later success. Objects of the
        // same file share what is still to be written, so a new one tells how it stands now.
        QSettings attempt(m_path, QSettings::IniFormat);
        attempt.sync();
        if (attempt.status() == QSettings::AccessError) {
            return false;
        }
    }
    m_isChanged = false;
    return true;
}

/// QSettings would make the folder 0755, and would write a new file 0644 before it narrows it to
/// 0600. A file that is there keeps its mode from the first byte on. A failure here shows in
/// `save`.
void Preferences::makePrivate() const
{
    if (!makePrivateFolder(QFileInfo(m_path).absolutePath())) {
        return;
    }
    const int descriptor = ::open(QFile::encodeName(m_path).constData(),
                                  O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0600);
    if (descriptor < 0) {
        return;
    }
    struct stat status = {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        ::fchmod(descriptor, 0600);
    }
    ::close(descriptor);
}

} // namespace bram
