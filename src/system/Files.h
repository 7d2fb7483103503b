// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QByteArray>
#include <QString>

#include <expected>

namespace bram
{

/// Reads a whole regular file. A FIFO, device or folder, a file over `maxBytes` and a file that cannot
/// be read are errors; nothing here waits for another process to write.
std::expected<QByteArray, Error> readRegularFile(const QString &path, qint64 maxBytes);

/// Makes the folder, and the folders above it that are missing, with mode 0700. An existing folder
/// keeps its mode.
std::expected<void, Error> makePrivateFolder(const QString &path);

/// Writes a whole file: completely or not at all. One that is there keeps its mode, and is replaced where a
/// symbolic link points to; a new one is for this user alone (0600).
std::expected<void, Error> writeWholeFile(const QString &path, const QByteArray &content);

} // namespace bram
