// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/FileOpener.h"

#include <QObject>

#include <chrono>

namespace bram
{

/// Opens with `xdg-open`, which knows what the desktop in use has for a kind of file, and says in its exit
/// status when there is nothing.
class XdgFileOpener final : public QObject, public FileOpener
{
    Q_OBJECT

public:
    /// Where `xdg-open` is itself the program that shows the file, it goes on; after `patience` that counts as
    /// opened.
    explicit XdgFileOpener(std::chrono::milliseconds patience = std::chrono::seconds(5));

    Reply<FileOpened> open(const QString &path) override;

private:
    std::chrono::milliseconds m_patience;
};

} // namespace bram
