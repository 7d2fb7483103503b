// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"
#include "system/Reply.h"

#include <QString>

#include <expected>

namespace bram
{

using FileOpened = std::expected<void, Error>;

/// Opens files and folders with the program that the desktop has for their kind. Implemented for Linux by
/// `XdgFileOpener`; main thread. Nothing waits, and what was opened outlives this program.
class FileOpener
{
public:
    virtual ~FileOpener() = default;

    /// Answers when it is known how that went; the error is one line. The end of the program answers as if it
    /// had gone well: nobody is left to be told.
    virtual Reply<FileOpened> open(const QString &path) = 0;
};

} // namespace bram
