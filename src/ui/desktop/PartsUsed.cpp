// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/PartsUsed.h"

#include <QCoreApplication>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
struct PartRow {
    const char *name;
    const char *purpose;
    const char *licence;
    const char *holders;
    const char *package;
};

constexpr PartRow rows[] {
    {"Qt 6", QT_TRANSLATE_NOOP("PartsUsed", "event loop, windows, network, D-Bus"), "LGPL-3.0-only",
     "The Qt Company Ltd.", "libqt6core6"},
    {"QCoro", QT_TRANSLATE_NOOP("PartsUsed", "coroutines"), "MIT", "Daniel Vrátil",
     "libqcoro6core0"},
    {"QtKeychain", QT_TRANSLATE_NOOP("PartsUsed", "the desktop's keyring"), "BSD-2-Clause",
     "Frank Osterfeld, François Revol, Mathias Hasselmann", "libqt6keychain1"},
    {"libsecret", QT_TRANSLATE_NOOP("PartsUsed", "the desktop's keyring"), "LGPL-2.1-or-later",
     "Collabora Ltd, Red Hat Inc", "libsecret-1-0"},
    {"libsodium", QT_TRANSLATE_NOOP("PartsUsed", "signatures"), "ISC", "Frank Denis",
     "libsodium23"},
    {"simdjson", QT_TRANSLATE_NOOP("PartsUsed", "reading the audit log"), "Apache-2.0",
     "Daniel Lemire, Geoff Langdale", "libsimdjson14"},
    {"libedit", QT_TRANSLATE_NOOP("PartsUsed", "the line typed in a terminal"), "BSD-3-Clause",
     "The Regents of the University of California", "libedit2"},
    {"libxcb", QT_TRANSLATE_NOOP("PartsUsed", "finding the display and its tray"), "X11",
     "Bart Massey, Jamey Sharp, Josh Triplett", "libxcb1"},
};
} // namespace

QList<PartUsed> partsUsed()
{
    QList<PartUsed> parts;
    for (const PartRow &row : rows) {
        parts.append({.name = QString::fromUtf8(row.name),
                      .purpose = QCoreApplication::translate("PartsUsed", row.purpose),
                      .licence = QString::fromUtf8(row.licence),
                      .holders = QString::fromUtf8(row.holders),
                      .package = QString::fromUtf8(row.package)});
    }
    return parts;
}

QString partsUsedText()
{
    QStringList paragraphs {
        u"BRAM: Apache-2.0"_s,
        QCoreApplication::translate(
            "PartsUsed",
            "It is built on these libraries, which it uses as the system has them installed. The "
            "whole text of each licence is in the file named with it."),
    };
    for (const PartUsed &part : partsUsed()) {
        paragraphs.append(u"%1 (%2): %3\n© %4\n/usr/share/doc/%5/copyright"_s.arg(
            part.name, part.purpose, part.licence, part.holders, part.package));
    }
    return paragraphs.join(u"\n\n"_s);
}

} // namespace bram
