// SPDX-License-Identifier: Apache-2.0
#include "system/Preferences.h"

#include "system/Files.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

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
