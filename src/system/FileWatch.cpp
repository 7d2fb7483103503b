// SPDX-License-Identifier: Apache-2.0
#include "system/FileWatch.h"

#include <QDir>
#include <QFileInfo>

#include <chrono>
#include <utility>

namespace bram
{

using namespace std::chrono_literals;

namespace
{
/// Long enough for a program that writes a file in several steps.
constexpr auto settlingTime = 150ms;
} // namespace

FileWatch::FileWatch(const QStringList &paths)
    : m_paths(paths)
{
    m_settling.setSingleShot(true);
    m_settling.setInterval(settlingTime);
    connect(&m_settling, &QTimer::timeout, this, &FileWatch::look);
    const auto settle = [this] {
        if (!m_settling.isActive()) {
            m_settling.start();
        }
    };
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, settle);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this, settle] {
        m_wasWritten = true;
        settle();
    });
}

void FileWatch::start()
{
    watchPlaces();
    for (const QString &path : m_paths) {
        m_stamps.insert(path, FileStamp::of(path));
    }
}

QStringList FileWatch::placesToWatch() const
{
    QStringList places;
    for (const QString &path : m_paths) {
        const QFileInfo file(path);
        const QString folder = file.absolutePath();
        places += {file.absoluteFilePath(), folder};
        if (!QFileInfo::exists(folder)) {
            places.append(QFileInfo(folder).absolutePath());
        }
        if (const QString target = file.canonicalFilePath(); !target.isEmpty()) {
            places.append(QFileInfo(target).absolutePath());
        }
    }
    places.removeIf([](const QString &place) { return !QFileInfo::exists(place); });
    places.removeDuplicates();
    return places;
}

void FileWatch::watchPlaces()
{
    QStringList missing = placesToWatch();
    const QStringList watched = m_watcher.files() + m_watcher.directories();
    missing.removeIf([&watched](const QString &place) { return watched.contains(place); });
    if (!missing.isEmpty()) {
        m_watcher.addPaths(missing);
    }
}

void FileWatch::look()
{
    bool isChanged = std::exchange(m_wasWritten, false);
    for (const QString &path : m_paths) {
        const FileStamp now = FileStamp::of(path);
        if (std::exchange(m_stamps[path], now) != now) {
            isChanged = true;
            // A watch stays with a file that was replaced, as long as somebody has that open.
            m_watcher.removePath(QFileInfo(path).absoluteFilePath());
        }
    }
    watchPlaces();
    if (isChanged) {
        Q_EMIT changed();
    }
}

} // namespace bram
