// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QByteArray>
#include <QString>

#include <expected>

namespace bram
{

/// Writes a whole file that only this user may read (0600), whether or not it was there: complete or not
/// at all.
std::expected<void, Error> writePrivateFile(const QString &path, const QByteArray &content);

enum class Replacement {
    Done,
    ChangedMeanwhile, ///< the file held something else, and still does
};

/// Replaces the content of a file that other programs write too, if it holds `expected`: in one step, with
/// its mode and owner kept, and through a symbolic link to the file it names. A program that replaces the
/// file at the same time loses nothing: what it has put there is looked at after the step, and put back.
/// Fails for a file that may not be written, even where that would be possible.
std::expected<Replacement, Error> replaceFile(const QString &path, const QByteArray &expected,
                                              const QByteArray &content);

/// Keeps other processes of this program from changing files of a folder, for as long as it lives.
class FolderLock
{
public:
    /// Waits for a moment when another process has it; gives up then. Not on the main thread.
    static std::expected<FolderLock, Error> acquire(const QString &folder);

    FolderLock(FolderLock &&other) noexcept;
    FolderLock &operator=(FolderLock &&other) = delete;
    ~FolderLock();

private:
    explicit FolderLock(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    int m_descriptor;
};

} // namespace bram
